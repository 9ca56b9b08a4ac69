#include "fuzz.h"

#include "script.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "xmlpacketable.h"
#include "xpkreference.h"

#include <memory>
#include <vector>

// Graphs of archive nodes, with rings and shared nodes, inlined over the scripted server library,
// of which any function may fail: what is inlined has bounds, and all that was made is freed once.

namespace {

constexpr auto TYPE = PACKETDATATYPES(0x70);
constexpr unsigned HKEY = 9;
constexpr unsigned MAX_NODES = 8;
constexpr unsigned MAX_EDGES = 16;
constexpr unsigned MAX_LINES = 7;  // of all nodes; so few lines have room for far fewer than
constexpr int MAX_ITEMS = 1000;

constexpr const char *FAULTS[] = { "toPacket null", "toPacket empty", "fromPacket null",
    "getReferences null", "getReferences cycle 0", "findNode null", "getPacketable null",
    "TQGetSystemStorageClassConv null", "getConnectedHostname null", "load null" };

// A text, a reference by name, two by key, and bytes.
const Script::Table FIELDS = { { TQELEMENT_TEXT, 1, 0, 1, {} }, { TQELEMENT_NAME, 2, 0, 1, {} },
    { TQELEMENT_KEY, 3, 0, 4, {} }, { TQELEMENT_BYTES, 4, 0, 1, {} },
    { TQELEMENT_KEY, 5, 0, 4, {} } };

using Nodes = std::vector<std::unique_ptr<ArchiveNode>>;

QByteArray anyLine(Bytes &bytes)
{
    const QByteArray number = QByteArray::number(bytes.below(MAX_NODES) + 1, 16);
    switch (bytes.below(5)) {
    case 0:
        return "3 " + number + " 9\n";
    case 1:
        return "5 " + number + " 9\n";
    case 2:
        return "2 " + number + '\n';
    case 3:
        return "SL 1\nSI 70\n3 " + number + " 9\nTI 0\nTL 0\n";
    default:
        return QByteArray::number(bytes.below(6)) + ' ' + bytes.raw(12).replace('\n', ' ') + '\n';
    }
}

// The item of the node with that number; null is possible, and so is one without key or name.
TQPacketable *anyItem(unsigned number, const QByteArray &lines, Bytes &bytes)
{
    const auto type = bytes.below(8) == 7 ? PACKETDATATYPE_ICCPROFILE : TYPE;
    TQPacketable *item = bytes.below(16) == 15 ? nullptr : PacketableUtil::getPacketable(type);
    if (item) {
        const QByteArray text =
            "SI " + QByteArray::number(uint(type), 16) + '\n' + lines + "TI 0\n";
        item->fromPacket(QByteArray(text).data(), unsigned(text.size()), false, true);
        item->setName(bytes.below(5) == 4 ? nullptr : QByteArray::number(number, 16).constData());
        item->dbkey = { number, bytes.below(3) == 2 ? 0 : HKEY };
    }
    return item;
}

Nodes anyGraph(Bytes &bytes)
{
    std::vector<QByteArray> texts(bytes.below(MAX_NODES) + 1);
    const auto any = [&] { return bytes.below(unsigned(texts.size())); };
    for (unsigned lines = bytes.below(MAX_LINES + 1); lines > 0; --lines) {
        texts[any()] += anyLine(bytes);
    }
    Nodes nodes;
    for (const QByteArray &text : texts) {
        TQPacketable *const item = anyItem(unsigned(nodes.size()) + 1, text, bytes);
        nodes.push_back(std::make_unique<ArchiveNode>(item));
    }
    for (unsigned edges = bytes.below(MAX_EDGES + 1); edges > 0; --edges) {
        const unsigned from = any();
        nodes[from]->add(nodes[any()].get());
    }
    return nodes;
}

void check(XMLPacketable &item)
{
    const QDomNodeList inlined = item.getNodeConst().elementsByTagName(item.rootNodeName());
    require(inlined.count() <= MAX_ITEMS, "what is inlined has bounds");
    QList<XPKReference *> references;
    item.getXPKReferences(references);
    for (XPKReference *reference : references) {
        require(reference->packetable != nullptr, "a reference has an item");
        item.nullifyReference(reference);
    }
    qDeleteAll(references);
}

void convert(TQCommServer &server, Bytes &bytes)
{
    const Nodes nodes = anyGraph(bytes);
    if (const unsigned fault = bytes.below(2 * std::size(FAULTS)); fault < std::size(FAULTS)) {
        script().faults = { FAULTS[fault] };
    }
    const std::unique_ptr<XMLPacketable> item(
        XMLPacketable::fromArchiveNode(server, nodes.front().get()));
    check(*item);
    XMLPacketable copy;
    copy.setData(server, nodes.back().get());
    if (const std::unique_ptr<TQPacketable> built { item->getData() }) {
        copy.setData(*built);
        copy.insertInlineData(server, nodes.front().get());
    }
    check(copy);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static TQCommServer server("");
    Bytes bytes(data, size);
    if (script().tables.empty()) {
        script().isRecording = false;
        script().ownsNodes = false;
        script().tables = { { TYPE, FIELDS }, { PACKETDATATYPE_ICCPROFILE, FIELDS } };
    }
    convert(server, bytes);
    script().faults.clear();
    require(script().items.empty() && script().buffers.empty(), "all that was made was freed");
    require(script().wrongFrees == 0, "and once");
    return 0;
}

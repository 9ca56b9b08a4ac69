#include "fuzz.h"

#include "script.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "xmlpacketable.h"
#include "xpkreference.h"

#include <algorithm>
#include <memory>
#include <vector>

// Graphs of archive nodes, with rings and shared nodes, inlined over the scripted server library.

namespace {

constexpr auto TYPE = PACKETDATATYPES(0x70);
constexpr unsigned HKEY = 9;
constexpr unsigned MAX_NODES = 8;
constexpr unsigned MAX_LINES = 3;  // of a node, which puts the square of it below itself
constexpr unsigned ALL_LINES = 7;
constexpr unsigned MAX_EDGES = 16;

// What one conversion inlines at most.
constexpr int LEVELS = 64;
constexpr int ITEMS = 100000;

constexpr const char *FAULTS[] = { "toPacket null", "toPacket empty", "fromPacket null",
    "getReferences null", "getReferences cycle 0", "findNode null", "getPacketable null",
    "TQGetSystemStorageClassConv null", "getConnectedHostname null", "load null" };

// A text, a reference by name, two by key, and bytes.
const Script::Table TABLE = { { 1, 1, 0, 1, {} }, { 9, 2, 0, 1, {} }, { 14, 3, 0, 4, {} },
    { 23, 4, 0, 1, {} }, { 14, 5, 0, 4, {} } };

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
TQPacketable *anyItem(unsigned number, unsigned &linesLeft, Bytes &bytes)
{
    const unsigned kind = bytes.take();
    if (kind % 16 == 15) {
        return nullptr;
    }
    const auto type = kind % 8 == 6 ? PACKETDATATYPE_ICCPROFILE : TYPE;
    TQPacketable *item = PacketableUtil::getPacketable(type);
    if (!item) {
        return nullptr;
    }
    QByteArray text = "SI " + QByteArray::number(uint(type), 16) + '\n';
    const unsigned lines = std::min(bytes.below(MAX_LINES + 1), linesLeft);
    linesLeft -= lines;
    for (unsigned i = 0; i < lines; ++i) {
        text += anyLine(bytes);
    }
    text += "TI 0\n";
    item->fromPacket(text.data(), unsigned(text.size()), false, true);
    const QByteArray name = QByteArray::number(number, 16);
    item->setName(kind % 5 == 4 ? nullptr : name.constData());
    item->dbkey = { number, kind % 3 == 2 ? 0 : HKEY };
    return item;
}

Nodes anyGraph(Bytes &bytes)
{
    Nodes nodes;
    unsigned linesLeft = ALL_LINES;
    for (unsigned count = bytes.below(MAX_NODES) + 1; count > 0; --count) {
        nodes.push_back(
            std::make_unique<ArchiveNode>(anyItem(unsigned(nodes.size()) + 1, linesLeft, bytes)));
    }
    for (unsigned edges = bytes.below(MAX_EDGES + 1); edges > 0; --edges) {
        const unsigned from = bytes.below(unsigned(nodes.size()));
        nodes[from]->add(nodes[bytes.below(unsigned(nodes.size()))].get());
    }
    return nodes;
}

struct Extent
{
    int levels = 0;  // of items, one in another
    int items = 0;
};

// Keys are those of the items that e lies in, from below the outermost on.
void measure(const QDomNode &parent, QStringList keys, Extent &extent)
{
    for (QDomElement e = parent.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        QStringList within = keys;
        if (XMLObject::isXMLPacketable(e)) {
            const QString key = e.attribute(XMLPacketable::KEY);
            require(!within.contains(key), "nothing is inlined below itself");
            within.append(key);
            ++extent.items;
        }
        extent.levels = std::max(extent.levels, int(within.size()));
        measure(e, within, extent);
    }
}

void checkExtent(const XMLPacketable &item)
{
    Extent extent;
    measure(item.getNodeConst(), {}, extent);
    require(extent.levels <= LEVELS && extent.items <= ITEMS, "what is inlined has bounds");
}

void checkReferences(XMLPacketable &item)
{
    QList<XPKReference *> references;
    const QString before = item.toString();
    const bool found = item.getXPKReferences(references);
    require(found == !references.isEmpty(), "references are found or not");
    for (XPKReference *reference : references) {
        require(reference->packetable != nullptr, "a reference has an item");
        require(reference->name.isNull() || (reference->key.key == 0 && reference->key.hkey == 0),
            "by name or by key");
        item.nullifyReference(reference);
    }
    require(item.toString().size() == before.size(), "references leave the item alone");
    if (found) {
        references.first()->packetable->setData(item.getNodeConst());
    }
    qDeleteAll(references);
}

void convert(TQCommServer &server, const Nodes &nodes, Bytes &bytes)
{
    const std::unique_ptr<XMLPacketable> item(
        XMLPacketable::fromArchiveNode(server, nodes.front().get()));
    checkExtent(*item);
    checkReferences(*item);
    const std::unique_ptr<TQPacketable> built(item->getData());
    XMLPacketable copy;
    switch (bytes.below(4)) {
    case 0:
        item->insertInlineData(server, nodes[bytes.below(unsigned(nodes.size()))].get());
        copy.setData(item->getNodeConst());
        break;
    case 1:
        if (built) {
            copy.setData(*built);
            copy.insertInlineData(server, nodes.front().get());
        }
        break;
    case 2:
        copy.setData(server, nodes.back().get());
        break;
    default:
        return;
    }
    checkExtent(copy);
    checkReferences(copy);
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static TQCommServer server("");
    Bytes bytes(data, size);
    if (script().tables.empty()) {
        script().isRecording = false;
        script().ownsNodes = false;
        script().tables = { { TYPE, TABLE }, { PACKETDATATYPE_ICCPROFILE, TABLE } };
    }
    const unsigned fault = bytes.take();
    {
        const Nodes nodes = anyGraph(bytes);
        if (fault < std::size(FAULTS)) {
            script().faults = { FAULTS[fault] };
        }
        convert(server, nodes, bytes);
        script().faults.clear();
    }
    require(script().items.empty() && script().buffers.empty(), "all that was made was freed");
    require(script().wrongFrees == 0, "and once");
    return 0;
}

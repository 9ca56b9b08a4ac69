#include "fuzz.h"

#include "tqpacketable.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QBuffer>
#include <QTextStream>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <iterator>
#include <memory>
#include <vector>

// Calls on packets, each made twice: on a packet that is left alone afterwards, and on one that has
// to build its document after every call. Nobody may see a difference.

namespace {

constexpr unsigned PACKETS = 3;
constexpr unsigned ITEMS = 4;
constexpr unsigned MAX_LINES = 12;
constexpr int IDS[] = { 0, 1, 7, -1, 0x7fffffff, -0x7fffffff - 1 };
constexpr PACKETDATATYPES TYPES[] = { PACKETDATATYPE_JOB, PACKETDATATYPE_OUTPUT,
    PACKETDATATYPE_BOOK, PACKETDATATYPE_UNCONVERTED, PACKETDATATYPES(0x63) };
constexpr const char *NAMES[] = { nullptr, "", "Emma", "p. 12 & <13>", "S\xc3\xb6hne", "\xff" };
// The type 63 has a field of every kind.
constexpr const char *LINES[] = { "SI 63", "SI 15", "SI 6", "TI 0", "SL 2", "TL 0", "101 text",
    "101  a \"b\" ]]> <&>", "0101 text", "1 Emma", "e01 2a 56", "f01 2 129 198", "f01 2  129 198",
    "1601 2 Novel\rSea", "1701 4 AP8A/w==", "1701 4", "noblank", "101 S\xc3\xb6hne\t\xc2\xa0" };
constexpr XMLObject::XMLOBJECT_TYPE KINDS[] = { XMLObject::XMLOBJECT_PACKETABLE,
    XMLObject::XMLOBJECT_ACTION, XMLObject::XMLOBJECT_UI, XMLObject::XMLOBJECT_IMAGE,
    XMLObject::XMLOBJECT_MSG };

/// A server item that has any text, or none.
class ServerItem : public TQPacketable
{
public:
    ServerItem(PACKETDATATYPES type, QByteArray text) : TQPacketable(type), m_text(std::move(text))
    {
    }
    char *toPacket(unsigned int &length) const override
    {
        length = unsigned(m_text.size());
        auto *const buffer =
            m_text.isNull() ? nullptr : static_cast<char *>(std::malloc(length + 1));
        std::copy(m_text.begin(), m_text.end(), buffer);
        return buffer;
    }

private:
    const QByteArray m_text;
};

/// What a server item is made from.
struct ItemValues
{
    PACKETDATATYPES type = PACKETDATATYPE_JOB;
    TQKEY_ELEMENT key {};
    const char *name = nullptr;
    bool isCurrent = false;
    QByteArray text;

    void appendTo(XMLPacket &packet) const
    {
        ServerItem item(type, text);
        item.setName(name);
        item.dbkey = key;
        packet.appendV(item, isCurrent);
    }
};

/// One thing in both forms.
template<typename T>
struct Twice
{
    std::unique_ptr<T> lazy = std::make_unique<T>();
    std::unique_ptr<T> eager = std::make_unique<T>();

    template<typename Call>
    void call(Call make)
    {
        make(*lazy);
        make(*eager);
    }
};

void build(XMLPacket &packet)
{
    XMLMessage nothing;
    nothing.setNode(QDomElement());
    packet.appendV(nothing);  // which appends nothing, to a body
}

QByteArray written(const XMLPacket &packet)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    require(packet.write(&buffer), "a buffer takes everything");
    return buffer.data();
}

// The document as QtXml writes it, but for the order of attributes.
QByteArray shuffledText(const QDomDocument &document)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    stream << document;
    QByteArray bytes = text.toUtf8();
    std::sort(bytes.begin(), bytes.end());
    return bytes;
}

QByteArray sorted(QByteArray bytes)
{
    std::sort(bytes.begin(), bytes.end());
    return bytes;
}

class World
{
public:
    World(const uint8_t *data, size_t size) : m_bytes(data, size) {}
    void run();

private:
    void step();
    void setID();
    void appendServerItem();
    void appendItem();
    void changeItem();
    void deleteItem();
    void copyPacket();
    void clearPacket();
    void compare();
    void compareAlmostSame();
    void look();
    void changeNode();

    Twice<XMLPacket> &packet() { return m_packets[m_bytes.below(PACKETS)]; }
    QByteArray packetText();
    ItemValues itemValues();
    void changeOne(ItemValues &values);
    void check(const Twice<XMLPacket> &packet) const;
    template<typename T>
    void append(T &lazy, T &eager, bool isMoved);
    template<typename T>
    void appendNew();

    Bytes m_bytes;
    Twice<XMLPacket> m_packets[PACKETS];
    Twice<XMLAction> m_items[ITEMS];  // null after deletion, until the next use
};

void World::run()
{
    while (!m_bytes.isEmpty()) {
        step();
        for (const Twice<XMLPacket> &each : m_packets) {
            build(*each.eager);
        }
    }
    for (const Twice<XMLPacket> &each : m_packets) {
        check(each);
    }
}

void World::step()
{
    using Step = void (World::*)();
    static constexpr Step STEPS[] = { &World::setID, &World::appendServerItem,
        &World::appendServerItem, &World::appendServerItem, &World::appendItem, &World::changeItem,
        &World::deleteItem, &World::copyPacket, &World::clearPacket, &World::compare,
        &World::compareAlmostSame, &World::look, &World::changeNode };
    (this->*STEPS[m_bytes.below(std::size(STEPS))])();
}

// What both say without being looked at, what they write, and what QtXml writes of them.
void World::check(const Twice<XMLPacket> &packet) const
{
    const XMLPacket &lazy = *packet.lazy;
    const XMLPacket &eager = *packet.eager;
    require(lazy.getSourceAgentID() == eager.getSourceAgentID(), "same source");
    require(lazy.getDestinationAgentID() == eager.getDestinationAgentID(), "same destination");
    require(lazy.isEmpty() == eager.isEmpty(), "both are empty or not");
    for (const auto kind : KINDS) {
        require(lazy.hasNodesOfType(kind) == eager.hasNodesOfType(kind), "same kinds of nodes");
    }
    require(written(lazy) == written(eager), "same document");

    XMLPacket copy;
    copy = lazy;
    require(copy == lazy && copy == eager, "a copy is equal, built or not");
    XMLMessage mark;
    const QDomDocument document = copy.append(mark).ownerDocument();
    require(
        sorted(written(copy)) == shuffledText(document), "what is written is what QtXml writes");
}

void World::setID()
{
    const int id = IDS[m_bytes.below(std::size(IDS))];
    const bool isSource = m_bytes.flag();
    packet().call([=](XMLPacket &each) {
        isSource ? each.setSourceAgentID(id) : each.setDestinationAgentID(id);
    });
}

QByteArray World::packetText()
{
    const unsigned lines = m_bytes.below(MAX_LINES);
    QByteArray text("");
    for (unsigned i = 0; i < lines; ++i) {
        const unsigned line = m_bytes.below(unsigned(std::size(LINES)) + 1);
        text += line < std::size(LINES) ? QByteArray(LINES[line]) : m_bytes.raw(40);
        text += '\n';
    }
    return m_bytes.below(16) == 0 ? QByteArray() : text;
}

ItemValues World::itemValues()
{
    ItemValues values;
    values.type = TYPES[m_bytes.below(std::size(TYPES))];
    values.key = { m_bytes.below(3), m_bytes.below(3) };
    values.name = NAMES[m_bytes.below(std::size(NAMES))];
    values.isCurrent = m_bytes.flag();
    values.text = packetText();
    return values;
}

void World::appendServerItem()
{
    const ItemValues values = itemValues();
    const bool isAskedFor = m_bytes.below(4) == 0;
    packet().call([&](XMLPacket &each) {
        if (isAskedFor) {
            ServerItem item(values.type, values.text);
            require(!each.append(item, false).isNull(), "append() returns the element");
        } else {
            values.appendTo(each);
        }
    });
}

void World::changeOne(ItemValues &values)
{
    const QByteArray line = LINES[m_bytes.below(std::size(LINES))];
    const int place = int(m_bytes.below(unsigned(values.text.size()) + 1));
    switch (m_bytes.below(6)) {
    case 0:
        values.key.hkey ^= 1;
        break;
    case 1:
        values.name = NAMES[m_bytes.below(std::size(NAMES))];
        break;
    case 2:
        values.isCurrent = !values.isCurrent;
        break;
    case 3:
        values.text.insert(values.text.indexOf('\n', place) + 1, line + '\n');
        break;
    case 4:
        values.text.insert(place, m_bytes.raw(3));
        break;
    default:
        values.text.remove(place, 1 + int(m_bytes.below(8)));
        break;
    }
}

// Two items that differ in one thing, which may or may not show.
void World::compareAlmostSame()
{
    ItemValues values = itemValues();
    Twice<XMLPacket> first;
    first.call([&values](XMLPacket &each) { values.appendTo(each); });
    changeOne(values);
    Twice<XMLPacket> second;
    second.call([&values](XMLPacket &each) { values.appendTo(each); });
    build(*first.eager);
    build(*second.eager);
    const bool same = *first.lazy == *second.lazy;
    require(same == (*first.eager == *second.eager), "items are equal or not, built or not");
    require(same == (written(*first.lazy) == written(*second.lazy)), "equal items, equal bytes");
}

template<typename T>
void World::append(T &lazy, T &eager, bool isMoved)
{
    Twice<XMLPacket> &to = packet();
    if (isMoved) {
        to.lazy->appendV(lazy);
        to.eager->appendV(eager);
    } else {
        to.lazy->append(lazy);
        to.eager->append(eager);
    }
}

template<typename T>
void World::appendNew()
{
    Twice<T> item;
    append(*item.lazy, *item.eager, m_bytes.flag());  // and it dies first
}

void World::appendItem()
{
    switch (m_bytes.below(6)) {
    case 0:
        return appendNew<XMLPacketable>();
    case 1:
        return appendNew<XMLUI>();
    case 2:
        return appendNew<XMLImage>();
    case 3:
        return appendNew<XMLMessage>();
    default:
        break;
    }
    Twice<XMLAction> &item = m_items[m_bytes.below(ITEMS)];
    if (!item.lazy) {
        item = Twice<XMLAction>();
    }
    append(*item.lazy, *item.eager, m_bytes.flag());
}

void World::changeItem()
{
    Twice<XMLAction> &item = m_items[m_bytes.below(ITEMS)];
    const QString name = m_bytes.text(8);
    const int index = int(m_bytes.below(3));
    if (item.lazy) {
        item.call([&](XMLAction &each) {
            each.setName(name);
            each.setIndex(index);
        });
    }
}

void World::deleteItem()
{
    Twice<XMLAction> &item = m_items[m_bytes.below(ITEMS)];
    item.lazy.reset();
    item.eager.reset();
}

void World::copyPacket()
{
    const Twice<XMLPacket> &from = packet();
    Twice<XMLPacket> &to = packet();
    *to.lazy = *from.lazy;
    *to.eager = *from.eager;
}

void World::clearPacket()
{
    packet().call([](XMLPacket &each) { each.init(nullptr); });
}

void World::compare()
{
    const Twice<XMLPacket> &a = packet();
    const Twice<XMLPacket> &b = packet();
    const bool same = *a.lazy == *b.lazy;
    require(same == (*a.eager == *b.eager), "two packets are equal or not, built or not");
    require(same == (written(*a.lazy) == written(*b.lazy)), "equal packets give equal bytes");
}

void World::look()
{
    const auto kind = KINDS[m_bytes.below(std::size(KINDS))];
    std::list<QDomNode> nodes[2];
    Twice<XMLPacket> &each = packet();
    require(each.lazy->getNodesOfType(kind, nodes[0]) == each.eager->getNodesOfType(kind, nodes[1]),
        "same number of nodes");
    require(nodes[0].size() == nodes[1].size(), "all nodes are handed out");
}

// Changes the document behind a packet's back: an item, its place, or the header.
void World::changeNode()
{
    const auto kind = KINDS[m_bytes.below(std::size(KINDS))];
    const unsigned change = m_bytes.below(5);
    const QString text = m_bytes.text(6);
    packet().call([&](XMLPacket &each) {
        std::list<QDomNode> nodes;
        if (each.getNodesOfType(kind, nodes) == 0) {
            return;
        }
        QDomElement e = nodes.back().toElement();
        QDomNode body = e.parentNode();
        switch (change) {
        case 0:
            return e.setAttribute(QStringLiteral("text"), text);
        case 1:
            e.appendChild(e.ownerDocument().createTextNode(text));
            return;
        case 2:
            body.removeChild(e);
            return;
        case 3:
            body.insertBefore(e, body.firstChild());
            return;
        default:
            QDomElement source = body.parentNode()
                                     .firstChildElement(XMLPacket::HEADER)
                                     .firstChildElement(XMLPacket::SOURCE);
            source.setAttribute(XMLPacket::AGENT_ID, text);
        }
    });
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    makeApplication();
    World(data, size).run();
    return 0;
}

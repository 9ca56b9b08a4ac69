#include "fuzz.h"

#include "xmlaction.h"
#include "xmlmessage.h"
#include "xmlpacket.h"

#include <QBuffer>
#include <QTextStream>

#include <algorithm>
#include <iterator>
#include <memory>

// Calls on packets and on actions that share elements with them, each made twice: on objects that
// are left alone afterwards, and on objects that have to build their elements after every call.
// Nobody may see a difference.

namespace {

constexpr unsigned PACKETS = 3;
constexpr unsigned ACTIONS = 2;
constexpr unsigned MAX_LINES = 12;
constexpr int IDS[] = { 0, 1, 7, -1 };
constexpr PACKETDATATYPES TYPES[] = { PACKETDATATYPE_JOB, PACKETDATATYPE_OUTPUT,
    PACKETDATATYPE_UNCONVERTED, PACKETDATATYPES(0x63) };
constexpr const char *NAMES[] = { nullptr, "", "Emma", "p. 12 & <13>", "S\xc3\xb6hne", "\xff",
    "\xef\xbb\xbf"
    "Emma" };
// The type 63 has a field of every kind.
constexpr const char *LINES[] = { "SI 63", "SI 15", "SI 6", "TI 0", "SL 2", "TL 0", "101 text",
    "101  a \"b\" ]]> <&>", "0101 text", "1 Emma", "e01 2a 56", "f01 2 129 198", "f01 2  129 198",
    "1601 2 Novel\rSea", "1601 a Novel", "1701 4 AP8A/w==", "1701 4", "1701", "e02 2a 56",
    "noblank", "101 S\xc3\xb6hne\t\xc2\xa0" };
constexpr char ALPHABET[] = { ' ', '1', '2', '4', '\r', '\n' };
constexpr XMLObject::XMLOBJECT_TYPE KINDS[] = { XMLObject::XMLOBJECT_PACKETABLE,
    XMLObject::XMLOBJECT_ACTION, XMLObject::XMLOBJECT_MSG };

struct ServerItem : TextItem
{
    using TextItem::TextItem;
    bool isCurrent = false;
};

void build(XMLPacket &packet)
{
    XMLMessage nothing;
    nothing.setNode(QDomElement());
    packet.appendV(nothing);  // which appends nothing, to a body
}

struct Twice
{
    Twice() { build(eager); }

    void append(ServerItem item)
    {
        lazy.appendV(item, item.isCurrent);
        eager.appendV(item, item.isCurrent);
    }

    XMLPacket lazy;
    XMLPacket eager;
};

struct ActionTwice
{
    ActionTwice() { eager.getNodeConst(); }

    XMLAction lazy;
    XMLAction eager;
};

QByteArray written(const XMLPacket &packet)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    require(packet.write(&buffer), "a buffer takes everything");
    return buffer.data();
}

QByteArray sorted(QByteArray bytes)
{
    std::sort(bytes.begin(), bytes.end());
    return bytes;
}

// QtXml writes attributes in any order.
QByteArray sortedText(const QDomDocument &document)
{
    QString text;
    QTextStream stream(&text, QIODevice::WriteOnly);
    stream << document;
    return sorted(text.toUtf8());
}

void compareWithQtXml(XMLPacket &packet)
{
    XMLMessage last;
    const QDomDocument document = packet.append(last).ownerDocument();
    require(sorted(written(packet)) == sortedText(document), "QtXml writes the same");
}

// Builds the element of the action.
void look(const ActionTwice &action)
{
    const QDomElement &lazy = action.lazy.getNodeConst();
    const QDomElement &eager = action.eager.getNodeConst();
    require(areSame(lazy, eager), "same element");
    require(lazy.parentNode().nodeName() == eager.parentNode().nodeName(), "same parent");
    const QByteArray document = sortedText(eager.ownerDocument());
    require(sortedText(lazy.ownerDocument()) == document, "same document around the element");
}

class World : public Program
{
public:
    World(const uint8_t *data, size_t size) : Program(data, size)
    {
        std::generate_n(m_packets, PACKETS, std::make_unique<Twice>);
        std::generate_n(m_actions, ACTIONS, std::make_unique<ActionTwice>);
    }

    void finish()
    {
        for (const auto &each : m_packets) {
            XMLPacket copy;
            copy = each->lazy;
            require(copy == each->lazy && copy == each->eager, "a copy is equal, built or not");
            compareWithQtXml(copy);
        }
        for (const auto &action : m_actions) {
            look(*action);
        }
    }

private:
    void step() override
    {
        using Step = void (World::*)(Twice &, Twice &);
        static constexpr Step STEPS[] = { &World::setID, &World::appendServerItem,
            &World::appendServerItem, &World::appendBuilt, &World::copy, &World::clear,
            &World::compare, &World::compareAlmostSame, &World::compareAlmostSame,
            &World::changeNode, &World::appendMessage, &World::compareActions,
            &World::replacePacket, &World::replaceAction, &World::changeAction,
            &World::changeAction, &World::appendAction, &World::appendAction,
            &World::lookAtAction };
        const Step next = bytes.oneOf(STEPS);
        const unsigned packet = bytes.below(PACKETS);
        (this->*next)(*m_packets[packet], *m_packets[bytes.below(PACKETS)]);
        for (const auto &each : m_packets) {
            build(each->eager);
            check(each->lazy, each->eager);
        }
    }

    static void check(const XMLPacket &lazy, const XMLPacket &eager)
    {
        require(lazy.getSourceAgentID() == eager.getSourceAgentID(), "same source");
        require(lazy.getDestinationAgentID() == eager.getDestinationAgentID(), "same destination");
        require(lazy.isEmpty() == eager.isEmpty(), "both are empty or not");
        for (const auto kind : KINDS) {
            require(lazy.hasNodesOfType(kind) == eager.hasNodesOfType(kind), "same kinds");
        }
        require(written(lazy) == written(eager), "same document");
    }

    void setID(Twice &packet, Twice &)
    {
        const int id = bytes.oneOf(IDS);
        const auto set =
            bytes.flag() ? &XMLPacket::setSourceAgentID : &XMLPacket::setDestinationAgentID;
        (packet.lazy.*set)(id);
        (packet.eager.*set)(id);
    }

    QByteArray packetText()
    {
        QByteArray text(bytes.flag() ? "SI 63\n" : "");
        for (unsigned lines = bytes.below(MAX_LINES); lines > 0; --lines) {
            const unsigned line = bytes.below(unsigned(std::size(LINES)) + 1);
            text += line < std::size(LINES) ? QByteArray(LINES[line]) : bytes.raw(40);
            text += '\n';
        }
        return bytes.below(16) == 15 ? QByteArray() : text;
    }

    ServerItem serverItem()
    {
        ServerItem item(bytes.oneOf(TYPES));
        item.dbkey = { bytes.below(3), bytes.below(3) };
        item.setName(bytes.oneOf(NAMES));
        item.isCurrent = bytes.flag();
        item.text = packetText();
        return item;
    }

    void appendServerItem(Twice &packet, Twice &) { packet.append(serverItem()); }

    // What only a document can hold.
    void appendBuilt(Twice &packet, Twice &)
    {
        ServerItem item = serverItem();
        packet.lazy.append(item, item.isCurrent);
        packet.eager.append(item, item.isCurrent);
        XMLMessage message(bytes.text(8));
        packet.lazy.append(message);
        packet.eager.appendV(message);
    }

    // What is not built until somebody looks at it.
    void appendMessage(Twice &packet, Twice &)
    {
        const QString text = bytes.text(8);
        XMLMessage message(text);
        XMLMessage built(text);
        packet.lazy.appendV(message);
        packet.eager.appendV(built);
    }

    ActionTwice &action() { return *m_actions[bytes.below(ACTIONS)]; }

    void appendAction(Twice &packet, Twice &)
    {
        ActionTwice &appended = action();
        packet.lazy.appendV(appended.lazy);
        packet.eager.appendV(appended.eager);
    }

    void change(ActionTwice &changed)
    {
        const unsigned change = bytes.below(4);
        const QString text = bytes.text(4);
        for (XMLAction *each : { &changed.lazy, &changed.eager }) {
            if (change == 0) {
                each->setName(text);
            } else if (change == 1) {
                each->setType(int(text.size()));
            } else if (change == 2) {
                each->setOriginator(int(text.size()));
            } else {
                each->setOrgName(text);  // a child
            }
        }
    }

    void changeAction(Twice &, Twice &) { change(action()); }
    void lookAtAction(Twice &, Twice &) { look(action()); }

    // Objects that share elements with what is replaced live on.
    void replacePacket(Twice &, Twice &)
    {
        m_packets[bytes.below(PACKETS)] = std::make_unique<Twice>();
    }

    void replaceAction(Twice &, Twice &)
    {
        m_actions[bytes.below(ACTIONS)] = std::make_unique<ActionTwice>();
    }

    // Two actions with attributes in any order.
    void compareActions(Twice &, Twice &)
    {
        ActionTwice actions[2];
        Twice packets[2];
        for (int i = 0; i < 2; ++i) {
            change(actions[i]);
            change(actions[i]);
            packets[i].lazy.appendV(actions[i].lazy);
            packets[i].eager.appendV(actions[i].eager);
            build(packets[i].eager);
        }
        compare(packets[0], packets[1]);
    }

    void copy(Twice &to, Twice &from)
    {
        to.lazy = from.lazy;
        to.eager = from.eager;
    }

    void clear(Twice &packet, Twice &)
    {
        packet.lazy.init(nullptr);
        packet.eager.init(nullptr);
    }

    void compare(Twice &a, Twice &b)
    {
        const bool same = a.lazy == b.lazy;
        require(same == (a.eager == b.eager), "two packets are equal or not, built or not");
        require(same == (written(a.lazy) == written(b.lazy)), "equal packets give equal bytes");
    }

    // Two items that differ in one thing, which may or may not show.
    void compareAlmostSame(Twice &, Twice &)
    {
        ServerItem item = serverItem();
        Twice first;
        first.append(item);
        build(first.eager);
        change(item);
        Twice second;
        second.append(item);
        build(second.eager);
        compare(first, second);
    }

    void change(ServerItem &item)
    {
        const QByteArray line = bytes.oneOf(LINES);
        const char one = bytes.oneOf(ALPHABET);
        const int place = int(bytes.below(unsigned(item.text.size()) + 1));
        switch (bytes.below(7)) {
        case 0:
            item.datatype = bytes.oneOf(TYPES);
            return;
        case 1:
            item.dbkey.hkey ^= 1;
            return;
        case 2:
            return item.setName(bytes.oneOf(NAMES));
        case 3:
            item.isCurrent = !item.isCurrent;
            return;
        case 4:
            item.text.insert(item.text.indexOf('\n', place) + 1, line + '\n');
            return;
        case 5:
            item.text.insert(place, one);
            return;
        default:
            item.text.replace(place, 1, QByteArray(1, one));
            return;
        }
    }

    // Changes the document behind the packets' back: the last item, or the header.
    void changeNode(Twice &packet, Twice &)
    {
        const auto kind = bytes.oneOf(KINDS);
        std::list<QDomNode> nodes;
        const int count = packet.lazy.getNodesOfType(kind, nodes);
        require(packet.eager.getNodesOfType(kind, nodes) == count, "same number of nodes");
        require(nodes.size() == 2 * size_t(count), "all nodes are handed out");
        if (count == 0) {
            return;
        }
        const unsigned change = bytes.below(4);
        const QString text = bytes.text(6);
        for (const QDomNode &last : { *std::next(nodes.begin(), count - 1), nodes.back() }) {
            QDomNode body = last.parentNode();
            QDomElement header = body.parentNode().firstChildElement(XMLPacket::HEADER);
            if (change == 0) {
                last.toElement().setAttribute(QStringLiteral("name"), text);
            } else if (change == 1) {
                body.removeChild(last);
            } else if (change == 2) {
                header.firstChildElement().setAttribute(XMLPacket::AGENT_ID, text);
            } else {
                header.removeChild(header.firstChildElement());
            }
        }
    }

    std::unique_ptr<Twice> m_packets[PACKETS];
    std::unique_ptr<ActionTwice> m_actions[ACTIONS];
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    World world(data, size);
    world.run();
    world.finish();
    return 0;
}

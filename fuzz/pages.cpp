#include "fuzz.h"

#include "xmlaction.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QDomDocument>

#include <memory>

// Pages, actions, items and the packets that hold them, compared with elements of one plain
// document.

namespace {

constexpr unsigned PACKETS = 3;
constexpr unsigned TYPES = 3;
constexpr int MAX_CHILDREN = 16;
constexpr XMLObject::XMLOBJECT_TYPE KINDS[] = { XMLObject::XMLOBJECT_PACKETABLE,
    XMLObject::XMLOBJECT_ACTION, XMLObject::XMLOBJECT_UI };

// An object, and the element that it should have.
template<typename Object>
struct Held
{
    Object object;
    QDomElement model;
};

struct HeldPacket
{
    std::unique_ptr<XMLPacket> packet;
    int source = 0;
    int destination = 0;
    QDomElement body;
};

class World : public Program
{
public:
    World(const uint8_t *data, size_t size) : Program(data, size)
    {
        m_document.appendChild(m_document.createElement(QStringLiteral("models")));
        begin(m_page);
        begin(m_action);
        begin(m_item);
        for (HeldPacket &each : m_packets) {
            each = { std::make_unique<XMLPacket>(), 0, 0, newElement(XMLPacket::BODY) };
        }
    }

private:
    void step() override
    {
        using Step = void (World::*)();
        static constexpr Step STEPS[] = { &World::change, &World::changeAction, &World::fillPage,
            &World::changePage, &World::makePacket, &World::copyPacket, &World::append,
            &World::append, &World::take };
        (this->*bytes.oneOf(STEPS))();
        withAny([](const auto &held) {
            require(
                areSame(held.object.getNodeConst(), held.model), "an object says what it should");
        });
        check(anyPacket(), anyPacket());
    }

    void check(const HeldPacket &a, const HeldPacket &b)
    {
        const std::list<QDomNode> nodes = nodesOf(a);
        require(nodes.empty() == !a.body.hasChildNodes(), "a packet holds what was appended");
        require(nodes.empty() == a.packet->isEmpty(), "without that it is empty");
        require(nodes.empty() || haveSameContent(nodes.front().parentNode(), a.body),
            "what it holds is as it was, and in order");
        require(a.packet->getSourceAgentID() == a.source, "a packet has its source");
        require(a.packet->getDestinationAgentID() == a.destination, "and its destination");
        const bool saySame = a.source == b.source && a.destination == b.destination &&
            haveSameContent(a.body, b.body);
        require((*a.packet == *b.packet) == saySame, "packets that say the same are equal");
        require((*b.packet != *a.packet) == !saySame, "and others are not");
    }

    static std::list<QDomNode> nodesOf(const HeldPacket &held)
    {
        std::list<QDomNode> nodes;
        for (const auto kind : KINDS) {
            held.packet->getNodesOfType(kind, nodes);
        }
        return nodes;
    }

    template<typename Object>
    void begin(Held<Object> &held)
    {
        held.model = newElement(held.object.rootNodeName());
    }

    // QtXml leaves siblings behind where an element dies, so all stay below the root.
    QDomElement below(const QDomNode &node)
    {
        return m_document.documentElement().appendChild(node).toElement();
    }
    QDomElement newElement(const QString &name) { return below(m_document.createElement(name)); }

    // Calls use with one of the objects.
    template<typename Use>
    void withAny(Use use)
    {
        switch (bytes.below(3)) {
        case 0:
            return use(m_page);
        case 1:
            return use(m_item);
        default:
            return use(m_action);
        }
    }

    HeldPacket &anyPacket() { return m_packets[bytes.below(PACKETS)]; }
    int type() { return int(bytes.below(TYPES)); }

    static void setName(QDomElement &e, const QString &name)
    {
        if (!name.isEmpty()) {
            e.setAttribute(QStringLiteral("name"), name);
        }
    }

    void change()
    {
        const QString name = bytes.text(4);
        withAny([&name](auto &held) {
            held.object.setName(name);
            setName(held.model, name);
        });
    }

    void changeAction()
    {
        const int number = type();
        m_action.object.setType(number);
        m_action.model.setAttribute(QStringLiteral("type"), QString::number(number));
    }

    void fillPage()
    {
        if (m_page.model.childNodes().size() < MAX_CHILDREN) {
            m_page.object.append(m_action.object);
            m_page.model.appendChild(m_action.model.cloneNode());
        }
    }

    void changePage()
    {
        const int number = type();
        const QString name = bytes.text(4);
        m_page.object.setActionName(number, 0, name);
        for (QDomElement e = m_page.model.firstChildElement(); !e.isNull();
             e = e.nextSiblingElement()) {
            if (e.attribute(QStringLiteral("type")).toInt() == number) {
                setName(e, name);
            }
        }
    }

    void makePacket()
    {
        HeldPacket &made = anyPacket();
        made = { std::make_unique<XMLPacket>(), 1 + type(), 1 + type(),
            newElement(XMLPacket::BODY) };
        made.packet->setSourceAgentID(made.source);
        made.packet->setDestinationAgentID(made.destination);
    }

    void copyPacket()
    {
        HeldPacket &copy = anyPacket();
        const HeldPacket &original = anyPacket();
        if (&copy != &original) {
            *copy.packet = *original.packet;
            copy.source = original.source;
            copy.destination = original.destination;
            copy.body = below(original.body.cloneNode());
        }
    }

    // A copy of an object's element, or the element itself, which leaves the packet that it was in.
    void append()
    {
        const HeldPacket &packet = anyPacket();
        const bool isCopy = bytes.flag();
        withAny([&packet, isCopy](auto &held) {
            QDomElement body = packet.body;
            if (isCopy) {
                packet.packet->append(held.object);
                body.appendChild(held.model.cloneNode());
            } else {
                packet.packet->appendV(held.object);
                body.appendChild(held.model);
            }
        });
    }

    // An object gets a copy of the first element of its kind in a packet; else it has none.
    void take()
    {
        const HeldPacket &packet = anyPacket();
        withAny([this, &packet](auto &held) {
            const QString kind = held.object.rootNodeName();
            std::list<QDomNode> all = nodesOf(packet);
            all.remove_if([&kind](const QDomNode &node) { return node.nodeName() != kind; });
            held.object.setNode(all.empty() ? QDomElement() : all.front().toElement());
            held.model = below(packet.body.firstChildElement(kind).cloneNode());
        });
    }

    QDomDocument m_document;
    Held<XMLUI> m_page;
    Held<XMLAction> m_action;
    Held<XMLPacketable> m_item;
    HeldPacket m_packets[PACKETS];
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    World(data, size).run();
    return 0;
}

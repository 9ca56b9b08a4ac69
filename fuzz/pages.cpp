#include "fuzz.h"

#include "tqpacketable.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QDomDocument>

#include <memory>

// Pages, actions, items and the packets that hold them, compared with elements of one plain
// document.

namespace {

constexpr unsigned PACKETS = 3;
constexpr unsigned NUMBERS = 3;  // of types and of originators
constexpr int MAX_CHILDREN = 16;

QString visibleText(bool isVisible) { return QString::number(isVisible ? 1 : 0); }

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
        begin(m_message);
        begin(m_image);
        for (HeldPacket &each : m_packets) {
            each = { std::make_unique<XMLPacket>(), 0, 0, newElement(XMLPacket::BODY) };
        }
    }

private:
    void step() override
    {
        using Step = void (World::*)();
        static constexpr Step STEPS[] = { &World::change, &World::changeAction, &World::fillPage,
            &World::changePage, &World::askPage, &World::fillAction, &World::makePacket,
            &World::copyPacket, &World::append, &World::append, &World::take };
        (this->*STEPS[bytes.below(std::size(STEPS))])();
        withAny([](const auto &held) {
            require(
                areSame(held.object.getNodeConst(), held.model), "an object says what it should");
        });
        check(anyPacket(), anyPacket());
    }

    void check(const HeldPacket &a, const HeldPacket &b)
    {
        std::list<QDomNode> nodes;
        for (int kind = XMLObject::XMLOBJECT_PACKETABLE; kind <= XMLObject::XMLOBJECT_MSG; ++kind) {
            a.packet->getNodesOfType(XMLObject::XMLOBJECT_TYPE(kind), nodes);
        }
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
        switch (bytes.below(5)) {
        case 0:
            return use(m_page);
        case 1:
            return use(m_item);
        case 2:
            return use(m_message);
        case 3:
            return use(m_image);
        default:
            return use(m_action);
        }
    }

    HeldPacket &anyPacket() { return m_packets[bytes.below(PACKETS)]; }
    int number() { return int(bytes.below(NUMBERS)); }

    static void setAttribute(QDomElement &e, const char *name, const QString &value)
    {
        if (!value.isEmpty()) {
            e.setAttribute(QString::fromLatin1(name), value);
        }
    }

    void setProperty(QDomElement &e, const char *name, const QString &value)
    {
        QDomElement property = e.firstChildElement(QString::fromLatin1(name));
        if (property.isNull()) {
            property =
                e.appendChild(m_document.createElement(QString::fromLatin1(name))).toElement();
            property.appendChild(m_document.createTextNode(value));
        }
        property.firstChild().setNodeValue(value);
    }

    void change()
    {
        const QString text = bytes.text(4);
        switch (bytes.below(4)) {
        case 0:
            m_page.object.setName(text);
            return setAttribute(m_page.model, "name", text);
        case 1:
            m_item.object.setName(text);
            delete m_item.object.getData();
            return setAttribute(m_item.model, "name", text);
        case 2:
            m_message.object.setMessage(text);
            return setAttribute(m_message.model, "msg", text);
        default:
            m_image.object.setURL(text);
            return setAttribute(m_image.model, "url", text);
        }
    }

    void changeAction()
    {
        const int type = number();
        const int originator = number();
        const bool isVisible = bytes.flag();
        m_action.object.setType(type);
        m_action.object.setOriginator(originator);
        m_action.object.setVisible(isVisible);
        setAttribute(m_action.model, "type", QString::number(type));
        setAttribute(m_action.model, "originator", QString::number(originator));
        setProperty(m_action.model, "visible", visibleText(isVisible));
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
        const int type = number();
        const int originator = number();
        const bool isVisible = bytes.flag();
        const QString name = bytes.text(4);
        m_page.object.setActionVisible(type, originator, isVisible);
        m_page.object.setActionName(type, originator, name);
        for (QDomElement e = m_page.model.firstChildElement(); !e.isNull();
             e = e.nextSiblingElement()) {
            if (e.attribute(QStringLiteral("type")).toInt() == type &&
                e.attribute(QStringLiteral("originator")).toInt() == originator) {
                setProperty(e, "visible", visibleText(isVisible));
                setAttribute(e, "name", name);
            }
        }
    }

    void askPage()
    {
        QList<XMLAction *> actions;
        const int count = m_page.object.getActions(actions, bytes.flag());
        require(count == actions.size(), "actions are counted");
        int visible = 0;
        int next = 0;
        for (QDomElement e = m_page.model.firstChildElement(); !e.isNull();
             e = e.nextSiblingElement()) {
            const QDomElement property = e.firstChildElement(QStringLiteral("visible"));
            visible += property.text() != visibleText(false) ? 1 : 0;
            if (next < count && areSame(actions.at(next)->getNodeConst(), e)) {
                ++next;
            }
        }
        qDeleteAll(actions);
        require(next == count, "a page gives its actions in order");
        require(m_page.object.visibleActionCount() == visible, "and counts the visible ones");
        require(count == visible || count == m_page.model.childNodes().size(), "all or those");
    }

    void fillAction()
    {
        const QString kind = XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE);
        if (bytes.flag() && m_action.model.childNodes().size() < MAX_CHILDREN) {
            m_action.object.append(m_item.object);
            m_action.model.appendChild(m_item.model.cloneNode());
            return;
        }
        m_action.object.removeNodesOfType(XMLObject::XMLOBJECT_PACKETABLE);
        QDomElement e = m_action.model.firstChildElement(kind);
        for (; !e.isNull(); e = m_action.model.firstChildElement(kind)) {
            m_action.model.removeChild(e);
        }
    }

    void makePacket()
    {
        HeldPacket &made = anyPacket();
        made = { std::make_unique<XMLPacket>(), 1 + number(), 1 + number(),
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
            std::list<QDomNode> all;
            for (int i = XMLObject::XMLOBJECT_PACKETABLE; i <= XMLObject::XMLOBJECT_MSG; ++i) {
                packet.packet->getNodesOfType(XMLObject::XMLOBJECT_TYPE(i), all);
            }
            all.remove_if([&kind](const QDomNode &node) { return node.nodeName() != kind; });
            held.object.setNode(all.empty() ? QDomElement() : all.front().toElement());
            held.model = below(packet.body.firstChildElement(kind).cloneNode());
        });
    }

    QDomDocument m_document;
    Held<XMLUI> m_page;
    Held<XMLAction> m_action;
    Held<XMLPacketable> m_item;
    Held<XMLMessage> m_message;
    Held<XMLImage> m_image;
    HeldPacket m_packets[PACKETS];
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    World(data, size).run();
    return 0;
}

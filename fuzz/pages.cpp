#include "fuzz.h"

#include "tqpacketable.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <QDomElement>

#include <algorithm>
#include <map>
#include <memory>
#include <vector>

// Pages, actions, items and the packets that hold them, compared with plain trees.

namespace {

constexpr unsigned PACKETS = 3;
constexpr unsigned NUMBERS = 3;  // of types, of originators and of agents
constexpr size_t MAX_CHILDREN = 16;  // what is copied into itself stays small

// What an element should say. Without a name there is no element, and nothing is set.
struct Tree;
using TreePointer = std::shared_ptr<Tree>;
using Trees = std::vector<TreePointer>;

struct Tree
{
    explicit Tree(const QString &tag) : name(tag) {}

    void setAttribute(const char *key, const QString &value);
    QString attribute(const char *key) const;
    void setProperty(const char *key, const QString &value);
    QString property(const char *key) const;
    void add(const TreePointer &child);
    TreePointer copy() const;
    bool isShownBy(const QDomNode &node) const;
    bool operator==(const Tree &other) const;

    QString name;
    QString text;
    std::map<QString, QString> attributes;
    Trees children;
};

Trees copies(const Trees &trees)
{
    Trees made;
    for (const TreePointer &tree : trees) {
        made.push_back(tree->copy());
    }
    return made;
}

bool areEqual(const Trees &a, const Trees &b)
{
    return std::equal(a.begin(), a.end(), b.begin(), b.end(),
        [](const TreePointer &left, const TreePointer &right) { return *left == *right; });
}

// Whether the elements directly below a node, in order, say what the trees do.
bool areShownBelow(const Trees &trees, const QDomNode &parent)
{
    QDomElement e = parent.firstChildElement();
    for (const TreePointer &tree : trees) {
        if (!tree->isShownBy(e)) {
            return false;
        }
        e = e.nextSiblingElement();
    }
    return e.isNull();
}

TreePointer childNamed(const Trees &trees, const char *name)
{
    const auto found = std::find_if(trees.begin(), trees.end(),
        [name](const TreePointer &each) { return each->name == QLatin1String(name); });
    return found == trees.end() ? nullptr : *found;
}

void Tree::setAttribute(const char *key, const QString &value)
{
    if (!name.isEmpty() && !value.isEmpty()) {
        attributes[QString::fromLatin1(key)] = value;
    }
}

QString Tree::attribute(const char *key) const
{
    const auto found = attributes.find(QString::fromLatin1(key));
    return found == attributes.end() ? QString() : found->second;
}

void Tree::setProperty(const char *key, const QString &value)
{
    TreePointer child = childNamed(children, key);
    if (!child) {
        child = std::make_shared<Tree>(QString::fromLatin1(key));
        add(child);
    }
    child->text = value;
}

QString Tree::property(const char *key) const
{
    const TreePointer child = childNamed(children, key);
    return child ? child->text : QString();
}

void Tree::add(const TreePointer &child)
{
    if (!name.isEmpty() && !child->name.isEmpty()) {
        children.push_back(child);
    }
}

TreePointer Tree::copy() const
{
    auto made = std::make_shared<Tree>(*this);
    made->children = copies(children);
    return made;
}

bool Tree::isShownBy(const QDomNode &node) const
{
    const QDomElement e = node.toElement();
    const bool hasAttributes = std::all_of(attributes.begin(), attributes.end(),
        [&e](const auto &each) { return e.attribute(each.first) == each.second; });
    return e.tagName() == name && hasAttributes &&
        e.attributes().count() == int(attributes.size()) &&
        (!children.empty() || e.text() == text) && areShownBelow(children, e);
}

bool Tree::operator==(const Tree &other) const
{
    return name == other.name && text == other.text && attributes == other.attributes &&
        areEqual(children, other.children);
}

// An object, and what its element should say.
template<typename Object>
struct Held
{
    Object object;
    TreePointer tree = std::make_shared<Tree>(object.rootNodeName());
};

struct HeldPacket
{
    std::unique_ptr<XMLPacket> packet = std::make_unique<XMLPacket>();
    int source = 0;  // none
    int destination = 0;
    Trees items;
};

class World
{
public:
    World(const uint8_t *data, size_t size) : m_bytes(data, size) {}
    void run();

private:
    void change();
    void changeAction();
    void fillPage();
    void changePage();
    void askPage();
    void fillAction();
    void makePacket();
    void copyPacket();
    void append();
    void take();
    void checkObject();
    void checkPacket();

    // Calls use with one of the objects.
    template<typename Use>
    void withAny(Use use);
    HeldPacket &packet() { return m_packets[m_bytes.below(PACKETS)]; }
    QString text() { return m_bytes.text(4); }
    int number() { return int(m_bytes.below(NUMBERS)); }

    Bytes m_bytes;
    Held<XMLUI> m_page;
    Held<XMLAction> m_action;
    Held<XMLPacketable> m_item;
    Held<XMLMessage> m_message;
    Held<XMLImage> m_image;
    HeldPacket m_packets[PACKETS];
};

void World::run()
{
    using Step = void (World::*)();
    static constexpr Step STEPS[] = { &World::change, &World::changeAction, &World::fillPage,
        &World::changePage, &World::askPage, &World::fillAction, &World::makePacket,
        &World::copyPacket, &World::append, &World::append, &World::take };
    while (!m_bytes.isEmpty()) {
        (this->*STEPS[m_bytes.below(std::size(STEPS))])();
        checkObject();
        checkPacket();
    }
}

template<typename Use>
void World::withAny(Use use)
{
    switch (m_bytes.below(5)) {
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

void World::checkObject()
{
    withAny([](const auto &held) {
        require(
            held.tree->isShownBy(held.object.getNodeConst()), "an object says what it was told");
    });
}

void World::checkPacket()
{
    const HeldPacket &a = packet();
    std::list<QDomNode> nodes;
    for (int kind = XMLObject::XMLOBJECT_PACKETABLE; kind <= XMLObject::XMLOBJECT_MSG; ++kind) {
        a.packet->getNodesOfType(XMLObject::XMLOBJECT_TYPE(kind), nodes);
    }
    require(nodes.size() == a.items.size(), "a packet holds what was appended");
    require(a.packet->isEmpty() == a.items.empty(), "a packet without items is empty");
    require(nodes.empty() || areShownBelow(a.items, nodes.front().parentNode()),
        "a packet says what its items do, in their order");
    require(a.packet->getSourceAgentID() == a.source, "a packet has its source");
    require(a.packet->getDestinationAgentID() == a.destination, "a packet has its destination");

    const HeldPacket &b = packet();
    const bool saySame =
        a.source == b.source && a.destination == b.destination && areEqual(a.items, b.items);
    require((*a.packet == *b.packet) == saySame, "packets that say the same are equal");
    require((*b.packet != *a.packet) == !saySame, "and others are not");
}

void World::change()
{
    const QString value = text();
    switch (m_bytes.below(4)) {
    case 0:
        m_page.object.setName(value);
        m_page.tree->setAttribute("name", value);
        break;
    case 1:
        m_item.object.setName(value);
        m_item.tree->setAttribute("name", value);
        delete m_item.object.getData();
        break;
    case 2:
        m_message.object.setMessage(value);
        m_message.tree->setAttribute("msg", value);
        break;
    default:
        m_image.object.setURL(value);
        m_image.tree->setAttribute("url", value);
        break;
    }
}

void World::changeAction()
{
    const int type = number();
    const int originator = number();
    const bool isVisible = m_bytes.flag();
    m_action.object.setType(type);
    m_action.object.setOriginator(originator);
    m_action.object.setVisible(isVisible);
    m_action.tree->setAttribute("type", QString::number(type));
    m_action.tree->setAttribute("originator", QString::number(originator));
    m_action.tree->setProperty("visible", QString::number(isVisible ? 1 : 0));
}

void World::fillPage()
{
    if (m_page.tree->children.size() < MAX_CHILDREN) {
        m_page.object.append(m_action.object);
        m_page.tree->add(m_action.tree->copy());
    }
}

void World::changePage()
{
    const int type = number();
    const int originator = number();
    const bool isVisible = m_bytes.flag();
    const QString name = text();
    const QString orgName = name + QLatin1Char('.');
    m_page.object.setActionVisible(type, originator, isVisible);
    m_page.object.setActionName(type, originator, name);
    m_page.object.setActionOrgName(type, originator, orgName);
    for (const TreePointer &action : m_page.tree->children) {
        if (action->attribute("type").toInt() == type &&
            action->attribute("originator").toInt() == originator) {
            action->setProperty("visible", QString::number(isVisible ? 1 : 0));
            action->setAttribute("name", name);
            action->setProperty("org_name", orgName);
        }
    }
}

void World::askPage()
{
    const bool visibleOnly = m_bytes.flag();
    Trees visible;
    for (const TreePointer &action : m_page.tree->children) {
        if (action->property("visible") != QLatin1String("0")) {
            visible.push_back(action);
        }
    }
    const Trees &expected = visibleOnly ? visible : m_page.tree->children;
    QList<XMLAction *> actions;
    require(m_page.object.visibleActionCount() == int(visible.size()), "the visible are counted");
    require(m_page.object.getActions(actions, visibleOnly) == int(expected.size()),
        "a page gives its actions");
    for (size_t i = 0; i < expected.size(); ++i) {
        require(expected[i]->isShownBy(actions.at(int(i))->getNodeConst()), "as they are");
    }
    qDeleteAll(actions);
}

void World::fillAction()
{
    Trees &children = m_action.tree->children;
    const QString kind = XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE);
    if (m_bytes.flag() && children.size() < MAX_CHILDREN) {
        m_action.object.append(m_item.object);
        m_action.tree->add(m_item.tree->copy());
    } else {
        m_action.object.removeNodesOfType(XMLObject::XMLOBJECT_PACKETABLE);
        children.erase(std::remove_if(children.begin(), children.end(),
                           [&kind](const TreePointer &child) { return child->name == kind; }),
            children.end());
    }
}

void World::makePacket()
{
    HeldPacket &made = packet();
    made = {};
    made.source = 1 + number();
    made.destination = 1 + number();
    made.packet->setSourceAgentID(made.source);
    made.packet->setDestinationAgentID(made.destination);
}

void World::copyPacket()
{
    HeldPacket &copy = packet();
    const HeldPacket &original = packet();
    if (&copy == &original) {
        copy.packet->init(nullptr);
        copy = { std::move(copy.packet), 0, 0, {} };
    } else {
        copy.packet->init(original.packet.get());
        copy = { std::move(copy.packet), original.source, original.destination,
            copies(original.items) };
    }
}

// A copy of an object's element, or the element itself, which leaves the packet that it was in.
void World::append()
{
    HeldPacket &to = packet();
    const bool isMoved = m_bytes.flag();
    withAny([this, &to, isMoved](auto &held) {
        if (held.tree->name.isEmpty()) {
            to.packet->appendV(held.object);
            return;
        }
        if (!isMoved) {
            to.items.push_back(held.tree->copy());
            require(to.items.back()->isShownBy(to.packet->append(held.object)), "a copy is given");
            return;
        }
        for (HeldPacket &each : m_packets) {
            each.items.erase(
                std::remove(each.items.begin(), each.items.end(), held.tree), each.items.end());
        }
        to.packet->appendV(held.object);
        to.items.push_back(held.tree);
    });
}

// An object becomes a copy of the first element of its kind in a packet; without one it has none.
void World::take()
{
    const HeldPacket &from = packet();
    const bool isData = m_bytes.flag();
    withAny([&from, isData](auto &held) {
        const QString name = held.object.rootNodeName();
        std::list<QDomNode> nodes;
        for (int kind = 0; kind <= XMLObject::XMLOBJECT_MSG; ++kind) {
            if (XMLObject::rootNodeName(XMLObject::XMLOBJECT_TYPE(kind)) == name) {
                from.packet->getNodesOfType(XMLObject::XMLOBJECT_TYPE(kind), nodes);
            }
        }
        const QDomNode node = nodes.empty() ? QDomNode() : nodes.front();
        if constexpr (std::is_same_v<decltype(held), Held<XMLPacketable> &>) {
            isData ? held.object.setData(node) : held.object.setNode(node.toElement());
        } else {
            held.object.setNode(node.toElement());
        }
        const TreePointer found = childNamed(from.items, name.toLatin1().constData());
        held.tree = found ? found->copy() : std::make_shared<Tree>(QString());
    });
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    World(data, size).run();
    return 0;
}

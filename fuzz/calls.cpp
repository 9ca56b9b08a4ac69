#include "fuzz.h"

#include "tqpacketable.h"
#include "xmlaction.h"
#include "xmlactiongroup.h"
#include "xmlagent.h"
#include "xmlagentbroker.h"
#include "xmlimage.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"
#include "xmlui.h"

#include <QCoreApplication>
#include <QPointer>

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <utility>

// Sequences of calls on routers, agents, groups, actions, pages and packets: the input is a program
// of which one part runs at the top and the rest from inside whatever calls back.

namespace {

constexpr unsigned AGENTS = 6;
constexpr unsigned ROUTERS = 2;
constexpr unsigned PACKETS = 4;
constexpr unsigned ACTIONS = 5;
constexpr unsigned GROUPS = 2;
constexpr unsigned NESTING = 12;  // calls back inside one another that run a part of the program
constexpr unsigned NESTED_STEPS = 3;
constexpr int MAX_TEXT = 1500;  // of what is copied: copies of copies double it

// Of actions; requests among them that get no reply without a server.
constexpr int ACTION_TYPES[] = { 0, 1, 2, 1000, 1001, 1002 };

constexpr int BRIDGE = -1;
constexpr int IDS[] = { 1, 2, 3, 4, 5, 6, 7, -1, 0, 12, 0x7fffffff, -0x7fffffff - 1 };
constexpr int TYPES[] = { 1, 2, 5, 0, -1, 77 };

class World;

class Packet : public XMLPacket
{
public:
    explicit Packet(World &world);
    ~Packet() override;
    using XMLPacket::operator=;

private:
    World &m_world;
};

class Agent : public XMLAgent
{
public:
    Agent(World &world, int type, bool wantsRemovals) : XMLAgent(type), m_world(world)
    {
        wantRemovalNotifications = wantsRemovals;
    }
    void receive(XMLPacket *packet) override;
    void agentRemoved(int agentID) override;

private:
    World &m_world;
};

class Broker : public XMLAgentBroker
{
public:
    explicit Broker(World &world) : m_world(world) {}
    int supplyAgent(int agentType) override;

private:
    World &m_world;
};

// A router, and what it should be doing.
struct Hub
{
    QPointer<XMLRouter> router;
    std::deque<XMLPacket *> queue;  // accepted and not yet delivered
    std::map<int, Agent *> agents;
    bool isDying = false;
};

// Everything that a program works on. Whatever is called may call back and change all of it, so
// each operation looks up what it needs and touches nothing afterwards.
class World
{
public:
    World(const uint8_t *data, size_t size) : m_bytes(data, size)
    {
        for (unsigned i = 0; i < ROUTERS; ++i) {
            makeRouter(m_hubs[i]);
        }
    }
    void run()
    {
        while (!m_bytes.isEmpty()) {
            step();
        }
        finish();
    }
    void callBack();

    void received(XMLPacket *packet);
    void created(Packet *packet) { m_packets.insert(packet); }
    void destroyed(Packet *packet);
    int supply(int agentType);

private:
    void step();
    void stepRouter();
    void stepAgent();
    void stepPacket();
    void stepItem();
    void stepAction();
    void stepGroup();
    void stepEvents();
    void finish();

    void makeRouter(Hub &hub);
    void dropRouter(Hub &hub);
    void addAgent(Hub &hub, unsigned slot);
    void removeAgent(Hub &hub, unsigned slot);
    void deleteAgent(unsigned slot);
    bool isRegistered(const Agent *agent) const;
    void send(Hub &hub, Packet *&own);
    void makeAction(unsigned slot);
    void copyPacket(Packet &own, const Packet *other);
    void appendTo(XMLPacket &packet);
    void changePage();
    void checkGroup(const XMLActionGroup &group) const;

    Hub &hub() { return m_hubs[m_bytes.below(ROUTERS)]; }
    XMLAction *action() { return m_actions[m_bytes.below(ACTIONS)]; }

    Bytes m_bytes;
    unsigned m_nesting = 0;
    Hub m_hubs[ROUTERS];
    std::unique_ptr<Agent> m_agents[AGENTS];
    std::set<const XMLPacket *> m_packets;  // all there are
    Packet *m_own[PACKETS] = {};  // not sent
    QPointer<XMLAction> m_actions[ACTIONS];
    QPointer<XMLActionGroup> m_groups[GROUPS];
    XMLUI m_page;
    XMLPacketable m_item;
    XMLMessage m_message;
    XMLImage m_image;
};

Packet::Packet(World &world) : m_world(world) { world.created(this); }
Packet::~Packet() { m_world.destroyed(this); }
void Agent::receive(XMLPacket *packet) { m_world.received(packet); }
void Agent::agentRemoved(int) { m_world.callBack(); }
int Broker::supplyAgent(int agentType) { return m_world.supply(agentType); }

void World::callBack()
{
    if (m_nesting >= NESTING) {
        return;
    }
    ++m_nesting;
    for (unsigned steps = m_bytes.below(NESTED_STEPS + 1); steps > 0; --steps) {
        step();
    }
    --m_nesting;
}

// The bridge deletes what it gets later on, so its packets may still be in the model's queue.
bool isNext(const std::deque<XMLPacket *> &queue, const XMLPacket *packet)
{
    const auto ours = std::find_if(queue.begin(), queue.end(), [packet](const XMLPacket *each) {
        return each == packet || each->getDestinationAgentID() != BRIDGE;
    });
    return ours != queue.end() && *ours == packet;
}

void World::received(XMLPacket *packet)
{
    const auto hub = std::find_if(std::begin(m_hubs), std::end(m_hubs),
        [packet](const Hub &h) { return std::count(h.queue.begin(), h.queue.end(), packet) > 0; });
    require(hub != std::end(m_hubs), "a packet is delivered once");
    require(isNext(hub->queue, packet), "packets are delivered in order");
    std::deque<XMLPacket *> &queue = hub->queue;
    queue.erase(queue.begin(), std::find(queue.begin(), queue.end(), packet) + 1);
    const bool isEarly = m_bytes.flag();
    if (isEarly) {
        delete packet;
    }
    callBack();
    if (!isEarly) {
        packet->deleteLater();
    }
}

void World::destroyed(Packet *packet)
{
    m_packets.erase(packet);
    for (Hub &hub : m_hubs) {
        const auto queued = std::find(hub.queue.begin(), hub.queue.end(), packet);
        if (queued != hub.queue.end()) {
            const int destination = packet->getDestinationAgentID();
            require(destination == BRIDGE || isNext(hub.queue, packet),
                "what cannot be delivered goes in order, too");
            require(destination == BRIDGE || !hub.router || !hub.router->contains(destination),
                "what can be delivered is not deleted");
            hub.queue.erase(queued);
        }
    }
}

int World::supply(int agentType)
{
    const unsigned answer = m_bytes.take();
    callBack();
    Hub &asked = hub();
    if (answer % 4 == 0 && asked.router) {
        return asked.router->supplyAgentOfType(
            answer % 8 == 0 ? TYPES[answer % std::size(TYPES)] : agentType);
    }
    return answer % 4 == 1 ? int(m_bytes.word()) : 0;
}

void World::makeRouter(Hub &hub)
{
    hub.router = new XMLRouter(nullptr, nullptr, "router");
    hub.isDying = false;
}

void World::dropRouter(Hub &hub)
{
    if (!hub.router || hub.isDying) {
        return;
    }
    hub.isDying = true;
    delete hub.router;
    // What is still queued is left to the application.
    const std::deque<XMLPacket *> left = std::exchange(hub.queue, {});
    qDeleteAll(left);
    hub.agents.clear();
}

void World::addAgent(Hub &hub, unsigned slot)
{
    if (!m_agents[slot]) {
        const int type = TYPES[m_bytes.below(std::size(TYPES))];
        m_agents[slot] = std::make_unique<Agent>(*this, type, m_bytes.flag());
    }
    if (hub.router && !hub.isDying) {
        Agent *const agent = m_agents[slot].get();
        hub.router->add(agent);
        hub.agents[agent->getAgentID()] = agent;
        require(hub.router->contains(agent->getAgentID()), "what was added is there");
    }
}

void World::removeAgent(Hub &hub, unsigned slot)
{
    Agent *const agent = m_agents[slot].get();
    if (agent && hub.router && !hub.isDying && agent->getAgentID() > 0) {
        const int id = agent->getAgentID();
        hub.agents.erase(id);
        hub.router->remove(agent);
    }
}

bool World::isRegistered(const Agent *agent) const
{
    return std::any_of(std::begin(m_hubs), std::end(m_hubs), [agent](const Hub &hub) {
        return std::any_of(hub.agents.begin(), hub.agents.end(),
            [agent](const auto &entry) { return entry.second == agent; });
    });
}

// An agent that some router still reaches has to stay.
void World::deleteAgent(unsigned slot)
{
    if (m_agents[slot] && !isRegistered(m_agents[slot].get())) {
        m_agents[slot].reset();
    }
}

void World::send(Hub &hub, Packet *&own)
{
    Packet *const packet = own;
    if (!hub.router) {
        return;
    }
    const XMLPacket *const last = hub.queue.empty() ? nullptr : hub.queue.back();
    const bool isDuplicate = last && *last == *packet;
    if (isDuplicate && last->getDestinationAgentID() == BRIDGE) {
        return;  // who knows whether that one is still waiting
    }
    own = nullptr;
    if (!isDuplicate && hub.router->contains(packet->getSourceAgentID())) {
        hub.queue.push_back(packet);
    }
    hub.router->send(packet);
    if (m_bytes.below(4) == 0) {
        hub.router->send(packet);  // is taken over already
    }
}

void World::makeAction(unsigned slot)
{
    if (m_actions[slot]) {
        return;
    }
    const int type = ACTION_TYPES[m_bytes.below(std::size(ACTION_TYPES))];
    auto *const made = new XMLAction(m_bytes.text(8), type, int(m_bytes.below(3)));
    m_actions[slot] = made;
    QObject::connect(made, &XMLAction::toggled, made, [this] { callBack(); });
    if (m_bytes.flag()) {
        QObject::connect(made, &QObject::destroyed, qApp, [this] { callBack(); });
    }
}

void World::step()
{
    using Step = void (World::*)();
    static constexpr Step STEPS[] = { &World::stepRouter, &World::stepAgent, &World::stepPacket,
        &World::stepItem, &World::stepAction, &World::stepGroup, &World::stepEvents };
    (this->*STEPS[m_bytes.below(std::size(STEPS))])();
}

void World::stepRouter()
{
    Hub &hub = this->hub();
    const unsigned operation = m_bytes.below(8);
    if (!hub.router) {
        makeRouter(hub);
        return;
    }
    const int number = IDS[m_bytes.below(std::size(IDS))];
    switch (operation) {
    case 0:
        dropRouter(hub);
        break;
    case 1:
        hub.router->setAgentBroker(m_bytes.flag() ? new Broker(*this) : nullptr);
        break;
    case 2:
        hub.router->supplyAgentOfType(number);
        break;
    case 3:
        hub.router->notifyAgentRemovals(number);
        break;
    case 4:
        require(hub.router->findAgentsOfType(number).size() <= hub.agents.size() + 1,
            "only those are found that are there");
        hub.router->getAgentType(number);
        break;
    case 5:
        hub.router->add(nullptr);
        hub.router->remove(nullptr);
        hub.router->send(nullptr);
        break;
    default:
        hub.router->send();
        break;
    }
}

void World::stepAgent()
{
    Hub &hub = this->hub();
    const unsigned slot = m_bytes.below(AGENTS);
    switch (m_bytes.below(4)) {
    case 0:
        removeAgent(hub, slot);
        break;
    case 1:
        deleteAgent(slot);
        break;
    default:
        addAgent(hub, slot);
        break;
    }
}

// The first node of that kind in a packet; null without one.
QDomNode firstNode(const XMLPacket &packet, XMLObject::XMLOBJECT_TYPE kind)
{
    std::list<QDomNode> nodes;
    require(packet.getNodesOfType(kind, nodes) == int(nodes.size()), "nodes are counted");
    return nodes.empty() ? QDomNode() : nodes.front();
}

bool isSmall(const XMLObject &object) { return object.toString().size() < MAX_TEXT; }

// A packet becomes a copy of another, or empty for want of one.
void World::copyPacket(Packet &own, const Packet *other)
{
    own.init(other == &own ? nullptr : other);
    if (other && other != &own) {
        require(own == *other, "a copy equals its original");
        const int source = other->getSourceAgentID();
        own.setSourceAgentID(IDS[m_bytes.below(3)]);
        require(other->getSourceAgentID() == source, "a copy is a packet of its own");
    }
}

void World::stepPacket()
{
    Packet *&own = m_own[m_bytes.below(PACKETS)];
    const unsigned operation = m_bytes.below(8);
    if (!own) {
        own = new Packet(*this);
        own->setSourceAgentID(IDS[m_bytes.below(3)]);
        own->setDestinationAgentID(IDS[m_bytes.below(std::size(IDS))]);
        return;
    }
    const Packet *const other = m_own[m_bytes.below(PACKETS)];
    switch (operation) {
    case 0:
        delete std::exchange(own, nullptr);
        break;
    case 1:
        copyPacket(*own, other);
        break;
    case 2:
        require(!other || (*own == *other) == (*other == *own), "equality is mutual");
        require(*own == *own, "a packet equals itself");
        break;
    case 3:
    case 4:
        appendTo(*own);
        break;
    default:
        send(hub(), own);
        break;
    }
}

void World::appendTo(XMLPacket &packet)
{
    XMLAction *const chosen = action();
    const bool isCopy = m_bytes.flag();
    const auto add = [&packet, isCopy](auto &object) {
        if (!isCopy) {
            packet.appendV(object);
        } else if (isSmall(object)) {
            packet.append(object);
        }
    };
    switch (m_bytes.below(5)) {
    case 0:
        add(m_page);
        break;
    case 1:
        add(m_item);
        break;
    case 2:
        add(m_message);
        break;
    case 3:
        add(m_image);
        break;
    default:
        if (chosen) {
            add(*chosen);
        }
        break;
    }
}

// Items, pages and what else packets hold, taken from one another.
void World::stepItem()
{
    Packet *const packet = m_own[m_bytes.below(PACKETS)];
    XMLAction *const chosen = action();
    switch (m_bytes.below(7)) {
    case 0:
        m_message.setMessage(m_bytes.text(8));
        m_image.setURL(m_bytes.text(8));
        break;
    case 1:
        m_item.setType(PACKETDATATYPES(m_bytes.below(100)));
        m_item.setName(m_bytes.text(8));
        break;
    case 2:
        if (packet) {
            m_item.setData(firstNode(*packet, XMLObject::XMLOBJECT_TYPE(m_bytes.below(7))));
        }
        break;
    case 3:
        if (packet && chosen) {
            chosen->setNode(firstNode(*packet, XMLObject::XMLOBJECT_ACTION).toElement());
        }
        break;
    case 4:
        if (chosen && isSmall(m_item)) {
            chosen->append(m_item);
        } else if (chosen) {
            chosen->removeNodesOfType(XMLObject::XMLOBJECT_PACKETABLE);
        }
        break;
    case 5:
        delete m_item.getData();
        m_item.setNode(m_item.getNode());
        break;
    default:
        changePage();
        break;
    }
}

void World::changePage()
{
    XMLAction *const chosen = action();
    const int type = ACTION_TYPES[m_bytes.below(std::size(ACTION_TYPES))];
    QList<XMLAction *> actions;
    switch (m_bytes.below(4)) {
    case 0:
        m_page.setActionVisible(type, int(m_bytes.below(3)), m_bytes.flag());
        m_page.setActionOrgName(type, int(m_bytes.below(3)), m_bytes.text(8));
        break;
    case 1:
        require(m_page.getActions(actions, true) == m_page.visibleActionCount(),
            "as many actions as are visible");
        qDeleteAll(actions);
        break;
    case 2:
        m_page.setNode(m_page.getNode());
        break;
    default:
        if (chosen && isSmall(*chosen)) {
            m_page.append(*chosen);
        }
        break;
    }
}

void World::stepAction()
{
    const unsigned slot = m_bytes.below(ACTIONS);
    XMLAction *const chosen = m_actions[slot];
    bool isAllowed = false;
    switch (m_bytes.below(6)) {
    case 0:
        delete chosen;
        break;
    case 1:
        if (chosen) {
            chosen->toggle();
        }
        break;
    case 2:
        if (chosen) {
            chosen->setChecked(m_bytes.flag());
        }
        break;
    case 3:
        if (chosen) {
            chosen->setSelected(m_bytes.flag());
            Q_EMIT chosen->toggling(isAllowed);
        }
        break;
    default:
        makeAction(slot);
        break;
    }
}

void World::checkGroup(const XMLActionGroup &group) const
{
    for (const XMLAction *member : group.actions()) {
        require(std::count(std::begin(m_actions), std::end(m_actions), member) == 1,
            "a group lists the living");
    }
    require(!group.checkedAction() || group.checkedAction()->isSelected(),
        "the checked action is selected");
}

void World::stepGroup()
{
    QPointer<XMLActionGroup> &group = m_groups[m_bytes.below(GROUPS)];
    XMLAction *const chosen = action();
    const unsigned operation = m_bytes.below(8);
    if (!group) {
        group = new XMLActionGroup(nullptr, nullptr);
        return;
    }
    switch (operation) {
    case 0:
        delete group;
        break;
    case 1:
        group->removeAction(chosen);
        break;
    case 2:
        group->toggleAction(chosen);
        break;
    case 3:
        // Slots without a sender, and with one that is no action.
        group->removeAction();
        group->updateActions();
        QObject::connect(&m_page, SIGNAL(objectNameChanged(QString)), group, SLOT(removeAction()));
        m_page.setObjectName(QString::number(m_bytes.take()));
        break;
    case 4:
        if (chosen) {
            QObject::connect(chosen, SIGNAL(toggling(bool &)), group, SLOT(approveToggle(bool &)));
        }
        break;
    case 5:
        checkGroup(*group);
        break;
    default:
        group->addAction(chosen);
        break;
    }
}

void World::stepEvents()
{
    if (m_nesting < NESTING) {
        ++m_nesting;
        if (m_bytes.below(3) == 0) {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        } else {
            QCoreApplication::processEvents();
        }
        --m_nesting;
    }
}

// Nothing calls back into the program any more: it has ended.
void World::finish()
{
    for (Hub &hub : m_hubs) {
        if (hub.router) {
            hub.router->send();
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
            require(hub.queue.empty(), "everything was delivered");
        }
        dropRouter(hub);
    }
    qDeleteAll(std::begin(m_own), std::end(m_own));
    for (const QPointer<XMLActionGroup> &group : m_groups) {
        delete group;
    }
    for (const QPointer<XMLAction> &action : m_actions) {
        delete action;
    }
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    require(m_packets.empty(), "no packet is left");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    makeApplication();
    World(data, size).run();
    return 0;
}

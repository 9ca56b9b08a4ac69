#include "fuzz.h"

#include "xmlaction.h"
#include "xmlagent.h"
#include "xmlagentbroker.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include <QCoreApplication>
#include <QPointer>

#include <algorithm>
#include <deque>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

// Calls on a router, also from inside its agents and its broker, compared with a router that is a
// list of packets and a map of agents.

namespace {

constexpr unsigned AGENTS = 5;
constexpr unsigned NESTING = 12;  // calls back, one inside another, that make further calls
constexpr unsigned NESTED_STEPS = 3;
constexpr int BRIDGE = -1;
constexpr int UNKNOWN_TYPE = 5;
constexpr int IDS[] = { 1, 2, 3, 4, 5, 6, BRIDGE, 0, 12, 0x7fffffff, -0x7fffffff - 1 };
constexpr int REQUESTS[] = { 0, 1000, 1001, 1002 };  // without a server there is no reply to these
constexpr int TYPES[] = { 1, 2, UNKNOWN_TYPE, 0, -1 };

class World;

struct Packet : public XMLPacket
{
    Packet(World &owner, int from, int to, const QString &message);
    ~Packet() override;
    bool saysTheSameAs(const Packet &other) const
    {
        return source == other.source && destination == other.destination && text == other.text;
    }

    World &world;
    const int source;
    const int destination;
    const QString text;
    bool isQueued = false;
};

struct Agent : public XMLAgent
{
    Agent(World &owner, int type, bool wantsRemovals) : XMLAgent(type), world(owner)
    {
        wantRemovalNotifications = wantsRemovals;
    }
    void receive(XMLPacket *packet) override;
    void agentRemoved(int agentID) override;

    World &world;
};

struct Broker : public XMLAgentBroker
{
    explicit Broker(World &owner);
    ~Broker() override;
    int supplyAgent(int agentType) override;

    World &world;
};

// What was told to whom: the id of an agent that is gone.
using Reports = std::vector<std::pair<const Agent *, int>>;

// The router and its model. What a call calls back may make any other call, and delete the router.
class World
{
public:
    World(const uint8_t *data, size_t size) : m_bytes(data, size) {}
    void run();

    void created(Packet *packet) { m_packets.insert(packet); }
    void destroyed(Packet *packet);
    void received(const Agent &agent, Packet *packet);
    void removed(const Agent &agent, int id);
    int supply(int type);
    void brokerDied();
    int brokers = 0;  // all there are

private:
    void step();
    void callBack();
    void check() const;

    void addAgent();
    void removeAgent();
    void deleteAgent();
    void sendNew();
    void send(Packet *packet);
    void deliver();
    void runEvents();
    void askForType();
    void changeBroker();
    void notify();
    void passNull();
    void dropRouter();

    bool contains(int id) const { return id == BRIDGE || m_agents.count(id) > 0; }
    int typeOf(int id) const;
    std::list<int> idsOfType(int type) const;
    Packet *next() const;
    template<typename Call>
    void deliverBy(Call call);
    template<typename Call>
    void expectReports(const std::vector<int> &gone, Call call);

    Bytes m_bytes;
    unsigned m_nesting = 0;
    unsigned m_steps = 0;
    QPointer<XMLRouter> m_router;
    bool m_isDying = false;
    std::unique_ptr<Agent> m_slots[AGENTS];
    std::set<const Packet *> m_packets;  // all there are
    Reports m_reports;
    Broker *m_broker = nullptr;  // the router's
    std::set<int> m_supplying;  // types that the broker is being asked for
    int m_supplied = 0;  // the broker's last answer
    unsigned m_requests = 0;

    // The model. The bridge deletes its packets later on, so those may stay in the list.
    std::deque<Packet *> m_queue;
    std::map<int, Agent *> m_agents;
    int m_lastID = 0;
};

Packet::Packet(World &owner, int from, int to, const QString &message)
    : world(owner), source(from), destination(to), text(message)
{
    setSourceAgentID(source);
    setDestinationAgentID(destination);
    XMLMessage content(text);
    append(content);
    world.created(this);
}

Packet::~Packet() { world.destroyed(this); }
void Agent::receive(XMLPacket *packet) { world.received(*this, static_cast<Packet *>(packet)); }
void Agent::agentRemoved(int agentID) { world.removed(*this, agentID); }
Broker::Broker(World &owner) : world(owner) { ++world.brokers; }
Broker::~Broker() { world.brokerDied(); }
int Broker::supplyAgent(int agentType) { return world.supply(agentType); }

void World::run()
{
    while (!m_bytes.isEmpty()) {
        step();
    }
    if (m_router) {
        deliver();
    }
    dropRouter();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    require(m_packets.empty(), "no packet is left");
    require(brokers == 0, "no broker is left");
}

void World::step()
{
    using Step = void (World::*)();
    static constexpr Step STEPS[] = { &World::addAgent, &World::removeAgent, &World::deleteAgent,
        &World::sendNew, &World::sendNew, &World::deliver, &World::runEvents, &World::askForType,
        &World::changeBroker, &World::notify, &World::passNull, &World::dropRouter };
    ++m_steps;
    if (!m_router) {
        m_router = new XMLRouter(nullptr, nullptr, "router");
        m_lastID = 0;
    }
    (this->*STEPS[m_bytes.below(std::size(STEPS))])();
    check();
}

void World::callBack()
{
    if (m_nesting < NESTING) {
        ++m_nesting;
        for (unsigned steps = m_bytes.below(NESTED_STEPS + 1); steps > 0; --steps) {
            step();
        }
        --m_nesting;
    }
}

int World::typeOf(int id) const
{
    const auto entry = std::find_if(m_agents.begin(), m_agents.end(),
        [id](const auto &each) { return each.second->getAgentID() == id; });
    if (entry != m_agents.end()) {
        return entry->second->getAgentType();
    }
    return id == BRIDGE ? 0 : UNKNOWN_TYPE;
}

std::list<int> World::idsOfType(int type) const
{
    std::list<int> ids;
    if (type == 0) {
        ids.push_back(BRIDGE);
    }
    for (const auto &[id, agent] : m_agents) {
        if (agent->getAgentType() == type) {
            ids.push_back(agent->getAgentID());
        }
    }
    return ids;
}

// Whether the router knows whom the model knows.
void World::check() const
{
    if (!m_router || m_isDying) {
        return;
    }
    for (const int id : IDS) {
        require(m_router->contains(id) == contains(id), "who was added and not removed is there");
        require(m_router->getAgentType(id) == typeOf(id), "an agent has its type");
    }
    for (const int type : TYPES) {
        require(m_router->findAgentsOfType(type) == idsOfType(type), "agents are found by type");
    }
}

void World::addAgent()
{
    std::unique_ptr<Agent> &slot = m_slots[m_bytes.below(AGENTS)];
    if (!slot) {
        const int type = TYPES[m_bytes.below(std::size(TYPES))];
        slot = std::make_unique<Agent>(*this, type, m_bytes.flag());
    }
    m_router->add(slot.get());
    m_agents[++m_lastID] = slot.get();
    require(slot->getAgentID() == m_lastID, "ids are handed out in order");
}

void World::removeAgent()
{
    Agent *const agent = m_slots[m_bytes.below(AGENTS)].get();
    if (agent && agent->getAgentID() > 0) {
        m_agents.erase(agent->getAgentID());
        expectReports({ agent->getAgentID() }, [this, agent] { m_router->remove(agent); });
    }
}

// An agent that the router still reaches has to stay.
void World::deleteAgent()
{
    std::unique_ptr<Agent> &slot = m_slots[m_bytes.below(AGENTS)];
    if (std::none_of(m_agents.begin(), m_agents.end(),
            [&slot](const auto &each) { return each.second == slot.get(); })) {
        slot.reset();
    }
}

// Packets to the bridge are all different: who knows which of them are still waiting?
void World::sendNew()
{
    const int source = IDS[m_bytes.below(4)];
    const int destination = IDS[m_bytes.below(std::size(IDS))];
    const bool isRequest = destination == BRIDGE;
    const unsigned text = isRequest ? ++m_requests : m_bytes.below(2);
    auto *const packet = new Packet(*this, source, destination, QString::number(text));
    if (isRequest) {
        XMLAction request(QStringLiteral("list"), REQUESTS[m_bytes.below(4)], source);
        packet->append(request);
    }
    send(packet);
}

void World::send(Packet *packet)
{
    if (!m_router || m_isDying) {
        packet->deleteLater();
        return;
    }
    const bool isDuplicate = !m_queue.empty() && m_queue.back()->saysTheSameAs(*packet);
    if (!isDuplicate && contains(packet->source)) {
        packet->isQueued = true;
        m_queue.push_back(packet);
    }
    m_router->send(packet);
    m_router->send(packet);  // is taken over already
}

Packet *World::next() const
{
    const auto first = std::find_if(m_queue.begin(), m_queue.end(),
        [](const Packet *packet) { return packet->destination != BRIDGE; });
    return first == m_queue.end() ? nullptr : *first;
}

void World::received(const Agent &agent, Packet *packet)
{
    require(packet->isQueued, "a packet is delivered once");
    require(packet == next(), "packets are delivered in order");
    const auto entry = m_agents.find(packet->destination);
    require(entry != m_agents.end() && entry->second == &agent, "a packet reaches its destination");
    m_queue.erase(m_queue.begin(), std::find(m_queue.begin(), m_queue.end(), packet) + 1);
    packet->isQueued = false;
    switch (m_bytes.below(3)) {
    case 0:
        packet->deleteLater();
        callBack();
        break;
    case 1:
        delete packet;
        callBack();
        break;
    default:
        callBack();
        send(packet);  // on
        break;
    }
}

void World::destroyed(Packet *packet)
{
    m_packets.erase(packet);
    if (packet->isQueued && packet->destination != BRIDGE) {
        require(packet == next(), "what cannot be delivered goes in order, too");
        require(!contains(packet->destination), "what can be delivered is not deleted");
    }
    m_queue.erase(std::remove(m_queue.begin(), m_queue.end(), packet), m_queue.end());
}

void World::removed(const Agent &agent, int id)
{
    m_reports.emplace_back(&agent, id);
    callBack();
}

// Makes a call that tells agents who is gone. What they are told is certain unless they do
// something themselves.
template<typename Call>
void World::expectReports(const std::vector<int> &gone, Call call)
{
    Reports expected;
    for (const int id : gone) {
        for (const auto &[key, agent] : m_agents) {
            if (agent->wantAgentRemovalNotifications() && agent->getAgentID() != id) {
                expected.emplace_back(agent, id);
            }
        }
    }
    m_reports.clear();
    const unsigned steps = m_steps;
    call();
    require(m_steps != steps || m_reports == expected, "who wants to hears of each removal");
}

// Makes a call that delivers all that is queued.
template<typename Call>
void World::deliverBy(Call call)
{
    std::vector<int> unreachable;
    for (const Packet *packet : m_queue) {
        if (!contains(packet->destination)) {
            unreachable.push_back(packet->destination);
        }
    }
    const QPointer<XMLRouter> router = m_router;
    const unsigned steps = m_steps;
    expectReports(unreachable, call);
    require(!router || m_steps != steps || !next(), "everything is delivered");
}

void World::deliver()
{
    if (!m_isDying) {
        deliverBy([this] { m_router->send(); });
    }
}

void World::runEvents()
{
    if (m_nesting >= NESTING || m_isDying) {
        return;
    }
    ++m_nesting;
    if (m_bytes.below(3) == 0) {
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    } else {
        deliverBy([] { QCoreApplication::processEvents(); });
    }
    --m_nesting;
}

void World::askForType()
{
    if (m_isDying) {
        return;
    }
    const int type = TYPES[m_bytes.below(std::size(TYPES))];
    const std::list<int> ids = idsOfType(type);
    const bool isAsking = m_broker && m_supplying.count(type) == 0;
    m_supplied = 0;
    const int found = m_router->supplyAgentOfType(type);
    if (!ids.empty()) {
        require(found == ids.front(), "the lowest id of a type is found");
    } else {
        require(found == (isAsking ? m_supplied : 0), "else what the broker supplies");
    }
}

int World::supply(int type)
{
    require(idsOfType(type).empty(), "a broker is asked for what is not there");
    require(m_supplying.insert(type).second, "a broker is not asked while it is supplying");
    const unsigned answer = m_bytes.below(3);
    callBack();
    int id = 0;
    if (answer == 1 && m_router && !m_isDying) {
        id = m_router->findAgentOfType(type);
    } else if (answer == 2) {
        id = int(m_bytes.word());
    }
    m_supplying.erase(type);
    m_supplied = id;
    return id;
}

void World::changeBroker()
{
    if (m_isDying) {
        return;
    }
    XMLAgentBroker *chosen = nullptr;
    switch (m_bytes.below(3)) {
    case 0:
        chosen = m_broker;  // which deletes it
        m_broker = nullptr;
        break;
    case 1:
        m_broker = nullptr;
        break;
    default:
        m_broker = new Broker(*this);
        chosen = m_broker;
        break;
    }
    m_router->setAgentBroker(chosen);
}

void World::brokerDied()
{
    --brokers;
    if (!m_isDying) {
        callBack();
    }
}

void World::notify()
{
    const int id = IDS[m_bytes.below(std::size(IDS))];
    expectReports({ id }, [this, id] { m_router->notifyAgentRemovals(id); });
}

void World::passNull()
{
    m_router->add(nullptr);
    m_router->remove(nullptr);
    m_router->send(nullptr);
}

void World::dropRouter()
{
    if (!m_router || m_isDying) {
        return;
    }
    m_isDying = true;
    expectReports({ BRIDGE }, [this] { delete m_router; });
    m_isDying = false;
    m_broker = nullptr;
    m_supplying.clear();
    for (Packet *packet : std::exchange(m_queue, {})) {  // left to the application
        packet->isQueued = false;
        delete packet;
    }
    m_agents.clear();
    for (std::unique_ptr<Agent> &slot : m_slots) {
        slot.reset();
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    makeApplication();
    World(data, size).run();
    return 0;
}

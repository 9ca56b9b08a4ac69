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
// list of letters and a map of agents.

namespace {

constexpr unsigned AGENTS = 4;
constexpr int BRIDGE = -1;
constexpr int IDS[] = { 1, 2, 3, 4, 5, BRIDGE, 0, 77 };
constexpr int TYPES[] = { 1, 2, 0 };
constexpr int REQUESTS[] = { 0, 1000, 1001, 1002 };  // without a server there is no reply to these

class World;

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
    explicit Broker(World &owner) : world(owner) {}
    int supplyAgent(int agentType) override;
    World &world;
};

// A packet, and what it says.
struct Letter
{
    bool operator==(const Letter &other) const
    {
        return source == other.source && destination == other.destination && text == other.text;
    }
    XMLPacket *packet;
    int source;
    int destination;
    QString text;
};

// The router and its model. What a call calls back may make any other call, and delete the router.
class World : public Program
{
public:
    using Program::Program;

    void received(const Agent *agent, XMLPacket *packet)
    {
        const auto letter = next();
        require(letter != m_queue.end() && letter->packet == packet, "order is kept");
        const auto entry = m_agents.find(letter->destination);
        require(entry != m_agents.end() && entry->second == agent, "a packet finds its agent");
        const Letter mine = *letter;
        m_queue.erase(m_queue.begin(), letter + 1);
        switch (bytes.below(3)) {
        case 0:
            delete packet;
            return callBack();
        case 1:
            callBack();
            return packet->deleteLater();
        default:
            callBack();
            return send(mine);  // on
        }
    }

    void removed(const Agent *agent, int id)
    {
        m_reports.emplace_back(agent, id);
        callBack();
    }

    int supply(int type)
    {
        require(m_supplying.insert(type).second, "a broker is not asked while it supplies");
        callBack();
        m_supplying.erase(type);
        m_supplied = int(bytes.below(3));
        return m_supplied;
    }

    void finish()
    {
        if (m_router) {
            deliver();
        }
        dropRouter();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        require(m_packets == 0, "no packet is left");
    }

private:
    void step() override
    {
        using Step = void (World::*)();
        static constexpr Step STEPS[] = { &World::add, &World::add, &World::remove, &World::post,
            &World::post, &World::deliver, &World::runEvents, &World::ask, &World::changeBroker,
            &World::dropRouter };
        if (!m_router) {
            m_router = new XMLRouter(nullptr, nullptr, "router");
            m_lastID = 0;
        }
        if (!m_isDying) {
            (this->*STEPS[bytes.below(std::size(STEPS))])();
            check();
        }
    }

    // Whether the router knows whom the model knows.
    void check()
    {
        for (unsigned i = 0; m_router && !m_isDying && i < std::size(IDS); ++i) {
            require(m_router->contains(IDS[i]) == contains(IDS[i]), "who was added is there");
        }
        for (unsigned i = 0; m_router && !m_isDying && i < std::size(TYPES); ++i) {
            require(m_router->findAgentsOfType(TYPES[i]) == idsOfType(TYPES[i]), "so is its type");
        }
    }

    bool contains(int id) const { return id == BRIDGE || m_agents.count(id) > 0; }

    // An agent that was added twice is found twice, under its second id.
    std::list<int> idsOfType(int type) const
    {
        std::list<int> ids(type == 0 ? 1 : 0, BRIDGE);
        for (const auto &[id, agent] : m_agents) {
            if (agent->getAgentType() == type) {
                ids.push_back(agent->getAgentID());
            }
        }
        return ids;
    }

    void add()
    {
        std::unique_ptr<Agent> &slot = m_slots[bytes.below(AGENTS)];
        if (!slot) {
            const int type = TYPES[bytes.below(std::size(TYPES))];
            slot = std::make_unique<Agent>(*this, type, bytes.flag());
        }
        m_router->add(slot.get());
        m_agents[++m_lastID] = slot.get();
        require(slot->getAgentID() == m_lastID, "ids are handed out in order");
    }

    void remove()
    {
        const unsigned index = bytes.below(AGENTS);
        Agent *const agent = m_slots[index].get();
        if (!agent) {
            return;
        }
        const int id = agent->getAgentID();
        m_agents.erase(id);
        std::vector<std::pair<const Agent *, int>> expected;
        for (const auto &[key, other] : m_agents) {
            if (other->wantAgentRemovalNotifications() && other != agent) {
                expected.emplace_back(other, id);
            }
        }
        m_reports.clear();
        const bool isCertain = runsAlone([this, agent] { m_router->remove(agent); });
        require(!isCertain || m_reports == expected, "who wants to hears of the removal");
        const auto has = [agent](const auto &each) { return each.second == agent; };
        if (m_slots[index].get() == agent && std::none_of(m_agents.begin(), m_agents.end(), has)) {
            m_slots[index].reset();
        }
    }

    // Requests are all different: who knows whether the bridge has the last one already?
    void post()
    {
        Letter letter { new XMLPacket, IDS[bytes.below(4)], IDS[bytes.below(std::size(IDS))], {} };
        const bool isRequest = letter.destination == BRIDGE;
        letter.text = QString::number(isRequest ? ++m_requests : bytes.below(2));
        ++m_packets;
        QObject::connect(letter.packet, &QObject::destroyed, letter.packet,
            [this, packet = letter.packet] { destroyed(packet); });
        letter.packet->setSourceAgentID(letter.source);
        letter.packet->setDestinationAgentID(letter.destination);
        XMLAction request(letter.text, REQUESTS[bytes.below(4)], letter.source);
        XMLMessage message(letter.text);
        isRequest ? letter.packet->appendV(request) : letter.packet->appendV(message);
        send(letter);
    }

    void send(const Letter &letter)
    {
        if (!m_router || m_isDying) {
            return letter.packet->deleteLater();
        }
        const bool isDuplicate = !m_queue.empty() && m_queue.back() == letter;
        if (!isDuplicate && contains(letter.source)) {
            m_queue.push_back(letter);
        }
        m_router->send(letter.packet);
        m_router->send(letter.packet);  // is taken over already
    }

    // The bridge deletes what it gets later on, so that stays in the list.
    std::deque<Letter>::iterator next()
    {
        return std::find_if(m_queue.begin(), m_queue.end(),
            [](const Letter &letter) { return letter.destination != BRIDGE; });
    }

    void destroyed(const XMLPacket *packet)
    {
        --m_packets;
        const auto queued = std::find_if(m_queue.begin(), m_queue.end(),
            [packet](const Letter &letter) { return letter.packet == packet; });
        if (queued == m_queue.end()) {
            return;
        }
        if (queued->destination != BRIDGE) {
            require(queued == next(), "what cannot be delivered goes in order, too");
            require(!contains(queued->destination), "what can be delivered is not deleted");
        }
        m_queue.erase(queued);
    }

    void deliver()
    {
        const bool isCertain = runsAlone([this] { m_router->send(); });
        require(!isCertain || next() == m_queue.end(), "everything is delivered");
    }

    void runEvents()
    {
        if (bytes.below(3) == 0) {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        } else {
            const bool isCertain = runsAlone([] { QCoreApplication::processEvents(); });
            require(!isCertain || next() == m_queue.end(), "the event loop delivers everything");
        }
    }

    void ask()
    {
        const int type = TYPES[bytes.below(std::size(TYPES))];
        const std::list<int> ids = idsOfType(type);
        const bool isAsked = m_broker && m_supplying.count(type) == 0;
        const int found = m_router->supplyAgentOfType(type);
        const int supplied = isAsked ? m_supplied : 0;
        require(found == (ids.empty() ? supplied : ids.front()), "the lowest id, or the broker's");
    }

    void changeBroker()
    {
        m_broker = bytes.flag() ? new Broker(*this) : nullptr;
        m_router->setAgentBroker(m_broker);
        if (m_broker && bytes.flag()) {
            m_router->setAgentBroker(std::exchange(m_broker, nullptr));  // which deletes it
        }
    }

    // What is queued is left to the application.
    void dropRouter()
    {
        if (!m_router || m_isDying) {
            return;
        }
        m_isDying = true;
        delete m_router;
        m_isDying = false;
        m_broker = nullptr;
        m_supplying.clear();
        for (const Letter &letter : std::exchange(m_queue, {})) {
            delete letter.packet;
        }
        m_agents.clear();
        for (std::unique_ptr<Agent> &slot : m_slots) {
            slot.reset();
        }
    }

    QPointer<XMLRouter> m_router;
    bool m_isDying = false;
    std::unique_ptr<Agent> m_slots[AGENTS];
    std::vector<std::pair<const Agent *, int>> m_reports;  // who heard of whose removal
    Broker *m_broker = nullptr;  // the router's
    std::set<int> m_supplying;  // types that the broker is being asked for
    int m_supplied = 0;  // the broker's last answer
    int m_packets = 0;  // all there are
    unsigned m_requests = 0;

    std::deque<Letter> m_queue;
    std::map<int, Agent *> m_agents;
    int m_lastID = 0;
};

void Agent::receive(XMLPacket *packet) { world.received(this, packet); }
void Agent::agentRemoved(int agentID) { world.removed(this, agentID); }
int Broker::supplyAgent(int agentType) { return world.supply(agentType); }

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    makeApplication();
    World world(data, size);
    world.run();
    world.finish();
    return 0;
}

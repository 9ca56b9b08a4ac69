#include "fuzz.h"

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

// Calls on a router, also from inside its agents and its broker, compared with a router that is a
// list of letters and a map of agents. What becomes of a packet in the bridge, and who hears of
// removals, is left to the tests.

namespace {

constexpr unsigned AGENTS = 4;
constexpr int IDS[] = { 1, 2, 3, 4, 5, 0, 77 };
constexpr int TYPES[] = { 1, 2, 0 };

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
        require(!m_queue.empty() && m_queue.front().packet == packet, "order is kept");
        const Letter mine = m_queue.front();
        const auto entry = m_agents.find(mine.destination);
        require(entry != m_agents.end() && entry->second == agent, "a packet finds its agent");
        m_queue.pop_front();
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

    void removed() { callBack(); }

    int supply(int type)
    {
        require(m_supplying.insert(type).second, "a broker is not asked while it supplies");
        callBack();
        m_supplying.erase(type);
        return int(bytes.below(3));
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
            (this->*bytes.oneOf(STEPS))();
            check();
        }
    }

    // Whether the router knows whom the model knows.
    void check()
    {
        for (const int id : IDS) {
            require(!m_router || m_isDying || m_router->contains(id) == contains(id),
                "who was added is there");
        }
    }

    bool contains(int id) const { return m_agents.count(id) > 0; }

    void add()
    {
        std::unique_ptr<Agent> &slot = m_slots[bytes.below(AGENTS)];
        if (!slot) {
            slot = std::make_unique<Agent>(*this, bytes.oneOf(TYPES), bytes.flag());
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
        m_agents.erase(agent->getAgentID());
        m_router->remove(agent);
        const auto has = [agent](const auto &each) { return each.second == agent; };
        if (m_slots[index].get() == agent && std::none_of(m_agents.begin(), m_agents.end(), has)) {
            m_slots[index].reset();
        }
    }

    void post()
    {
        const QString text = QString::number(bytes.below(2));
        Letter letter { new XMLPacket, IDS[bytes.below(4)], bytes.oneOf(IDS), text };
        ++m_packets;
        QObject::connect(letter.packet, &QObject::destroyed, letter.packet,
            [this, packet = letter.packet] { destroyed(packet); });
        letter.packet->setSourceAgentID(letter.source);
        letter.packet->setDestinationAgentID(letter.destination);
        XMLMessage message(letter.text);
        letter.packet->appendV(message);
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

    void destroyed(const XMLPacket *packet)
    {
        --m_packets;
        const auto queued = std::find_if(m_queue.begin(), m_queue.end(),
            [packet](const Letter &letter) { return letter.packet == packet; });
        if (queued == m_queue.end()) {
            return;
        }
        require(queued == m_queue.begin(), "what cannot be delivered goes in order, too");
        require(!contains(queued->destination), "what can be delivered is not deleted");
        m_queue.erase(queued);
    }

    void deliver()
    {
        const bool isCertain = runsAlone([this] { m_router->send(); });
        require(!isCertain || m_queue.empty(), "everything is delivered");
    }

    void runEvents()
    {
        if (bytes.below(3) == 0) {
            QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        } else {
            const bool isCertain = runsAlone([] { QCoreApplication::processEvents(); });
            require(!isCertain || m_queue.empty(), "the event loop delivers everything");
        }
    }

    void ask() { m_router->supplyAgentOfType(bytes.oneOf(TYPES)); }

    void changeBroker()
    {
        m_router->setAgentBroker(
            bytes.flag() ? new Broker(*this) : nullptr);  // deletes the old one
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
    std::set<int> m_supplying;  // types that the broker is being asked for
    int m_packets = 0;  // all there are

    std::deque<Letter> m_queue;
    std::map<int, Agent *> m_agents;
    int m_lastID = 0;
};

void Agent::receive(XMLPacket *packet) { world.received(this, packet); }
void Agent::agentRemoved(int) { world.removed(); }
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

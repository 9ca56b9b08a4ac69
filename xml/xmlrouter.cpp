#include "xmlrouter.h"

#include "probes_p.h"
#include "xmlagent.h"
#include "xmlagentbroker.h"
#include "xmlcommserver.h"
#include "xmlpacket.h"

#include <QAbstractEventDispatcher>
#include <QScopeGuard>
#include <QTimer>

#include <limits>
#include <memory>
#include <utility>

using namespace TQXmlInternal;

namespace {

constexpr int COMM_SERVER_ID = -1;
constexpr int UNKNOWN_AGENT_TYPE = 5;
constexpr int NO_AGENT = 0;

// How many calls of the slot send() may run inside one another; limits recursion.
constexpr int MAX_DELIVERIES = 64;

// How many calls of the broker may run inside one another: while it supplies a type, it may ask for
// another one. Limits recursion.
constexpr int MAX_SUPPLYING = 64;

}  // namespace

XMLRouter::XMLRouter(TQCommServer *server, QObject *parent, const char *name)
    : QObject(parent), m_sendTimer(new QTimer(this))
{
    auto bridge = std::make_unique<XMLCommServer>(server);
    setObjectName(QString::fromLatin1(name));
    bridge->setAgentID(COMM_SERVER_ID);
    bridge->setRouter(this);
    m_agents[COMM_SERVER_ID] = bridge.get();
    m_sendTimer->setSingleShot(true);
    connect(m_sendTimer, &QTimer::timeout, this, qOverload<>(&XMLRouter::send));
    m_commServerAgent = bridge.release();
}

XMLRouter::~XMLRouter()
{
    for (XMLPacket *packet : std::as_const(m_packetQueue)) {
        packet->m_isTaken = false;
    }
    remove(m_commServerAgent);
    delete std::exchange(m_commServerAgent, nullptr);
    delete std::exchange(m_agentBroker, nullptr);
}

void XMLRouter::add(XMLAgent *agent)
{
    const int id = agent ? getNextAgentID() : NO_AGENT;
    if (id != NO_AGENT) {
        m_agents[id] = agent;
        agent->setAgentID(id);
        agent->setRouter(this);
        tellAdded(id, agent->getAgentType());
    }
}

void XMLRouter::remove(XMLAgent *agent)
{
    if (!agent) {
        return;
    }
    const QPointer<XMLRouter> self(this);
    const int id = agent->getAgentID();
    if (m_agents.erase(id) > 0) {
        tellRemoved(id, agent->getAgentType());
    }
    if (self) {
        notifyAgentRemovals(id);
    }
}

bool XMLRouter::contains(int agentID) const { return m_agents.count(agentID) > 0; }

int XMLRouter::getAgentType(int agentID) const
{
    // An agent added twice is registered under two ids but reports only the newer one.
    for (const auto &[id, agent] : m_agents) {
        if (agent->getAgentID() == agentID) {
            return agent->getAgentType();
        }
    }
    return UNKNOWN_AGENT_TYPE;
}

int XMLRouter::getXMLCommServerID() const { return COMM_SERVER_ID; }

int XMLRouter::getNextAgentID()
{
    return m_nextAgentID == std::numeric_limits<int>::max() ? NO_AGENT : ++m_nextAgentID;
}

std::list<int> XMLRouter::findAgentsOfType(int agentType) const
{
    std::list<int> ids;
    for (const auto &[id, agent] : m_agents) {
        if (agent->getAgentType() == agentType) {
            ids.push_back(agent->getAgentID());
        }
    }
    return ids;
}

int XMLRouter::findAgentOfType(int agentType) const
{
    const std::list<int> ids = findAgentsOfType(agentType);
    return ids.empty() ? NO_AGENT : ids.front();
}

int XMLRouter::supplyAgentOfType(int agentType)
{
    const std::list<int> ids = findAgentsOfType(agentType);
    if (!ids.empty()) {
        return ids.front();
    }
    if (!m_agentBroker || m_supplying.contains(agentType) || m_supplying.size() >= MAX_SUPPLYING) {
        return NO_AGENT;
    }
    const QPointer<XMLRouter> self(this);
    m_supplying.append(agentType);
    const auto guard = qScopeGuard([&self, agentType] {
        if (self) {
            self->m_supplying.removeOne(agentType);
        }
    });
    const int id = m_agentBroker->supplyAgent(agentType);  // may replace the broker, or delete us
    if (self && id != NO_AGENT) {
        tellSupplied(id, agentType);
    }
    return id;
}

void XMLRouter::setAgentBroker(XMLAgentBroker *broker)
{
    XMLAgentBroker *const previous = m_agentBroker;
    m_agentBroker = broker == previous ? nullptr : broker;
    if (m_agentBroker) {
        m_agentBroker->setRouter(this);
    }
    delete previous;  // may ask or replace the new one, or delete us
}

void XMLRouter::notifyAgentRemovals(int agentID)
{
    // Agents may change the registry, so each step searches for its place again. Agents that are
    // added during the walk are not notified.
    const QPointer<XMLRouter> self(this);
    const int last = m_agents.empty() ? NO_AGENT : m_agents.rbegin()->first;
    auto entry = m_agents.begin();
    while (entry != m_agents.end() && entry->first <= last) {
        const int id = entry->first;
        XMLAgent *const agent = entry->second;
        if (agent->wantAgentRemovalNotifications() && agent->getAgentID() != agentID) {
            agent->agentRemoved(agentID);
            if (!self) {
                return;
            }
        }
        entry = m_agents.upper_bound(id);
    }
}

void XMLRouter::send(XMLPacket *packet)
{
    if (!packet) {
        return;
    }
    if (packet->m_isTaken) {
        return tellDropped(*packet, XMLRouterObserver::DROP_SENT_ALREADY);
    }
    packet->m_isTaken = true;
    const bool isDuplicate = !m_packetQueue.isEmpty() && *m_packetQueue.last() == *packet;
    const bool hasSource = contains(packet->getSourceAgentID());
    if (isDuplicate || !hasSource) {
        packet->deleteLater();
        return tellDropped(*packet,
            hasSource ? XMLRouterObserver::DROP_EQUALS_LAST
                      : XMLRouterObserver::DROP_SOURCE_UNKNOWN);
    }
    schedule();
    m_packetQueue.append(packet);
    m_hasSent = true;
    if (isWatched(m_observer, tqxml_packet_sent_semaphore)) {
        tellSent(*packet);
    }
}

void XMLRouter::setObserver(XMLRouterObserver *observer) { m_observer = observer; }

XMLRouterObserver *XMLRouter::observer() const { return m_observer; }

void XMLRouter::schedule()
{
    if (m_dispatcher && m_sendTimer->isActive()) {
        return;
    }
    QAbstractEventDispatcher *const dispatcher = QAbstractEventDispatcher::instance(thread());
    if (!dispatcher) {
        // Without an event loop no timer can be started, but a posted call is made when the loop
        // starts. It is lost if the application object is deleted without having run a loop.
        QMetaObject::invokeMethod(
            this, [this] { send(); }, Qt::QueuedConnection);
    } else {
        m_dispatcher = dispatcher;  // a timer of another one, which has ended, starts again
        m_sendTimer->start(0);
    }
}

void XMLRouter::deliver(XMLPacket *packet)
{
    packet->m_isTaken = false;
    const int destination = packet->getDestinationAgentID();
    const bool isTold = isWatched(m_observer, tqxml_packet_delivered_semaphore);
    if (isTold && !tellDelivered(*packet, destination)) {
        return;  // the router is gone, and its packets belong to the application
    }
    const auto entry = m_agents.find(destination);
    if (entry != m_agents.end()) {
        return entry->second->receive(packet);
    }
    const QPointer<XMLRouter> self(this);
    tellLost(*packet);
    delete packet;
    if (self) {
        notifyAgentRemovals(destination);
    }
}

void XMLRouter::send()
{
    if (m_deliveries >= MAX_DELIVERIES) {
        return;  // the outer calls deliver the rest
    }
    m_hasSent = m_hasSent && m_sendTimer->isActive();  // active if this was not called by the timer
    const QPointer<XMLRouter> self(this);
    const auto guard = qScopeGuard([&self] {
        if (self) {
            --self->m_deliveries;
        }
    });
    ++m_deliveries;
    while (self && !m_packetQueue.isEmpty()) {
        if (m_packetQueue.size() > 1) {
            schedule();  // in case the receiver runs an event loop
        }
        deliver(m_packetQueue.takeFirst());  // may delete us
    }
    if (self && !m_hasSent) {
        m_sendTimer->stop();  // started above, but not needed
    }
}

// What the observer and the probes are told. An observer may run an event loop or change the
// registry, and so cause an agent to delete the router.

void XMLRouter::tellSent(const XMLPacket &packet) const
{
    if (isHeard(tqxml_packet_sent_semaphore)) {
        Probe::packetSent(packet);
    }
    if (m_observer) {
        m_observer->packetSent(packet);
    }
}

void XMLRouter::tellDropped(const XMLPacket &packet, XMLRouterObserver::DROP reason) const
{
    if (isHeard(tqxml_packet_dropped_semaphore)) {
        Probe::packetDropped(packet, reason);
    }
    if (m_observer) {
        m_observer->packetDropped(packet, reason);
    }
}

// Returns false when the router was deleted. The agent may be gone afterwards.
bool XMLRouter::tellDelivered(const XMLPacket &packet, int agentID) const
{
    const auto entry = m_agents.find(agentID);
    if (entry == m_agents.end()) {
        return true;
    }
    const QPointer<const XMLRouter> self(this);
    if (isHeard(tqxml_packet_delivered_semaphore)) {
        Probe::packetDelivered(packet);
    }
    if (m_observer) {
        m_observer->packetDelivered(packet, *entry->second);
    }
    return !self.isNull();
}

void XMLRouter::tellLost(const XMLPacket &packet) const
{
    if (isHeard(tqxml_packet_lost_semaphore)) {
        Probe::packetLost(packet);
    }
    if (m_observer) {
        m_observer->packetLost(packet);
    }
}

void XMLRouter::tellAdded(int agentID, int agentType) const
{
    if (isHeard(tqxml_agent_added_semaphore)) {
        Probe::agentAdded(agentID, agentType);
    }
    if (m_observer) {
        m_observer->agentAdded(agentID, agentType);
    }
}

void XMLRouter::tellRemoved(int agentID, int agentType) const
{
    if (isHeard(tqxml_agent_removed_semaphore)) {
        Probe::agentRemoved(agentID, agentType);
    }
    if (m_observer) {
        m_observer->agentRemoved(agentID, agentType);
    }
}

void XMLRouter::tellSupplied(int agentID, int agentType) const
{
    if (isHeard(tqxml_agent_supplied_semaphore)) {
        Probe::agentSupplied(agentID, agentType);
    }
    if (m_observer) {
        m_observer->agentSupplied(agentID, agentType);
    }
}

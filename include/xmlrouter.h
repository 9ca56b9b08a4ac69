#ifndef XMLROUTER_H
#define XMLROUTER_H

#include "tqxml_export.h"
#include "xmlrouterobserver.h"

#include <QList>
#include <QObject>
#include <QPointer>

#include <list>
#include <map>

class QAbstractEventDispatcher;
class QTimer;
class TQCommServer;
class XMLAgent;
class XMLAgentBroker;
class XMLCommServer;
class XMLPacket;

/// Gives agents their ids, queues packets, and delivers them from the event loop.
///
/// Agents get the ids 1, 2, 3 and so on, in the order in which they are added; no id is used twice.
/// The server bridge, which the router makes and owns, has the id -1. 0 means no agent. Everything
/// happens in the thread of the router.
///
/// Packets are delivered in the order of sending, one at a time. If an agent runs an event loop
/// while it receives a packet, that loop goes on with the delivery. Up to 64 such loops may run
/// inside one another; a deeper loop delivers nothing until one of them has returned.
///
/// When the router is deleted, the packets that are still queued belong to the application.
class TQXML_EXPORT XMLRouter : public QObject
{
    Q_OBJECT

public:
    /// The connection is not owned and must outlive the router; it may be null. The name (Latin-1)
    /// becomes the object name; it may be null.
    XMLRouter(TQCommServer *server, QObject *parent, const char *name);
    /// Removes the bridge, notifies agents of that, and deletes the bridge and the broker.
    ~XMLRouter() override;

    /// Registers an agent under a new id; null is ignored. An agent that is added twice is
    /// registered under two ids. As remove() takes off only the newer one, that agent must outlive
    /// the router.
    void add(XMLAgent *agent);
    /// Removes the agent that is registered under the id of \a agent, and notifies the others; null
    /// is ignored. Packets that are queued for it become undeliverable.
    ///
    /// If the agent was never added, nothing is removed, but the others are notified of the removal
    /// of 0, its id. Do not pass an agent of another router: here its id is that of another agent.
    void remove(XMLAgent *agent);

    /// True when there is an agent under that id.
    bool contains(int agentID) const;
    /// Type of the agent with that id; 5 when there is none.
    int getAgentType(int agentID) const;
    /// The id of the server bridge: always -1.
    int getXMLCommServerID() const;
    /// Takes the next agent id; 0 when none is left.
    int getNextAgentID();

    /// @{
    /// Ids of the agents of that type, ascending; the lowest one, or 0.
    std::list<int> findAgentsOfType(int agentType) const;
    int findAgentOfType(int agentType) const;
    /// @}
    /// The lowest id of that type. If there is none, the id that the broker supplies, or 0. While
    /// the broker supplies a type, it gets 0 when it asks for the same type. When it asks for
    /// another one, it is called again, up to 64 calls inside one another.
    int supplyAgentOfType(int agentType);
    /// Installs a broker and deletes the one before. The router owns the broker. If \a broker is
    /// the current one, it is deleted, and there is none afterwards.
    void setAgentBroker(XMLAgentBroker *broker);

    /// Calls agentRemoved() of every agent that wants it, except the one with that id.
    void notifyAgentRemovals(int agentID);

    /// Takes over the packet and queues it. A packet is dropped, with deleteLater(), if its source
    /// is not registered or if it equals the packet at the end of the queue. Null is ignored, and
    /// so is a packet that was sent already and not received yet.
    void send(XMLPacket *packet);

    /// @{
    /// Who is told what passes; null for nobody. The observer is not owned: set another one, or
    /// null, before you delete it.
    void setObserver(XMLRouterObserver *observer);
    XMLRouterObserver *observer() const;
    /// @}

public Q_SLOTS:
    /// Delivers all queued packets now. A packet to an unknown agent is deleted, and agents are
    /// notified of the removal of that id.
    void send();

private:
    void schedule();
    inline void deliver(XMLPacket *packet);  // used and defined in one source
    void tellSent(const XMLPacket &packet) const;
    void tellDropped(const XMLPacket &packet, XMLRouterObserver::DROP reason) const;
    bool tellDelivered(const XMLPacket &packet, int agentID) const;
    void tellLost(const XMLPacket &packet) const;
    void tellAdded(int agentID, int agentType) const;
    void tellRemoved(int agentID, int agentType) const;
    void tellSupplied(int agentID, int agentType) const;

    int m_nextAgentID = 0;  // the last one handed out
    std::map<int, XMLAgent *> m_agents;  // not owned
    QList<XMLPacket *> m_packetQueue;  // owned
    QTimer *m_sendTimer = nullptr;  // child
    XMLCommServer *m_commServerAgent = nullptr;  // owned
    XMLAgentBroker *m_agentBroker = nullptr;  // owned; null until set
    QPointer<QAbstractEventDispatcher> m_dispatcher;  // the one that knows of the running timer
    int m_deliveries = 0;  // calls of send() that are delivering, one inside the other
    bool m_hasSent = false;  // a packet was queued since the timer last ran out
    QList<int> m_supplying;  // types the broker is being asked for
    XMLRouterObserver *m_observer = nullptr;  // not owned; null for none
};

#endif

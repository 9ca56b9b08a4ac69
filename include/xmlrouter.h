#ifndef XMLROUTER_H
#define XMLROUTER_H

#include "tqxml_export.h"

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

/// The hub: numbers agents, queues packets and delivers them from the event loop.
///
/// Agents get the ids 1, 2, 3, ... in the order of adding, never reused; the server bridge, which
/// the router makes and owns, has -1, and 0 stands for none. Everything happens in the thread of
/// the router. Delivery is in the order of sending, one packet at a time; an event loop that runs
/// inside a delivery goes on delivering, with up to 64 of them one inside the other: packets for
/// deeper ones wait until one of these returns.
///
/// Packets that are still queued when the router dies are left to the application.
class TQXML_EXPORT XMLRouter : public QObject
{
    Q_OBJECT

public:
    /// The connection is not owned, must outlive the router, and may be null. The name, as
    /// Latin-1, becomes the object name; it may be null.
    XMLRouter(TQCommServer *server, QObject *parent, const char *name);
    /// Removes the bridge, which agents that want removals hear, and deletes it and the broker.
    ~XMLRouter() override;

    /// Registers an agent under a new id; null is ignored. An agent added again gets a further id
    /// and stays reachable under the earlier one, which remove() leaves: it must outlive the
    /// router.
    void add(XMLAgent *agent);
    /// Takes off whoever is registered under the agent's current id, and tells the others; null is
    /// ignored. Packets queued for it count as undeliverable.
    ///
    /// For an agent that was never added nobody is taken off, but the others hear of the removal
    /// of 0, its id. Do not pass an agent of another router: its id is somebody else's here.
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
    /// The lowest id of that type, or what the broker supplies; 0 without either, and 0 to a
    /// broker that asks for the type it is just supplying.
    int supplyAgentOfType(int agentType);
    /// Installs a broker, which the router owns from then on, and deletes the one before. The
    /// current broker passed again is deleted and none is left.
    void setAgentBroker(XMLAgentBroker *broker);

    /// Calls agentRemoved() of every agent that wants removals, but not of one with that id.
    void notifyAgentRemovals(int agentID);

    /// Takes over the packet and queues it. It is dropped, with deleteLater(), when its source is
    /// not registered or when it equals the packet that was queued last. Null is ignored, and so
    /// is a packet that the router has taken over already.
    void send(XMLPacket *packet);

public Q_SLOTS:
    /// Delivers everything queued, now; packets for unknown agents are deleted, and their
    /// destination reported as removed.
    void send();

private:
    void schedule();

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
};

#endif

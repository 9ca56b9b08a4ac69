#ifndef XMLROUTEROBSERVER_H
#define XMLROUTEROBSERVER_H

#include "tqxml_export.h"

class XMLAgent;
class XMLPacket;

/// Is told what passes through a router: for a monitor, a log, a counter. XMLRouter::setObserver()
/// installs it.
///
/// An observer only looks. Packets and agents are valid during the call only. It may read a packet
/// with the functions that are const, of which getNodesOfType() builds the packet's document and
/// write() does not. It may add and remove agents, send packets, of which it is then told, too, and
/// install another observer. It must not delete the router.
///
/// All functions do nothing unless a subclass overrides them.
class TQXML_EXPORT XMLRouterObserver
{
public:
    /// Why XMLRouter::send() did not queue a packet.
    enum DROP : int {
        DROP_SOURCE_UNKNOWN = 0,  ///< no agent is registered under the id of its source
        DROP_EQUALS_LAST = 1,  ///< it equals the packet at the end of the queue
        DROP_SENT_ALREADY = 2  ///< it was sent before and was not received yet
    };

    virtual ~XMLRouterObserver();
    XMLRouterObserver(const XMLRouterObserver &) = delete;
    XMLRouterObserver &operator=(const XMLRouterObserver &) = delete;

    /// The packet is in the queue now.
    virtual void packetSent(const XMLPacket &packet);
    /// The packet was not queued.
    virtual void packetDropped(const XMLPacket &packet, DROP reason);
    /// The packet left the queue, and \a agent receives it next.
    virtual void packetDelivered(const XMLPacket &packet, const XMLAgent &agent);
    /// The packet left the queue and is deleted next: no agent has the id of its destination.
    virtual void packetLost(const XMLPacket &packet);

    /// @{
    /// An agent was registered, or removed from under its id. The others are notified of a removal
    /// next.
    virtual void agentAdded(int agentID, int agentType);
    virtual void agentRemoved(int agentID, int agentType);
    /// @}
    /// The broker supplied that agent. If it made a new one, agentAdded() was called before.
    virtual void agentSupplied(int agentID, int agentType);

protected:
    XMLRouterObserver();
};

#endif

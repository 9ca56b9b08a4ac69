#ifndef XMLAGENT_H
#define XMLAGENT_H

#include "tqxml_export.h"

class XMLPacket;
class XMLRouter;

/// An endpoint of the routing: whatever can receive packets.
///
/// Register it with XMLRouter::add(), and take it off with XMLRouter::remove() before it is
/// deleted; the router does not own it.
class TQXML_EXPORT XMLAgent
{
public:
    /// The type is the application's classification; 0 is the server bridge's.
    explicit XMLAgent(int agentType);
    virtual ~XMLAgent();
    XMLAgent(const XMLAgent &) = delete;
    XMLAgent &operator=(const XMLAgent &) = delete;

    /// Takes a packet addressed to this agent. The packet is the agent's, which must delete it, at
    /// once or with deleteLater(). Inside, the agent may send, add and remove agents, run an event
    /// loop or delete the router.
    virtual void receive(XMLPacket *packet) = 0;
    /// Called when another agent is gone or was found unreachable, if this agent wants to know.
    /// Inside, it may do all that it may in receive(), and also remove and delete itself.
    ///
    /// The removal of -1, the server bridge, means that the router is ending: do not delete the
    /// router then, nor send through it. What is queued by then is left to the application.
    virtual void agentRemoved(int agentID);

    /// The application's number for agents of this kind.
    int getAgentType() const;
    /// The id given on registration, also after removal; 0 before.
    int getAgentID() const;
    /// Whether the router calls agentRemoved(); false unless a subclass set it.
    bool wantAgentRemovalNotifications() const;

    /// @{
    /// Called by the router on registration; they only store.
    void setAgentID(int agentID);
    void setRouter(XMLRouter *router);
    /// @}

    /// A new empty packet from this agent to that one. The caller's, until it is sent.
    [[nodiscard]] XMLPacket *getXMLPacket(int destinationAgentID) const;

protected:
    /// Not owned; null until registered. It stays when the agent is removed, and dangles when the
    /// router is gone, which the agent hears as the removal of -1 if it wants removals.
    XMLRouter *router = nullptr;
    bool wantRemovalNotifications = false;  ///< set it to hear agentRemoved()

private:
    const int m_agentType;
    int m_agentID = 0;
};

#endif

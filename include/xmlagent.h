#ifndef XMLAGENT_H
#define XMLAGENT_H

#include "tqxml_export.h"

class XMLPacket;
class XMLRouter;

/// Anything that can receive packets.
///
/// Register it with XMLRouter::add(). The router does not own it: call XMLRouter::remove() before
/// you delete it.
class TQXML_EXPORT XMLAgent
{
public:
    /// The application chooses the types of its agents; 0 is the type of the server bridge.
    explicit XMLAgent(int agentType);
    virtual ~XMLAgent();
    XMLAgent(const XMLAgent &) = delete;
    XMLAgent &operator=(const XMLAgent &) = delete;

    /// Called with each packet that is addressed to this agent. The agent owns the packet and must
    /// delete it, at once or with deleteLater(). It may send packets, add and remove agents, run an
    /// event loop and delete the router.
    virtual void receive(XMLPacket *packet) = 0;
    /// Called when another agent was removed or a packet could not be delivered to it, if this
    /// agent wants to know. The agent may do everything that it may do in receive(), and also
    /// remove and delete itself.
    ///
    /// The removal of -1, the server bridge, means that the router is being deleted: do not delete
    /// it again, and do not send through it. Packets that are still queued then belong to the
    /// application.
    virtual void agentRemoved(int agentID);

    /// The type that the constructor was given.
    int getAgentType() const;
    /// The id that XMLRouter::add() gave; it stays after removal. 0 before registration.
    int getAgentID() const;
    /// Whether the router calls agentRemoved(). False unless a subclass changed it.
    bool wantAgentRemovalNotifications() const;

    /// @{
    /// The router calls them on registration. They only store the value.
    void setAgentID(int agentID);
    void setRouter(XMLRouter *router);
    /// @}

    /// A new empty packet from this agent to that one. The caller owns it until it is sent.
    [[nodiscard]] XMLPacket *getXMLPacket(int destinationAgentID) const;

protected:
    /// Not owned; null until the agent is registered. It is not cleared when the agent is removed
    /// or the router is deleted. An agent that wants removals is told of that as the removal of -1.
    XMLRouter *router = nullptr;
    bool wantRemovalNotifications = false;  ///< set it if agentRemoved() is to be called

private:
    const int m_agentType;
    int m_agentID = 0;
};

#endif

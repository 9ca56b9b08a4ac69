#include "xmlagent.h"

#include "xmlpacket.h"

#include <memory>

XMLAgent::XMLAgent(int agentType) : m_agentType(agentType) {}

XMLAgent::~XMLAgent() = default;

void XMLAgent::agentRemoved(int) {}

int XMLAgent::getAgentType() const { return m_agentType; }
int XMLAgent::getAgentID() const { return m_agentID; }
bool XMLAgent::wantAgentRemovalNotifications() const { return wantRemovalNotifications; }
void XMLAgent::setAgentID(int agentID) { m_agentID = agentID; }
void XMLAgent::setRouter(XMLRouter *newRouter) { router = newRouter; }

XMLPacket *XMLAgent::getXMLPacket(int destinationAgentID) const
{
    auto packet = std::make_unique<XMLPacket>();
    packet->setSourceAgentID(m_agentID);
    packet->setDestinationAgentID(destinationAgentID);
    return packet.release();
}

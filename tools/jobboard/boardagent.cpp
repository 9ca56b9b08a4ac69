#include "boardagent.h"

#include "xmlpacket.h"
#include "xmlrouter.h"

#include <memory>

BoardAgent::BoardAgent(int type, const QString &name, XMLRouter &to, PacketLog &log)
    : XMLAgent(type), m_log(log)
{
    to.add(this);
    m_log.setAgentName(getAgentID(), name);
}

BoardAgent::~BoardAgent() { router->remove(this); }

void BoardAgent::receive(XMLPacket *packet)
{
    const std::unique_ptr<XMLPacket> received(packet);
    m_log.add(PacketLog::Received, *received);
    take(*received);
}

void BoardAgent::send(XMLPacket *packet)
{
    m_log.add(PacketLog::Sent, *packet);
    router->send(packet);
}

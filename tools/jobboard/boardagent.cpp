#include "boardagent.h"

#include "xmlpacket.h"
#include "xmlrouter.h"

#include <memory>

BoardAgent::BoardAgent(int type, XMLRouter &to) : XMLAgent(type) { to.add(this); }

BoardAgent::~BoardAgent() { router->remove(this); }

void BoardAgent::receive(XMLPacket *packet)
{
    const std::unique_ptr<XMLPacket> received(packet);
    take(*received);
}

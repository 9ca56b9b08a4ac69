#include "bridge.h"

#include "reading.h"
#include "xmlrouter.h"

Bridge::Bridge(TQCommServer &server, XMLRouter &to) : XMLCommServer(&server), m_server(server)
{
    to.add(this);
}

Bridge::~Bridge() { router->remove(this); }

void Bridge::receive(XMLPacket *packet)
{
    const Reading reading(m_server);
    XMLCommServer::receive(packet);  // queues the reply for a later delivery
    m_error = reading.error();
}

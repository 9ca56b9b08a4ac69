#include "itemagent.h"

#include "xmlaction.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"

#include "tqcommserver.h"

#include <memory>

ItemAgent::ItemAgent(TQCommServer &server, XMLRouter &to, PacketLog &log)
    : BoardAgent(TYPE, QStringLiteral("Items"), to, log), m_server(server)
{
}

void ItemAgent::take(const XMLPacket &packet)
{
    std::list<QDomNode> requests;
    packet.getNodesOfType(XMLObject::XMLOBJECT_ACTION, requests);
    if (requests.empty()) {
        return;
    }
    XMLAction request;
    request.setNode(requests.front().toElement());
    const TQKEY_ELEMENT key = request.getTQKEY();
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    const std::unique_ptr<ArchiveNode> node(
        m_server.getArchiveNode(command, message, static_cast<PACKETDATATYPES>(key.hkey), key));
    const std::unique_ptr<XMLPacketable> item(XMLPacketable::fromArchiveNode(m_server, node.get()));
    XMLPacket *reply = getXMLPacket(packet.getSourceAgentID());
    if (item) {
        reply->appendV(*item);
    }
    send(reply);
}

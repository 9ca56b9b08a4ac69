#include "itemagent.h"

#include "reading.h"
#include "xmlaction.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

#include <QCoreApplication>

ItemAgent::ItemAgent(TQCommServer &server, XMLRouter &to) : BoardAgent(TYPE, to), m_server(server)
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
    QString error;
    const std::unique_ptr<XMLPacketable> item = read(request.getTQKEY(), error);
    XMLPacket *reply = getXMLPacket(packet.getSourceAgentID());
    if (item) {
        reply->appendV(*item);
    } else {
        XMLMessage message(error);
        reply->appendV(message);
    }
    router->send(reply);
}

std::unique_ptr<XMLPacketable> ItemAgent::read(const TQKEY_ELEMENT &key, QString &error)
{
    const Reading reading(m_server);
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    const std::unique_ptr<ArchiveNode> node(
        m_server.getArchiveNode(command, message, static_cast<PACKETDATATYPES>(key.hkey), key));
    std::unique_ptr<XMLPacketable> item(XMLPacketable::fromArchiveNode(m_server, node.get()));
    error = reading.error();
    if (!error.isEmpty()) {
        return nullptr;  // the item may be incomplete
    }
    if (!item) {
        error = QCoreApplication::translate("ItemAgent", "it is not in the store any more");
    }
    return item;
}

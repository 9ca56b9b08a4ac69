#include "requestagent.h"

#include "bridge.h"
#include "itemagent.h"
#include "xmlaction.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include <algorithm>

RequestAgent::RequestAgent(const Bridge &bridge, XMLRouter &to)
    : BoardAgent(TYPE, to), m_bridge(bridge)
{
}

void RequestAgent::ask(const Request &request)
{
    m_waiting.push_back(request);
    if (!m_underWay) {
        sendNext();
    }
}

void RequestAgent::prefer(int type, const TQKEY_ELEMENT &owner)
{
    const bool isAny = !TQKEY_CC::isValid(owner);
    std::stable_partition(m_waiting.begin(), m_waiting.end(), [&](const Request &request) {
        return request.type == type && (isAny || request.owner == owner);
    });
}

void RequestAgent::stop() { m_waiting.clear(); }

int RequestAgent::pending() const { return int(m_waiting.size()) + (m_underWay ? 1 : 0); }

void RequestAgent::askItem(const TQKEY_ELEMENT &key, const QString &name, int agentID)
{
    XMLAction action(name, ItemAgent::REQUEST_ITEM, getAgentID());
    action.setTQKEY(key);
    XMLPacket *packet = getXMLPacket(agentID);
    packet->appendV(action);
    router->send(packet);
}

void RequestAgent::sendNext()
{
    m_underWay = m_waiting.front();
    m_waiting.pop_front();
    XMLAction action(m_underWay->name, m_underWay->type, getAgentID());
    action.setExcludePublications(false);
    if (TQKEY_CC::isValid(m_underWay->owner)) {
        action.setTQKEYList({ &m_underWay->owner });
    }
    XMLPacket *packet = getXMLPacket(m_bridge.getAgentID());
    packet->appendV(action);
    // Not every request gets a reply. But the bridge calls deleteLater() of each request that it
    // has served, so the request is destroyed after its reply was delivered.
    connect(packet, &QObject::destroyed, this, &RequestAgent::finish);
    router->send(packet);
}

void RequestAgent::finish()
{
    m_underWay.reset();
    Q_EMIT served(m_bridge.error());
    if (!m_underWay && !m_waiting.empty()) {
        sendNext();
    }
}

void RequestAgent::take(const XMLPacket &packet)
{
    if (packet.getSourceAgentID() != m_bridge.getAgentID()) {
        Q_EMIT itemReplied(packet);
    } else if (m_underWay && m_bridge.error().isEmpty()) {
        Q_EMIT replied(m_underWay->type, packet);
    }
}

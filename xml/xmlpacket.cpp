#include "xmlpacket.h"

#include "domtree_p.h"
#include "xmlaction.h"
#include "xmlimage.h"
#include "xmlmessage.h"
#include "xmlpacketable.h"
#include "xmlui.h"

#include <cstdio>

using namespace TQXmlInternal;

const QString XMLPacket::HEADER = QStringLiteral("header");
const QString XMLPacket::SOURCE = QStringLiteral("src");
const QString XMLPacket::DESTINATION = QStringLiteral("dst");
const QString XMLPacket::BODY = QStringLiteral("body");
const QString XMLPacket::AGENT_ID = QStringLiteral("agent_id");

XMLPacket::XMLPacket() : XMLObject(XMLOBJECT_PACKET) { init(nullptr); }

XMLPacket::~XMLPacket() = default;

void XMLPacket::init(const XMLPacket *other)
{
    if (other) {
        m_packetDocument = withinDepth(other->m_packetDocument).cloneNode(true).toDocument();
        m_root = m_packetDocument.documentElement();
        m_header = getElement(m_root, HEADER);
        m_source = getElement(m_header, SOURCE);
        m_destination = getElement(m_header, DESTINATION);
        m_body = getElement(m_root, BODY);
        return;
    }
    m_packetDocument = createDocument(TQ_NAMESPACE, rootNodeName());
    m_root = m_packetDocument.documentElement();
    m_header = createElement(m_root, HEADER);
    m_source = createElement(m_header, SOURCE);
    m_destination = createElement(m_header, DESTINATION);
    m_body = createElement(m_root, BODY);
}

XMLPacket &XMLPacket::operator=(const XMLPacket &other)
{
    init(&other);
    return *this;
}

bool XMLPacket::operator==(const XMLPacket &other) const
{
    // Most packets differ in their ids already, which saves the walk over both documents.
    const bool sameSource = m_source.attribute(AGENT_ID) == other.m_source.attribute(AGENT_ID);
    const bool sameIDs =
        sameSource && m_destination.attribute(AGENT_ID) == other.m_destination.attribute(AGENT_ID);
    const auto id = sameSource ? &XMLPacket::m_destination : &XMLPacket::m_source;
    if (!sameIDs && isShown(this->*id) && other.isShown(other.*id)) {
        return false;
    }
    return sameDocument(m_packetDocument, other.m_packetDocument);
}

bool XMLPacket::isShown(const QDomElement &id) const
{
    return !id.parentNode().isNull() && !m_header.parentNode().isNull() &&
        !m_root.parentNode().isNull();
}

bool XMLPacket::operator!=(const XMLPacket &other) const { return !(*this == other); }

int XMLPacket::getSourceAgentID() const { return getAttributeInt(m_source, AGENT_ID); }
int XMLPacket::getDestinationAgentID() const { return getAttributeInt(m_destination, AGENT_ID); }
void XMLPacket::setSourceAgentID(int agentID) { setAttribute(m_source, AGENT_ID, agentID); }

void XMLPacket::setDestinationAgentID(int agentID)
{
    setAttribute(m_destination, AGENT_ID, agentID);
}

bool XMLPacket::isEmpty() const { return !m_body.hasChildNodes(); }

bool XMLPacket::hasNodesOfType(XMLOBJECT_TYPE t) const
{
    return XMLObject::hasNodesOfType(m_body, t);
}

int XMLPacket::getNodesOfType(XMLOBJECT_TYPE t, std::list<QDomNode> &out) const
{
    return XMLObject::getNodesOfType(m_body, t, out);
}

QDomElement XMLPacket::appendCopy(const XMLObject &item)
{
    if (m_body.isNull()) {
        return QDomElement();
    }
    return m_body.appendChild(item.getNode()).toElement();
}

void XMLPacket::appendMoved(XMLObject &item)
{
    const QDomElement moved = item.getNodeConst();
    if (m_body.isNull() || moved.isNull() || isWithin(m_body, moved)) {
        return;
    }
    m_body.appendChild(moved);
    item.m_owner = m_packetDocument;
}

QDomElement XMLPacket::append(XMLPacketable &item) { return appendCopy(item); }
QDomElement XMLPacket::append(XMLAction &item) { return appendCopy(item); }
QDomElement XMLPacket::append(XMLUI &item) { return appendCopy(item); }
QDomElement XMLPacket::append(XMLImage &item) { return appendCopy(item); }
QDomElement XMLPacket::append(XMLMessage &item) { return appendCopy(item); }

void XMLPacket::appendV(XMLPacketable &item) { appendMoved(item); }
void XMLPacket::appendV(XMLAction &item) { appendMoved(item); }
void XMLPacket::appendV(XMLUI &item) { appendMoved(item); }
void XMLPacket::appendV(XMLImage &item) { appendMoved(item); }
void XMLPacket::appendV(XMLMessage &item) { appendMoved(item); }

QDomElement XMLPacket::append(TQPacketable &p, bool current)
{
    if (m_body.isNull()) {
        return QDomElement();
    }
    XMLPacketable item;
    item.setData(p);
    if (current) {
        item.setCurrent(true);
    }
    appendMoved(item);
    return item.getNodeConst();
}

void XMLPacket::appendV(TQPacketable &p, bool current) { append(p, current); }

void XMLPacket::print() const
{
    std::printf("%s", XMLObject::toString(m_packetDocument).toUtf8().constData());
}

#include "handmade.h"

#include "xmlobject.h"

namespace {

QDomElement appendTo(QDomDocument &document, QDomElement &parent, const QString &name)
{
    return parent.appendChild(document.createElement(name)).toElement();
}

}  // namespace

HandmadePacket::HandmadePacket()
    : document(XMLObject::createDocument(XMLObject::TQ_NAMESPACE, QStringLiteral("tqxml")))
{
    QDomElement root = document.documentElement();
    QDomElement header = appendTo(document, root, QStringLiteral("header"));
    source = appendTo(document, header, QStringLiteral("src"));
    destination = appendTo(document, header, QStringLiteral("dst"));
    body = appendTo(document, root, QStringLiteral("body"));
}

HandmadePacket::HandmadePacket(int sourceID, int destinationID) : HandmadePacket()
{
    source.setAttribute(QStringLiteral("agent_id"), QString::number(sourceID));
    destination.setAttribute(QStringLiteral("agent_id"), QString::number(destinationID));
}

QDomElement HandmadePacket::append(const QString &name) { return appendTo(document, body, name); }

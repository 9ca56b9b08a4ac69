#include "bench.h"
#include "item.h"
#include "server.h"
#include "xmlmessage.h"
#include "xmlpacket.h"

#include <cstring>
#include <list>
#include <memory>
#include <string>

namespace {

using Packet = std::shared_ptr<XMLPacket>;

Packet packetWith(int items)
{
    auto packet = std::make_shared<XMLPacket>();
    packet->setSourceAgentID(1);
    packet->setDestinationAgentID(1);
    const std::unique_ptr<TQPacketable> item = Item::serverItem();
    for (int i = 0; i < items; ++i) {
        packet->appendV(*item, false);
    }
    return packet;
}

QDomDocument documentOf(const Packet &packet)
{
    std::list<QDomNode> nodes;
    packet->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
    return nodes.front().ownerDocument();
}

Packet builtWith(int items)
{
    const Packet packet = packetWith(items);
    documentOf(packet);
    return packet;
}

Measured compare(const Packet &a, const Packet &b)
{
    return [a, b] { keep(*a == *b); };
}

bool sameAttributes(const QDomNamedNodeMap &a, const QDomNamedNodeMap &b)
{
    if (a.length() != b.length()) {
        return false;
    }
    for (int i = 0; i < a.length(); ++i) {
        const QDomNode attribute = a.item(i);
        if (b.namedItem(attribute.nodeName()).nodeValue() != attribute.nodeValue()) {
            return false;
        }
    }
    return true;
}

bool sameTree(const QDomNode &a, const QDomNode &b)
{
    if (a.nodeType() != b.nodeType() || a.nodeName() != b.nodeName() ||
        a.nodeValue() != b.nodeValue() || !sameAttributes(a.attributes(), b.attributes())) {
        return false;
    }
    QDomNode childA = a.firstChild();
    QDomNode childB = b.firstChild();
    while (!childA.isNull() && !childB.isNull()) {
        if (!sameTree(childA, childB)) {
            return false;
        }
        childA = childA.nextSibling();
        childB = childB.nextSibling();
    }
    return childA.isNull() && childB.isNull();
}

Measured compareBuilt() { return compare(builtWith(1), builtWith(1)); }

Measured compareTrees()
{
    const QDomDocument a = documentOf(packetWith(1));
    const QDomDocument b = documentOf(packetWith(1));
    return [a, b] { keep(sameTree(a, b)); };
}

Measured compareUnbuilt() { return compare(packetWith(1), packetWith(1)); }

// What an unbuilt packet with one item says.
struct PlainPacket
{
    int source = 1;
    int destination = 1;
    PACKETDATATYPES type = PACKETDATATYPES(BENCH_TYPE);
    TQKEY_ELEMENT key = { 0, 0 };
    bool isCurrent = false;
    std::string name;
    std::string text = Item::text().toStdString();

    bool operator==(const PlainPacket &other) const
    {
        return source == other.source && destination == other.destination && type == other.type &&
            key.key == other.key.key && key.hkey == other.key.hkey &&
            isCurrent == other.isCurrent && name == other.name &&
            text.size() == other.text.size() &&
            std::memcmp(text.data(), other.text.data(), text.size()) == 0;
    }
};

Measured compareTexts()
{
    const auto a = std::make_shared<PlainPacket>();
    const auto b = std::make_shared<PlainPacket>();
    return [a, b] { keep(*a == *b); };
}

// A packet of many small items, with its document; only the length counts here.
Packet packetOf(int messages, int destination, const QString &first)
{
    auto packet = std::make_shared<XMLPacket>();
    packet->setSourceAgentID(1);
    packet->setDestinationAgentID(destination);
    for (int i = 0; i < messages; ++i) {
        XMLMessage message(i == 0 ? first : QStringLiteral("done"));
        packet->appendV(message);
    }
    std::list<QDomNode> nodes;
    packet->getNodesOfType(XMLObject::XMLOBJECT_MSG, nodes);
    return packet;
}

Figure::Make compareHeaders(int items)
{
    return [items] {
        const QString text = QStringLiteral("started");
        return compare(packetOf(items, 1, text), packetOf(items, 2, text));
    };
}

Figure::Make compareFirstItems(int items)
{
    return [items] {
        return compare(packetOf(items, 1, QStringLiteral("started")),
            packetOf(items, 1, QStringLiteral("stopped")));
    };
}

Figure::Make compareMany(int items)
{
    return [items] { return compare(builtWith(items), builtWith(items)); };
}

const Register FIGURES = {
    { "equal_same", compareBuilt, compareTrees },
    { "equal_same_unbuilt", compareUnbuilt, compareTexts },
    { "equal_differs", compareHeaders(10000), compareHeaders(10) },
    { "equal_first_item_differs", compareFirstItems(10000), compareFirstItems(10) },
    { "growth_equal", compareMany(200), compareMany(20), 10 },
};

}  // namespace

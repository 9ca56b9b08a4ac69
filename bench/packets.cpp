#include "bench.h"
#include "item.h"
#include "server.h"
#include "xmlaction.h"
#include "xmlagent.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include <QCoreApplication>

#include <memory>
#include <vector>

namespace {

using Packet = std::shared_ptr<XMLPacket>;

Packet packetWith(int items)
{
    auto packet = std::make_shared<XMLPacket>();
    packet->setSourceAgentID(1);
    packet->setDestinationAgentID(1);
    const std::unique_ptr<TQPacketable> item = Item::serverItem();
    for (int i = 0; i < items; ++i) {
        packet->append(*item, false);
    }
    return packet;
}

std::function<void()> compare(const Packet &a, const Packet &b)
{
    return [a, b] { keep(*a == *b); };
}

std::function<void()> compareEqual() { return compare(packetWith(1), packetWith(1)); }

std::function<void()> writeOneOfEach()
{
    return [packet = packetWith(1)] {
        std::list<QDomNode> nodes;
        packet->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
        keep(nodes.front().ownerDocument().toString(1).size());
    };
}

// A packet of many small items; only its length matters.
Packet packetOf(int messages, int destination, const QString &first)
{
    auto packet = std::make_shared<XMLPacket>();
    packet->setSourceAgentID(1);
    packet->setDestinationAgentID(destination);
    for (int i = 0; i < messages; ++i) {
        XMLMessage message(i == 0 ? first : QStringLiteral("done"));
        packet->appendV(message);
    }
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

// Receives packets and keeps them for the next round.
class Sink : public XMLAgent
{
public:
    Sink() : XMLAgent(1) {}
    void receive(XMLPacket *packet) override { received += packet != nullptr; }
    int received = 0;
};

constexpr int QUEUE = 1000;

struct Traffic
{
    XMLRouter router { nullptr, nullptr, nullptr };
    Sink sinks[2];
    std::vector<std::unique_ptr<XMLPacket>> packets;

    explicit Traffic(int count)
    {
        for (Sink &sink : sinks) {
            router.add(&sink);
        }
        for (int i = 0; i < count; ++i) {
            packets.emplace_back(sinks[0].getXMLPacket(sinks[i % 2].getAgentID()));
        }
    }

    void run()
    {
        for (const auto &packet : packets) {
            router.send(packet.get());
        }
        QCoreApplication::processEvents();
        keep(sinks[0].received);
    }
};

Figure::Make sendAndDeliver(int count)
{
    return [count] { return [traffic = std::make_shared<Traffic>(count)] { traffic->run(); }; };
}

class EventSink : public QObject
{
public:
    bool event(QEvent *event) override
    {
        received += event->type() == QEvent::User;
        return true;
    }
    int received = 0;
};

std::function<void()> postAndDeliver()
{
    return [sink = std::make_shared<EventSink>()] {
        for (int i = 0; i < QUEUE; ++i) {
            QCoreApplication::postEvent(sink.get(), new QEvent(QEvent::User));
        }
        QCoreApplication::processEvents();
        keep(sink->received);
    };
}

// Deletes what it receives.
class Drain : public XMLAgent
{
public:
    Drain() : XMLAgent(1) {}
    void receive(XMLPacket *packet) override { delete packet; }
};

std::function<void()> livePacket()
{
    struct Life
    {
        XMLRouter router { nullptr, nullptr, nullptr };
        Drain drain;
    };
    auto life = std::make_shared<Life>();
    life->router.add(&life->drain);
    return [life, name = QStringLiteral("show")] {
        XMLPacket *packet = life->drain.getXMLPacket(1);
        XMLAction action(name, 1000, 7);
        packet->appendV(action);
        life->router.send(packet);
        life->router.send();
    };
}

std::function<void()> buildPacket()
{
    return [] {
        QDomDocument document =
            XMLObject::createDocument(XMLObject::TQ_NAMESPACE, QStringLiteral("tqxml"));
        QDomElement root = document.documentElement();
        QDomElement header = document.createElement(QStringLiteral("header"));
        root.appendChild(header);
        for (const QString &name : { QStringLiteral("src"), QStringLiteral("dst") }) {
            QDomElement end = document.createElement(name);
            end.setAttribute(QStringLiteral("agent_id"), QString::number(1));
            header.appendChild(end);
        }
        QDomElement body = document.createElement(QStringLiteral("body"));
        root.appendChild(body);
        QDomElement action = document.createElement(QStringLiteral("action"));
        action.setAttribute(QStringLiteral("name"), QStringLiteral("show"));
        action.setAttribute(QStringLiteral("type"), QString::number(1000));
        action.setAttribute(QStringLiteral("originator"), QString::number(7));
        body.appendChild(action);
        keep(body.hasChildNodes());
    };
}

Figure::Make compareMany(int items)
{
    return [items] { return compare(packetWith(items), packetWith(items)); };
}

const Register FIGURES = {
    { "equal_same", 0.25, 0, compareEqual, writeOneOfEach, 2 },
    { "equal_differs", 1.1, 0, compareHeaders(10000), compareHeaders(10) },
    { "equal_first_item_differs", 1.1, 0, compareFirstItems(10000), compareFirstItems(10) },
    { "send_deliver", 3.0, 1.2, sendAndDeliver(QUEUE), postAndDeliver },
    { "packet_life", 1.6, 0, livePacket, buildPacket },
    { "growth_equal", 1.15, 0, compareMany(200), compareMany(20), 10 },
    { "growth_queue", 1.15, 0, sendAndDeliver(10000), sendAndDeliver(1000), 10 },
};

}  // namespace

#include "bench.h"
#include "handmade.h"
#include "item.h"
#include "server.h"
#include "xmlaction.h"
#include "xmlagent.h"
#include "xmlcommserver.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include "tqcommserver.h"

#include <QCoreApplication>

#include <list>
#include <memory>
#include <string>
#include <vector>

namespace {

constexpr int QUEUE = 1000;
constexpr int REQUESTS = 100;
constexpr int KEYS = 10;

// Leaves what it receives to whoever made it.
class Sink : public XMLAgent
{
public:
    Sink() : XMLAgent(1) {}
    void receive(XMLPacket *packet) override { received += packet != nullptr; }
    int received = 0;
};

// Deletes what it receives.
class Drain : public XMLAgent
{
public:
    Drain() : XMLAgent(1) {}
    void receive(XMLPacket *packet) override { delete packet; }
};

// In what a packet differs from the one before.
enum Difference { Destination, Source, ItemCount, Key, Name, EndOfText };

// Makes packets with the differences from first to last, in turn.
class Variety
{
public:
    Variety(Difference first, Difference last) : m_first(first), m_count(last - first + 1) {}

    std::unique_ptr<XMLPacket> next(const XMLAgent &one, const XMLAgent &other)
    {
        change(Difference(m_first + m_made % m_count));
        ++m_made;
        const XMLAgent &source = m_isSwapped ? other : one;
        std::unique_ptr<XMLPacket> packet(source.getXMLPacket(m_destination));
        for (int i = 0; i < m_items; ++i) {
            packet->appendV(*m_item, false);
        }
        return packet;
    }

private:
    void change(Difference difference)
    {
        switch (difference) {
        case Destination:
            m_destination = 3 - m_destination;
            break;
        case Source:
            m_isSwapped = !m_isSwapped;
            break;
        case ItemCount:
            m_items = 3 - m_items;
            break;
        case Key:
            ++m_item->dbkey.key;
            break;
        case Name:
            m_item->setName(std::to_string(m_made).c_str());
            break;
        case EndOfText:
            m_item->text = Item::textEndingWith(std::to_string(m_made));
            break;
        }
    }

    const Difference m_first;
    const int m_count;
    std::unique_ptr<TextItem> m_item = Item::serverItem();
    int m_destination = 1;
    int m_items = 1;
    bool m_isSwapped = false;
    int m_made = 0;
};

// Packets are sent and delivered; making and deleting them does not count.
struct Traffic
{
    XMLRouter router { nullptr, nullptr, nullptr };
    Sink sinks[2];
    Variety variety;
    std::vector<std::unique_ptr<XMLPacket>> packets;

    Traffic(Difference first, Difference last) : variety(first, last)
    {
        for (Sink &sink : sinks) {
            router.add(&sink);
        }
    }

    void make(int count)
    {
        packets.clear();
        for (int i = 0; i < count; ++i) {
            packets.push_back(variety.next(sinks[0], sinks[1]));
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

Figure::Make sendAndDeliver(int count, Difference first = Destination, Difference last = Name)
{
    return [count, first, last] {
        auto traffic = std::make_shared<Traffic>(first, last);
        return Measured([traffic] { traffic->run(); }, [traffic, count] { traffic->make(count); });
    };
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

Measured postAndDeliver()
{
    return [sink = std::make_shared<EventSink>()] {
        for (int i = 0; i < QUEUE; ++i) {
            QCoreApplication::postEvent(sink.get(), new QEvent(QEvent::User));
        }
        QCoreApplication::processEvents();
        keep(sink->received);
    };
}

struct Life
{
    XMLRouter router { nullptr, nullptr, nullptr };
    Drain drains[2];

    Life()
    {
        for (Drain &drain : drains) {
            router.add(&drain);
        }
    }
};

Measured liveEmpty()
{
    return [life = std::make_shared<Life>()] {
        for (int i = 0; i < QUEUE; ++i) {
            const int destination = life->drains[i % 2].getAgentID();
            life->router.send(life->drains[0].getXMLPacket(destination));
        }
        QCoreApplication::processEvents();
    };
}

Measured liveWithAction()
{
    return [life = std::make_shared<Life>(), name = QStringLiteral("show")] {
        XMLPacket *packet = life->drains[0].getXMLPacket(1);
        XMLAction action(name, 1000, 7);
        packet->appendV(action);
        life->router.send(packet);
        life->router.send();
    };
}

// Appends the element of an action.
QDomElement buildAction(HandmadePacket &packet, const QString &name, int type, int originator)
{
    QDomElement action = packet.append(QStringLiteral("action"));
    action.setAttribute(QStringLiteral("name"), name);
    action.setAttribute(QStringLiteral("type"), QString::number(type));
    action.setAttribute(QStringLiteral("originator"), QString::number(originator));
    return action;
}

Measured buildWithAction()
{
    return [name = QStringLiteral("show")] {
        HandmadePacket packet(1, 1);
        keep(buildAction(packet, name, 1000, 7).isNull());
    };
}

// Reads the message of each packet and deletes it.
class Reader : public XMLAgent
{
public:
    Reader() : XMLAgent(1) {}

    void receive(XMLPacket *packet) override
    {
        std::list<QDomNode> messages;
        packet->getNodesOfType(XMLObject::XMLOBJECT_MSG, messages);
        read += messages.front().toElement().attribute(QStringLiteral("msg")).size();
        delete packet;
    }
    qint64 read = 0;
};

QStringList messageTexts()
{
    QStringList texts;
    for (int i = 0; i < QUEUE; ++i) {
        texts += QStringLiteral("plate %1 is ready").arg(i);
    }
    return texts;
}

Measured burst()
{
    struct Site
    {
        XMLRouter router { nullptr, nullptr, nullptr };
        Reader reader;
        QStringList texts = messageTexts();
        Site() { router.add(&reader); }
    };
    return [site = std::make_shared<Site>()] {
        for (const QString &text : std::as_const(site->texts)) {
            XMLMessage message(text);
            XMLPacket *packet = site->reader.getXMLPacket(1);
            packet->appendV(message);
            site->router.send(packet);
        }
        QCoreApplication::processEvents();
        keep(site->reader.read);
    };
}

Measured buildBurst()
{
    return [texts = messageTexts()] {
        std::vector<HandmadePacket> packets;
        packets.reserve(size_t(texts.size()));
        for (const QString &text : texts) {
            packets.emplace_back(1, 1);
            packets.back().append(QStringLiteral("msg")).setAttribute(QStringLiteral("msg"), text);
        }
        qint64 read = 0;
        for (const HandmadePacket &packet : packets) {
            const QDomElement message = packet.body.firstChildElement(QStringLiteral("msg"));
            read += message.attribute(QStringLiteral("msg")).size();
        }
        keep(read);
    };
}

// The keys of one request; each request has others.
std::vector<TQKEY_ELEMENT> keysOf(int request)
{
    std::vector<TQKEY_ELEMENT> keys;
    for (int i = 0; i < KEYS; ++i) {
        keys.push_back({ unsigned(100 * request + i), 0x8 });
    }
    return keys;
}

Measured request()
{
    struct Site
    {
        TQCommServer server { "" };
        XMLRouter router { &server, nullptr, nullptr };
        Drain client;
        Site() { router.add(&client); }
    };
    auto site = std::make_shared<Site>();
    const auto run = [site, name = QStringLiteral("list jobs")] {
        for (int i = 0; i < REQUESTS; ++i) {
            std::vector<TQKEY_ELEMENT> keys = keysOf(i);
            QList<TQKEY_ELEMENT *> list;
            for (TQKEY_ELEMENT &key : keys) {
                list.append(&key);
            }
            XMLAction action(name, XMLCommServer::REQUEST_JOBS, 1);
            action.setTQKEYList(list);
            XMLPacket *packet = site->client.getXMLPacket(site->router.getXMLCommServerID());
            packet->appendV(action);
            site->router.send(packet);
        }
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    };
    return { run, [] { readyLists.jobsOf = [](int) -> TQJOB * { return nullptr; }; } };
}

void appendProperty(
    HandmadePacket &packet, QDomElement &action, const QString &name, const QString &text)
{
    QDomElement property = packet.document.createElement(name);
    property.appendChild(packet.document.createTextNode(text));
    action.appendChild(property);
}

// Sums up the numbers of a property.
unsigned int readProperty(const QDomElement &action, const QString &name)
{
    unsigned int sum = 0;
    const QString text = action.firstChildElement(name).text();
    for (const QString &number : text.split(QLatin1Char(' '))) {
        sum += number.toUInt(nullptr, 16);
    }
    return sum;
}

Measured buildRequest()
{
    return [name = QStringLiteral("list jobs")] {
        const QString keyName = QStringLiteral("tqkey_key_list");
        const QString hkeyName = QStringLiteral("tqkey_hkey_list");
        for (int i = 0; i < REQUESTS; ++i) {
            QStringList keys;
            QStringList hkeys;
            for (const TQKEY_ELEMENT &key : keysOf(i)) {
                keys += QString::number(key.key, 16);
                hkeys += QString::number(key.hkey, 16);
            }
            HandmadePacket packet(1, -1);
            QDomElement action = buildAction(packet, name, XMLCommServer::REQUEST_JOBS, 1);
            appendProperty(packet, action, hkeyName, hkeys.join(QLatin1Char(' ')));
            appendProperty(packet, action, keyName, keys.join(QLatin1Char(' ')));
            keep(action.attribute(QStringLiteral("type")).toInt());
            keep(readProperty(action, keyName) + readProperty(action, hkeyName));
        }
    };
}

// Fills a queue that is never delivered.
struct Queue
{
    std::vector<std::unique_ptr<XMLPacket>> packets;
    XMLRouter router { nullptr, nullptr, nullptr };
    Sink sinks[2];
    std::unique_ptr<TQPacketable> item = Item::serverItem();

    Queue()
    {
        packets.reserve(2 * QUEUE);
        for (Sink &sink : sinks) {
            router.add(&sink);
        }
    }

    void fill(bool withItem)
    {
        for (int i = 0; i < QUEUE; ++i) {
            packets.emplace_back(sinks[0].getXMLPacket(sinks[i % 2].getAgentID()));
            if (withItem) {
                packets.back()->appendV(*item, false);
            }
            router.send(packets.back().get());
        }
    }
};

Figure::Make queue(bool withItem)
{
    return [withItem] {
        return [queue = std::make_shared<Queue>(), withItem] { queue->fill(withItem); };
    };
}

const Register FIGURES = {
    { "send_deliver", sendAndDeliver(QUEUE), postAndDeliver },
    { "send_deliver_texts", sendAndDeliver(QUEUE, EndOfText, EndOfText), postAndDeliver },
    { "packet_life", liveWithAction, buildWithAction },
    { "packet_life_empty", liveEmpty, postAndDeliver },
    { "burst", burst, buildBurst },
    { "request_life", request, buildRequest },
    { "queue_empty", queue(false), nullptr, QUEUE, Figure::Bytes },
    { "queue_item", queue(true), nullptr, QUEUE, Figure::Bytes,
        QUEUE *double(Item::text().size()) },
    { "growth_queue", sendAndDeliver(10000), sendAndDeliver(1000), 10 },
};

}  // namespace

#include "util.h"
#include "xmlaction.h"
#include "xmlagentbroker.h"
#include "xmlrouter.h"

#include <QMetaMethod>
#include <QTimer>

#include <memory>

namespace {

class Broker : public XMLAgentBroker
{
public:
    using Supply = std::function<int(XMLRouter *, int)>;
    Broker(QStringList *log, Supply supply) : m_log(log), m_supply(std::move(supply)) {}
    ~Broker() override { *m_log += str("gone"); }
    int supplyAgent(int agentType) override
    {
        const Supply supply = m_supply;  // may replace this broker
        return supply(router, agentType);
    }

private:
    QStringList *const m_log;
    const Supply m_supply;
};

// A router with agents 1 to 3, which want removals, and a stranger, 0, that was never added.
struct World
{
    World() : router(new XMLRouter(nullptr, nullptr, "hub"))
    {
        agents[0] = new RecordingAgent(7, &log);
        run(str("+ + +"));
    }
    ~World()
    {
        delete router;
        qDeleteAll(agents);
        runEvents();
    }

    // What tests do, as words: "1>2:a" sends the text a from 1 to 2.
    void run(const QString &words)
    {
        for (const QString &word : words.split(QLatin1Char(' '))) {
            const int id = word.mid(1).toInt();
            if (word.contains(QLatin1Char('>'))) {
                const QString to = word.section(QLatin1Char('>'), 1);
                post(makePacket(word.section(QLatin1Char('>'), 0, 0).toInt(),
                    to.section(QLatin1Char(':'), 0, 0).toInt(), to.section(QLatin1Char(':'), 1)));
            } else if (!word.isEmpty()) {
                act(word.at(0).toLatin1(), id);
            }
        }
    }
    void act(char what, int id)
    {
        switch (what) {
        case '+':  // adds one more agent
            return router->add(agents[++lastID] = new RecordingAgent(7, &log));
        case '*':  // adds an agent again
            return router->add(agents[id]);
        case '-':  // removes an agent
            return router->remove(agents[id]);
        case '~':  // removes and deletes one
            router->remove(agents[id]);
            delete agents.take(id);
            return;
        case '?':  // reports a removal
            return router->notifyAgentRemovals(id);
        case '=':  // sends the last packet again
            packets.last()->setSourceAgentID(1);
            return router->send(packets.last());
        case '!':
            return router->send();
        case '@':  // a dialog
            return runLoop([] {});
        case '%':  // a dialog that deletes the router
            return runLoop([this] { delete router; });
        case 'B':  // replaces the broker
            router->setAgentBroker(new Broker(&log, [](XMLRouter *, int) { return 0; }));
            return router->setAgentBroker(nullptr);
        case 'X':
            delete router;
        }
    }
    void post(XMLPacket *packet)
    {
        packets.append(packet);
        router->send(packet);
    }
    static void runLoop(const std::function<void()> &atEnd)
    {
        QEventLoop loop;
        QTimer::singleShot(20, &loop, [&] {
            atEnd();
            loop.quit();
        });
        loop.exec();
    }
    QString takeLog()
    {
        const QString text = log.join(QLatin1Char(' '));
        log.clear();
        return text;
    }

    QStringList log;
    int lastID = 0;
    QMap<int, RecordingAgent *> agents;
    QPointer<XMLRouter> router;
    QList<QPointer<XMLPacket>> packets;  // all that were sent
};

struct Delivery
{
    const char *name;
    const char *words;
    const char *log;
};
constexpr Delivery DELIVERIES[] = {
    { "first in, first out", "1>2:a 1>3:b 3>2:c 1>1:d", "2<a 3<b 2<c 1<d" },
    { "the same content twice", "1>2:a 1>2:a", "2<a" },
    { "a, b, a", "1>2:a 1>2:b 1>2:a", "2<a 2<b 2<a" },
    { "other ids make another packet", "1>2:a 1>3:a 3>2:a", "2<a 3<a 2<a" },
    { "unregistered senders", "0>2:a 99>2:b", "" },
    { "the bridge as sender", "-1>2:a", "2<a" },
    { "sender removed before", "-3 3>2:a", "1-3 2-3" },
    { "sender removed after", "1>2:a -1", "2-1 3-1 2<a" },
    { "queued already", "1>2:a = 1>3:b", "2<a 3<b" },
    { "dropped already", "0>2:a =", "" },
    { "slot called by hand", "1>2:a ! 1>2:a !", "2<a 2<a" },
    { "unknown destination", "1>99:a 1>2:b", "1-99 2-99 3-99 2<b" },
    { "removed destination", "1>2:a -2 !", "1-2 3-2 1-2 3-2" },
    { "removed twice", "-2 -2", "1-2 3-2 1-2 3-2" },
    { "never added", "-0", "1-0 2-0 3-0" },
    { "added twice", "*1 2>1:a 2>4:b ! -1 2>1:c ?1", "4<a 4<b 2-4 3-4 4-1 2-1 3-1 4<c" },
    { "router deleted", "X", "1--1 2--1 3--1" },
};

// What agent 2 does while it is served: in receive(), with two more packets waiting, and in
// agentRemoved(), when a packet was undeliverable.
struct Reentrance
{
    const char *name;
    const char *words;
    const char *received;
    const char *removed;
};
constexpr Reentrance REENTRANCE[] = {
    { "nothing", "", "2<one 3<two 2<three", "1-99 2-99 3-99 3<two 2<three" },
    { "sends", "2>1:x", "2<one 3<two 2<three 1<x", "1-99 2-99 3-99 3<two 2<three 1<x" },
    { "adds", "+ 2>4:x", "2<one 3<two 2<three 4<x", "1-99 2-99 3-99 3<two 2<three 4<x" },
    { "adds itself", "*2", "2<one 3<two 4<three", "1-99 2-99 3-99 3<two 4<three" },
    { "removes 3", "-3", "2<one 1-3 2-3 1-3 2-3 2<three", "1-99 2-99 1-3 2-3 1-3 2-3 2<three" },
    { "removes itself", "-2", "2<one 1-2 3-2 3<two 1-2 3-2",
        "1-99 2-99 1-2 3-2 3-99 3<two 1-2 3-2" },
    { "deletes 1", "~1", "2<one 2-1 3-1 3<two 2<three", "1-99 2-99 2-1 3-1 3-99 3<two 2<three" },
    { "deletes 3", "~3", "2<one 1-3 2-3 1-3 2-3 2<three", "1-99 2-99 1-3 2-3 1-3 2-3 2<three" },
    { "deletes itself", "~2", "2<one 1-2 3-2 3<two 1-2 3-2",
        "1-99 2-99 1-2 3-2 3-99 3<two 1-2 3-2" },
    { "deletes all", "~1 ~3 ~2", "2<one 2-1 3-1 2-3", "1-99 2-99 2-1 3-1 2-3" },
    { "calls the slot", "!", "2<one 3<two 2<three", "1-99 2-99 3<two 2<three 3-99" },
    { "runs an event loop", "@", "2<one 3<two 2<three", "1-99 2-99 3<two 2<three 3-99" },
    { "sends, runs a loop", "2>1:x @", "2<one 3<two 2<three 1<x",
        "1-99 2-99 3<two 2<three 1<x 3-99" },
    { "reports a removal", "?8", "2<one 1-8 2-8 3-8 3<two 2<three",
        "1-99 2-99 1-8 2-8 3-8 3-99 3<two 2<three" },
    { "replaces the broker", "B", "2<one gone 3<two 2<three", "1-99 2-99 gone 3-99 3<two 2<three" },
    { "deletes the router", "X", "2<one 1--1 2--1 3--1", "1-99 2-99 1--1 2--1 3--1" },
    { "deletes the router in a loop", "%", "2<one 3<two 2<three 1--1 2--1 3--1",
        "1-99 2-99 3<two 2<three 1--1 2--1 3--1" },
};

}  // namespace

class tst_XMLRouter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void object();
    void lookups();
    void broker();
    void brokerRubbish();
    void delivery_data() { addRows(DELIVERIES); }
    void delivery();
    void equalPackets();
    void idsBeyondInt();
    void reentrance_data() { addRows(REENTRANCE); }
    void reentrance();
    void dialogWaitsForReply();
    void forwarding();
    void leftBehind();
    void longQueue();
};

void tst_XMLRouter::object()
{
    QObject parent;
    auto router = new XMLRouter(nullptr, &parent, "na\xefve");
    QCOMPARE(router->parent(), &parent);
    QCOMPARE(router->objectName(), str("naïve"));
    QCOMPARE(XMLRouter(nullptr, nullptr, nullptr).objectName(), QString());
    const QMetaObject &meta = XMLRouter::staticMetaObject;
    QCOMPARE(meta.className(), "XMLRouter");
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), QByteArray("send()"));
    QCOMPARE(meta.method(meta.methodOffset()).methodType(), QMetaMethod::Slot);
    QCOMPARE(meta.propertyCount(), meta.propertyOffset());
}

void tst_XMLRouter::lookups()
{
    World w;
    XMLRouter &router = *w.router;
    QCOMPARE(router.getXMLCommServerID(), -1);
    QVERIFY(router.contains(-1) && router.contains(3) && !router.contains(0));
    QCOMPARE(w.agents[3]->getAgentID(), 3);
    QCOMPARE(w.agents[3]->currentRouter(), &router);
    QCOMPARE(router.getNextAgentID(), 4);
    w.run(str("-3 *3"));  // ids are not used again
    QCOMPARE(w.agents[3]->getAgentID(), 5);
    w.run(str("*1"));  // at home under 1 and 6, but its own id is 6
    w.agents[9] = new RecordingAgent(0, &w.log);
    w.run(str("*9"));
    router.add(nullptr);
    router.remove(nullptr);
    QVERIFY(router.contains(1) && router.contains(6) && router.contains(7));
    const int types[] = { 0, 5, 5, 7, 5, 5, 7, 7, 0, 5 };  // of the ids from -1 on
    for (int id = -1; id <= 8; ++id) {
        QCOMPARE(router.getAgentType(id), types[id + 1]);
    }
    QCOMPARE(router.findAgentsOfType(7), (std::list<int> { 6, 2, 5, 6 }));
    QCOMPARE(router.findAgentsOfType(0), (std::list<int> { -1, 7 }));
    QVERIFY(router.findAgentsOfType(5).empty());
    QCOMPARE(router.findAgentOfType(7), 6);
    QCOMPARE(router.findAgentOfType(8), 0);
    QCOMPARE(router.supplyAgentOfType(7), 6);
    QCOMPARE(router.supplyAgentOfType(8), 0);
}

void tst_XMLRouter::broker()
{
    World w;
    XMLRouter &router = *w.router;
    w.agents[9] = new RecordingAgent(9, &w.log);
    auto first = new Broker(&w.log, [&w](XMLRouter *own, int) {
        own->add(w.agents[9]);
        return w.agents[9]->getAgentID();
    });
    router.setAgentBroker(first);
    QCOMPARE(router.supplyAgentOfType(7), 1);
    QCOMPARE(router.supplyAgentOfType(9), 4);
    QCOMPARE(router.supplyAgentOfType(9), 4);  // there is one now
    QVERIFY(!router.contains(5));
    router.setAgentBroker(first);  // the current one again: none is left
    QCOMPARE(w.takeLog(), str("gone"));
    QCOMPARE(router.supplyAgentOfType(10), 0);
    auto last = new Broker(&w.log, [](XMLRouter *, int) { return 0; });
    router.setAgentBroker(new Broker(&w.log, [last](XMLRouter *own, int) {
        own->setAgentBroker(last);
        return 3;
    }));
    QCOMPARE(router.supplyAgentOfType(10), 3);
    QCOMPARE(w.takeLog(), str("gone"));
    w.run(str("-9 X"));
    QCOMPARE(w.takeLog(), str("1-4 2-4 3-4 1--1 2--1 3--1 gone"));
}

void tst_XMLRouter::brokerRubbish()
{
    World w;
    struct Leaver : XMLAgentBroker
    {
        ~Leaver() override { router->setAgentBroker(nullptr); }
        int supplyAgent(int) override { return 0; }
    };
    XMLRouter(nullptr, nullptr, nullptr).setAgentBroker(new Leaver);
    w.router->setAgentBroker(new Broker(&w.log, [](XMLRouter *, int type) { return -type; }));
    QCOMPARE(w.router->supplyAgentOfType(12345), -12345);
    int calls = 0;
    w.router->setAgentBroker(new Broker(&w.log, [&calls](XMLRouter *own, int type) {
        ++calls;
        return own->supplyAgentOfType(type) + own->supplyAgentOfType(type - 1);
    }));
    QCOMPARE(w.router->supplyAgentOfType(500), 0);
    QVERIFY2(calls > 1 && calls <= 1000, QByteArray::number(calls).constData());
    w.router->setAgentBroker(new Broker(&w.log, [](XMLRouter *own, int) {
        delete own;
        return 8;
    }));
    QCOMPARE(w.router->supplyAgentOfType(500), 8);
    QVERIFY(w.router.isNull());
}

void tst_XMLRouter::delivery()
{
    const auto &row = currentRow<Delivery>();
    QList<QPointer<XMLPacket>> packets;
    {
        World w;
        w.run(str(row.words));
        if (!strchr(row.words, '!')) {
            QVERIFY(!w.packets.contains(nullptr));  // until control returns to the event loop
        }
        runEvents();
        QCOMPARE(w.takeLog(), str(row.log));
        packets = w.packets;
    }
    QCOMPARE(packets.count(nullptr), packets.size());
}

void tst_XMLRouter::equalPackets()
{
    World w;
    for (const bool ascending : { true, false }) {  // differ in the order of attributes only
        XMLPacket *packet = makePacket(1, 2, str("a"));
        XMLAction action;
        QDomElement e = packet->append(action);
        for (int i = 0; i < 20; ++i) {
            e.setAttribute(QStringLiteral("a%1").arg(ascending ? i : 19 - i), 1);
        }
        w.post(packet);
    }
    w.router->send(nullptr);
    w.router->send();
    QCOMPARE(w.takeLog(), str("2<a"));
}

void tst_XMLRouter::idsBeyondInt()
{
    World w;
    const auto send = [&w](const char *source, const char *destination) {
        XMLPacket *packet = makePacket(1, 2, str(source));
        XMLMessage message;
        QDomElement header = packet->append(message).parentNode().parentNode().firstChildElement();
        header.firstChildElement(XMLPacket::SOURCE).setAttribute(XMLPacket::AGENT_ID, str(source));
        header.firstChildElement(XMLPacket::DESTINATION)
            .setAttribute(XMLPacket::AGENT_ID, str(destination));
        w.post(packet);
    };
    send("4294967297", "2");  // 1 when it is cut to 32 bits
    send("2147483648", "2");
    send("one", "2");
    send("1", "4294967298");  // reads as 0
    send("1", "-2147483649");
    w.run(str("1>2147483647:x !"));
    QCOMPARE(w.takeLog(), str("1-0 2-0 3-0 1-0 2-0 3-0 1-2147483647 2-2147483647 3-2147483647"));
}

void tst_XMLRouter::reentrance()
{
    const auto &row = currentRow<Reentrance>();
    for (const bool inReceive : { true, false }) {
        QList<QPointer<XMLPacket>> packets;
        {
            World w;
            RecordingAgent &actor = *w.agents[2];
            const auto reaction = [&](auto) {
                actor.onReceive = nullptr;
                actor.onRemoved = nullptr;
                w.run(str(row.words));
            };
            if (inReceive) {
                actor.onReceive = reaction;
            } else {
                actor.onRemoved = reaction;
            }
            w.run(inReceive ? str("1>2:one 1>3:two 1>2:three") : str("1>99:one 1>3:two 1>2:three"));
            runEvents();
            QCOMPARE(w.takeLog(), str(inReceive ? row.received : row.removed));
            packets = w.packets;
        }
        packets.removeAll(nullptr);
        QCOMPARE(packets.size(),
            row.words == QByteArray("X") ? 2 : 0);  // left by a router that died first
        qDeleteAll(packets);
    }
}

// A dialog that runs its own event loop until the answer to its question is there.
void tst_XMLRouter::dialogWaitsForReply()
{
    World w;
    QEventLoop dialog;
    w.agents[1]->onReceive = [&](XMLPacket *) { w.run(str("1>2:answer")); };
    w.agents[2]->onReceive = [&](XMLPacket *packet) {
        if (messageOf(*packet) == str("answer")) {
            return dialog.quit();
        }
        w.run(str("2>1:question"));
        QTimer::singleShot(5000, &dialog, [&] {
            w.log += str("timeout");
            dialog.quit();
        });
        dialog.exec();
        w.log += str("closed");
    };
    w.run(str("3>2:open 1>3:waiting"));
    runEvents();
    QCOMPARE(w.takeLog(), str("2<open 3<waiting 1<question 2<answer closed"));
}

void tst_XMLRouter::forwarding()
{
    World w;
    w.agents[2]->onReceive = [&w](XMLPacket *packet) {
        w.agents[2]->packets.clear();
        packet->setDestinationAgentID(3);
        w.router->send(packet);
        w.router->send(packet);
    };
    w.run(str("1>2:a 1>3:b"));
    runEvents();
    QCOMPARE(w.takeLog(), str("2<a 3<b 3<a"));
}

// What a dead router leaves is free again; what a living one holds is not.
void tst_XMLRouter::leftBehind()
{
    World w;
    World other;
    w.run(str("1>2:a 1>3:b"));
    other.post(w.packets.first());
    other.router->send();
    QCOMPARE(other.takeLog(), QString());
    w.run(str("X"));
    for (const QPointer<XMLPacket> &packet : w.packets) {
        QVERIFY(packet);
        other.post(packet);
    }
    other.router->send();
    QCOMPARE(other.takeLog(), str("2<a 3<b"));
}

void tst_XMLRouter::longQueue()
{
    World w;
    constexpr int COUNT = 100000;
    int next = 0;
    w.agents[2]->onReceive = [&](XMLPacket *packet) {
        next += messageOf(*packet) == QString::number(next);
        w.agents[2]->packets.clear();
        delete packet;
        w.router->send();  // nested deliveries must not take a stack frame for each packet
    };
    for (int i = 0; i < COUNT; ++i) {
        w.run(QStringLiteral("1>2:%1").arg(i));
    }
    runEvents();
    QCOMPARE(next, COUNT);
}

QTEST_GUILESS_MAIN(tst_XMLRouter)
#include "tst_xmlrouter.moc"

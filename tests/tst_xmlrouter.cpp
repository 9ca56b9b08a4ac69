#include "util.h"
#include "xmlagentbroker.h"
#include "xmlrouter.h"

#include <QMetaMethod>
#include <QTimer>

#include <cstring>

namespace {

class Broker : public XMLAgentBroker
{
public:
    using Supply = std::function<int(XMLRouter *, int)>;
    Broker(QStringList *log, const Supply *supply) : m_log(log), m_supply(supply) {}
    ~Broker() override { *m_log += str("gone"); }
    int supplyAgent(int agentType) override { return (*m_supply)(router, agentType); }

private:
    QStringList *m_log;
    const Supply *m_supply;
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

    // Steps as words: "1>2:a" sends the text a from 1 to 2, others name an agent or none.
    void run(const QString &words)
    {
        const QMap<QString, std::function<void(int)>> steps {
            { str("+"), [&](int) { router->add(agents[++lastID] = new RecordingAgent(7, &log)); } },
            { str("*"), [&](int id) { router->add(agents[id]); } },
            { str("-"), [&](int id) { router->remove(agents[id]); } },
            { str("~"), [&](int id) { delete agents.take(id); } },
            { str("?"), [&](int id) { router->notifyAgentRemovals(id); } },
            { str("s"), [&](int id) { packets.last()->setSourceAgentID(id); } },
            { str("="), [&](int i) { router->send(packets.at(i)); } },
            { str("!"), [&](int) { router->send(); } },
            { str("@"), [&](int) { QTest::qWait(20); } },
            { str("B"), [&](int) { router->setAgentBroker(new Broker(&log, nullptr)); } },
            { str("X"), [&](int) { delete router; } },
            { str("Z"), [&](int) { QTimer::singleShot(10, router, [&] { delete router; }); } },
            { str("W"), [&](int) { QVERIFY(QTest::qWaitFor([&] { return !router; }, 60000)); } },
        };
        for (const QString &word : words.split(QLatin1Char(' '))) {
            const auto step = steps.value(word.left(1));
            if (word.contains(QLatin1Char('>'))) {
                post(word.section(QLatin1Char(':'), 0, 0).split(QLatin1Char('>')),
                    word.section(QLatin1Char(':'), 1));
            } else if (step) {
                step(word.mid(1).toInt());
            }
        }
    }
    // The ids as texts, which may be none of a number.
    void post(const QStringList &ids, const QString &text)
    {
        XMLPacket *packet = makePacket(0, 0, text);
        XMLMessage message;
        QDomNode id = packet->append(message).parentNode().previousSibling().firstChild();
        for (int i = 0; i < 2; ++i, id = id.nextSibling()) {
            id.toElement().setAttribute(XMLPacket::AGENT_ID, ids.at(i));
        }
        packets.append(packet);
        router->send(packet);
    }
    QString takeLog() { return std::exchange(log, {}).join(QLatin1Char(' ')); }

    QStringList log;
    int lastID = 0;
    QMap<int, RecordingAgent *> agents;
    QPointer<XMLRouter> router;
    QList<QPointer<XMLPacket>> packets;  // all that were sent
};

constexpr Case DELIVERIES[] = {
    { "first in, first out", "1>2:a 1>3:b 3>2:c 1>1:d", "2<a 3<b 2<c 1<d" },
    { "the same content twice", "1>2:a 1>2:a", "2<a" },
    { "a, b, a", "1>2:a 1>2:b 1>2:a", "2<a 2<b 2<a" },
    { "other ids make another packet", "1>2:a 1>3:a 3>2:a", "2<a 3<a 2<a" },
    { "unregistered senders", "0>2:a 99>2:b", "" },
    { "the bridge as sender", "-1>2:a", "2<a" },
    { "sender removed before", "-3 3>2:a", "1-3 2-3" },
    { "sender removed after", "1>2:a -1", "2-1 3-1 2<a" },
    { "queued already", "1>2:a =0 1>3:b", "2<a 3<b" },
    { "dropped already", "0>2:a s1 =0", "" },
    { "slot called by hand", "1>2:a ! 1>2:a !", "2<a 2<a" },
    { "unknown destination", "1>99:a 1>2:b", "1-99 2-99 3-99 2<b" },
    { "removed destination", "1>2:a -2 !", "1-2 3-2 1-2 3-2" },
    { "removed twice", "-2 -2", "1-2 3-2 1-2 3-2" },
    { "never added", "-0", "1-0 2-0 3-0" },
    { "added twice", "*1 2>1:a 2>4:b ! -1 2>1:c ?1", "4<a 4<b 2-4 3-4 4-1 2-1 3-1 4<c" },
    { "router deleted", "X", "1--1 2--1 3--1" },
    { "senders beyond int", "4294967297>2:a 2147483648>2:b one>2:c", "" },
    { "destinations beyond int", "1>4294967298:a", "1-0 2-0 3-0" },
    { "the highest id", "1>2147483647:a", "1-2147483647 2-2147483647 3-2147483647" },
};

// What agent 2 does while it is served: in receive(), with two more packets waiting, and in
// agentRemoved(), when a packet was undeliverable, or when agent 3 is being removed.
struct Reentrance
{
    const char *name;
    const char *words;
    const char *received;  // behind "2<a "
    const char *undelivered;  // behind "1-99 2-99 "
    const char *removed;  // behind "1-3 2-3 "
};
constexpr Reentrance REENTRANCE[] = {
    { "sends", "2>1:x", "3<b 2<c 1<x", "3-99 3<b 2<c 1<x", "1<x" },
    { "adds", "+ 2>4:x", "3<b 2<c 4<x", "3-99 3<b 2<c 4<x", "4<x" },
    { "adds itself", "*2", "3<b 4<c", "3-99 3<b 4<c", "" },
    { "removes 3", "-3", "1-3 2-3 1-3 2-3 2<c", "1-3 2-3 1-3 2-3 2<c", "1-3 2-3" },
    { "removes itself", "-2", "1-2 3-2 3<b 1-2 3-2", "1-2 3-2 3-99 3<b 1-2 3-2", "1-2" },
    { "deletes 1", "-1 ~1", "2-1 3-1 3<b 2<c", "2-1 3-1 3-99 3<b 2<c", "2-1" },
    { "deletes itself", "-2 ~2", "1-2 3-2 3<b 1-2 3-2", "1-2 3-2 3-99 3<b 1-2 3-2", "1-2" },
    { "deletes all", "-1 ~1 -3 ~3 -2 ~2", "2-1 3-1 2-3", "2-1 3-1 2-3", "2-1 2-3" },
    { "calls the slot", "!", "3<b 2<c", "3<b 2<c 3-99", "" },
    { "sends, runs a loop", "2>1:x @", "3<b 2<c 1<x", "3<b 2<c 1<x 3-99", "1<x" },
    { "reports a removal", "?8", "1-8 2-8 3-8 3<b 2<c", "1-8 2-8 3-8 3-99 3<b 2<c", "1-8 2-8" },
    { "replaces the broker", "B B", "gone 3<b 2<c", "gone 3-99 3<b 2<c", "gone" },
    { "deletes the router", "X", "1--1 2--1 3--1", "1--1 2--1 3--1", "1--1 2--1" },
    { "deletes it in a loop", "Z W", "3<b 2<c 1--1 2--1 3--1", "3<b 2<c 1--1 2--1 3--1",
        "1--1 2--1" },
};

}  // namespace

class tst_XMLRouter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void registry();
    void broker();
    void delivery_data() { addRows(DELIVERIES); }
    void delivery();
    void reentrance_data() { addRows(REENTRANCE); }
    void reentrance();
    void dialogWaitsForReply();
    void leftBehind();
    void longQueue();

private:
    static void check(const char *words, const char *reaction, const QString &log);
};

void tst_XMLRouter::registry()
{
    World w;
    XMLRouter &router = *w.router;
    w.agents[9] = new RecordingAgent(0, &w.log);
    w.run(str("-3 *3 *1 *9"));  // ids are not used again; two lead to agent 1, whose own is 5
    router.add(nullptr);
    router.remove(nullptr);
    QVERIFY(router.contains(-1) && router.contains(1) && router.contains(6));
    QVERIFY(!router.contains(0) && !router.contains(3) && !router.contains(7));
    QVERIFY(router.getAgentType(1) == 5 && router.getAgentType(2) == 7);
    QVERIFY(router.getAgentType(5) == 7 && router.getAgentType(-1) == 0);
    QCOMPARE(router.findAgentsOfType(7), (std::list<int> { 5, 2, 4, 5 }));
    QCOMPARE(router.findAgentsOfType(0), (std::list<int> { -1, 6 }));
    QVERIFY(router.findAgentsOfType(5).empty() && router.findAgentOfType(7) == 5);
    QVERIFY(router.findAgentOfType(8) == 0 && router.supplyAgentOfType(8) == 0);
    QVERIFY(router.getNextAgentID() == 7 && router.getXMLCommServerID() == -1);
    QCOMPARE(router.objectName(), str("hub"));
    const QMetaObject &meta = XMLRouter::staticMetaObject;
    QCOMPARE(meta.methodCount() - meta.methodOffset(), 1);
    QCOMPARE(meta.method(meta.methodOffset()).methodSignature(), QByteArray("send()"));
}

// A broker that supplies, asks back, returns rubbish, is replaced while it does, or deletes the
// router; and one that meddles when it dies.
void tst_XMLRouter::broker()
{
    World w;
    XMLRouter &router = *w.router;
    int calls = 0;
    Broker::Supply supply = [&](XMLRouter *own, int type) {
        ++calls;
        return own->supplyAgentOfType(type) + own->supplyAgentOfType(type - 1);
    };
    auto first = new Broker(&w.log, &supply);
    router.setAgentBroker(first);
    QCOMPARE(router.supplyAgentOfType(500), 0);
    QVERIFY2(calls > 1 && calls <= 1000, QByteArray::number(calls).constData());
    w.agents[9] = new RecordingAgent(9, &w.log);
    supply = [&](XMLRouter *own, int) {
        own->add(w.agents[9]);
        return w.agents[9]->getAgentID();
    };
    QCOMPARE(router.supplyAgentOfType(7), 1);
    QCOMPARE(router.supplyAgentOfType(9), 4);
    QCOMPARE(router.supplyAgentOfType(9), 4);  // there is one now
    router.setAgentBroker(first);  // the current one again: none is left
    QCOMPARE(router.supplyAgentOfType(10), 0);
    w.run(str("-9 B"));
    router.setAgentBroker(new Broker(&w.log, &supply));
    supply = [&](XMLRouter *own, int type) {
        own->setAgentBroker(new Broker(&w.log, &supply));
        return -type;
    };
    QCOMPARE(router.supplyAgentOfType(12345), -12345);
    struct Leaver : XMLAgentBroker
    {
        ~Leaver() override { router->setAgentBroker(nullptr); }
        int supplyAgent(int) override { return 0; }
    };
    XMLRouter(nullptr, nullptr, nullptr).setAgentBroker(new Leaver);
    supply = [&](XMLRouter *own, int) {
        delete own;
        return 8;
    };
    QCOMPARE(router.supplyAgentOfType(500), 8);
    QCOMPARE(w.takeLog(), str("gone 1-4 2-4 3-4 gone gone 1--1 2--1 3--1 gone"));
}

// Sends; agent 2 reacts the first time that it receives or hears of a removal.
void tst_XMLRouter::check(const char *words, const char *reaction, const QString &log)
{
    QList<QPointer<XMLPacket>> packets;
    {
        World w;
        RecordingAgent &actor = *w.agents[2];
        const auto react = [&](auto) {
            actor.onReceive = nullptr;
            actor.onRemoved = nullptr;
            w.run(str(reaction));
        };
        actor.onReceive = react;
        actor.onRemoved = react;
        w.run(str(words));
        // All wait until control returns to the event loop.
        QVERIFY(strchr(words, '!') || !w.packets.contains(nullptr));
        runEvents();
        QCOMPARE(w.takeLog(), log);
        packets = w.packets;
    }
    packets.removeAll(nullptr);
    // A router that dies first leaves what waits.
    QCOMPARE(packets.size(), reaction == QByteArray("X") && strchr(words, '>') ? 2 : 0);
    qDeleteAll(packets);
}

void tst_XMLRouter::delivery()
{
    check(currentRow<Case>().given, "", str(currentRow<Case>().expected));
}

void tst_XMLRouter::reentrance()
{
    const auto &row = currentRow<Reentrance>();
    check("1>2:a 1>3:b 1>2:c", row.words, str("2<a ") + str(row.received));
    check("1>99:a 1>3:b 1>2:c", row.words, str("1-99 2-99 ") + str(row.undelivered));
    check("-3", row.words, (str("1-3 2-3 ") + str(row.removed)).trimmed());
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
        QTimer::singleShot(5000, &dialog, &QEventLoop::quit);
        dialog.exec();
        w.log += str("closed");
    };
    w.run(str("3>2:open 1>3:waiting"));
    runEvents();
    QCOMPARE(w.takeLog(), str("2<open 3<waiting 1<question 2<answer closed"));
}

// What a dead router leaves is free again; what a living one holds is not. Who has received a
// packet may send it on.
void tst_XMLRouter::leftBehind()
{
    World w;
    World other;
    w.run(str("1>2:a 1>3:b"));
    other.packets = w.packets;
    other.run(str("=0 !"));
    QCOMPARE(other.takeLog(), QString());
    w.run(str("X"));
    other.agents[2]->onReceive = [&other](XMLPacket *packet) {
        other.agents[2]->packets.clear();
        packet->setDestinationAgentID(3);
        other.run(str("=0 =0"));
    };
    other.run(str("=0 =1 !"));
    QCOMPARE(other.takeLog(), str("2<a 3<b 3<a"));
}

void tst_XMLRouter::longQueue()
{
    World w;
    constexpr int COUNT = 50000;
    int next = 0;
    w.agents[2]->onReceive = [&](XMLPacket *packet) {
        next += messageOf(*packet) == QString::number(next);
        w.agents[2]->packets.clear();
        delete packet;
        w.router->send();  // nested deliveries must not take a stack frame for each packet
    };
    for (int i = 0; i < COUNT; ++i) {
        w.router->send(makePacket(1, 2, QString::number(i)));
    }
    runEvents();
    QCOMPARE(next, COUNT);
}

QTEST_GUILESS_MAIN(tst_XMLRouter)
#include "tst_xmlrouter.moc"

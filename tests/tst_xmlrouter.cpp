#include "util.h"
#include "xmlagentbroker.h"
#include "xmlrouter.h"

namespace {

constexpr int AGENT_TYPE = 7;  // unless a test gives another
constexpr int OTHER_TYPE = 9;
constexpr int NO_TYPE = 5;  // what the router returns for an id that no agent has
constexpr int NOBODY = 99;  // such an id

// A router with agents 1, 2 and 3, and a log of what happens. It has "2 got a" when agent 2
// receives the message a, and "2 lost 3" when agent 2 is notified that agent 3 was removed. -1 is
// the bridge.
struct Hub
{
    Hub() : router(new XMLRouter(nullptr, nullptr, "hub"))
    {
        for (int id = 1; id <= 3; ++id) {
            add();
        }
    }
    ~Hub()
    {
        delete router;
        qDeleteAll(agents);
        for (const QPointer<XMLPacket> &packet : packets) {
            delete packet;  // left in a queue
        }
    }

    RecordingAgent *add(int type = AGENT_TYPE)
    {
        auto agent = new RecordingAgent(type, &log);
        router->add(agent);
        return agents[agent->getAgentID()] = agent;
    }
    RecordingAgent *agent(int id) const { return agents.value(id); }
    void remove(int id) { router->remove(agent(id)); }
    void removeAndDelete(int id)
    {
        remove(id);
        delete agents.take(id);
    }
    XMLPacket *send(int from, int to, const char *text)
    {
        packets.append(makePacket(from, to, str(text)));
        router->send(packets.last());
        return packets.last();
    }
    // What happened since the last call, with what the event loop delivers now.
    QString deliver()
    {
        runEvents();
        return takeLog();
    }
    QString takeLog() { return std::exchange(log, {}).join(str(", ")); }

    QPointer<XMLRouter> router;
    QMap<int, RecordingAgent *> agents;
    QList<QPointer<XMLPacket>> packets;
    QStringList log;
};

// A broker that supplies agents by a function of the test.
class Broker : public XMLAgentBroker
{
public:
    using Supply = std::function<int(XMLRouter &, int)>;
    explicit Broker(Supply supply) : m_supply(std::move(supply)) {}
    int supplyAgent(int agentType) override
    {
        const Supply supply = m_supply;  // a copy, as it may delete this broker
        return supply(*router, agentType);
    }

private:
    const Supply m_supply;
};

// An observer that logs what it is told. At the first call it does, after that, what a test says.
class Watcher : public XMLRouterObserver
{
public:
    explicit Watcher(Hub &hub) : m_hub(hub) { hub.router->setObserver(this); }
    ~Watcher() override
    {
        if (m_hub.router) {
            m_hub.router->setObserver(nullptr);
        }
    }

    void packetSent(const XMLPacket &packet) override { tell("sent", packet); }
    void packetDropped(const XMLPacket &packet, DROP reason) override
    {
        const char *reasons[] = { "of a stranger", "like the last", "again" };
        tell((QByteArray("dropped ") + reasons[reason]).constData(), packet);
    }
    void packetDelivered(const XMLPacket &packet, const XMLAgent &agent) override
    {
        tell((QByteArray("to ") + QByteArray::number(agent.getAgentID())).constData(), packet);
    }
    void packetLost(const XMLPacket &packet) override { tell("lost", packet); }
    void agentAdded(int id, int type) override { tell("added", id, type); }
    void agentRemoved(int id, int type) override { tell("removed", id, type); }
    void agentSupplied(int id, int type) override { tell("supplied", id, type); }

    std::function<void()> reactOnce;

private:
    void tell(const char *what, const XMLPacket &packet)
    {
        tell(str("%1: %2").arg(str(what), messageOf(packet)));
    }
    void tell(const char *what, int id, int type)
    {
        tell(str("%1 %2 of type %3").arg(str(what)).arg(id).arg(type));
    }
    void tell(const QString &line)
    {
        m_hub.log += line;
        if (const auto react = std::exchange(reactOnce, nullptr)) {
            react();
        }
    }

    Hub &m_hub;
};

// What agent 2 does while it gets the packet a, and what happens from then on.
struct Reaction
{
    const char *name;
    void (*react)(Hub &hub);
    const char *log;
};
const Reaction REACTIONS[] = {
    { "sends to one it adds", [](Hub &hub) { hub.send(2, hub.add()->getAgentID(), "x"); },
        "3 got b, 2 got c, 4 got x" },
    { "removes another", [](Hub &hub) { hub.remove(3); },
        "1 lost 3, 2 lost 3, 1 lost 3, 2 lost 3, 2 got c" },
    { "deletes itself", [](Hub &hub) { hub.removeAndDelete(2); },
        "1 lost 2, 3 lost 2, 3 got b, 1 lost 2, 3 lost 2" },
    { "deletes the router", [](Hub &hub) { delete hub.router; },
        "1 lost -1, 2 lost -1, 3 lost -1" },
};

// What an observer does when it is told that agent 2 receives the packet a, and what happens then.
const Reaction OBSERVER_REACTIONS[] = {
    { "removes itself", [](Hub &hub) { hub.router->setObserver(nullptr); },
        "2 got a, 3 got b, 1 lost 99, 2 lost 99, 3 lost 99" },
    { "removes the receiver", [](Hub &hub) { hub.removeAndDelete(2); },
        "removed 2 of type 7, 1 lost 2, 3 lost 2, lost: a, 1 lost 2, 3 lost 2, "
        "to 3: b, 3 got b, lost: c, 1 lost 99, 3 lost 99" },
    { "adds an agent", [](Hub &hub) { hub.add(); },
        "added 4 of type 7, 2 got a, to 3: b, 3 got b, "
        "lost: c, 1 lost 99, 2 lost 99, 3 lost 99, 4 lost 99" },
    { "delivers by hand", [](Hub &hub) { hub.router->send(); },
        "to 3: b, 3 got b, lost: c, 1 lost 99, 2 lost 99, 3 lost 99, 2 got a" },
    { "makes an agent delete the router",
        [](Hub &hub) {
            hub.agent(1)->onRemoved = [&hub](int id) {
                if (id == 3) {
                    delete hub.router;
                }
            };
            hub.remove(3);
        },
        "removed 3 of type 7, 1 lost 3, removed -1 of type 0, 1 lost -1, 2 lost -1" },
};

}  // namespace

class tst_XMLRouter : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void idsCountUpAndAreNotUsedAgain();
    void agentsAreFoundByType();
    void anAgentAddedTwiceIsReachableUnderBothIds();
    void theNameIsLatin1();
    void sendIsTheOnlySlot();

    void packetsArriveInTheOrderOfSending();
    void aPacketIsTakenOverOnce();
    void removalsAreReported();
    void queuedPacketsSurviveTheRouter();

    void aReceiverMayDoAnything_data() { addRows(REACTIONS); }
    void aReceiverMayDoAnything();
    void theRouterMayBeDeletedWhileARemovalIsReported();
    void aDialogWaitsForItsReply();
    void aDialogReceivesWhatWasQueuedBeforeIt();
    void aLongQueueTakesNoStack();

    void anObserverIsToldOfPackets();
    void anObserverIsToldOfAgents();
    void anObserverMayDoAlmostAnything_data() { addRows(OBSERVER_REACTIONS); }
    void anObserverMayDoAlmostAnything();

    void aBrokerSuppliesWhatIsMissing();
    void aBrokerThatAsksForTheSameTypeGetsNone();
    void brokersAreAskedWithinOneAnotherUpTo64Times();
    void aBrokerIsReplacedByTheNextOne();
};

void tst_XMLRouter::idsCountUpAndAreNotUsedAgain()
{
    Hub hub;
    XMLRouter &router = *hub.router;
    hub.remove(3);
    QCOMPARE(hub.add()->getAgentID(), 4);
    QCOMPARE(router.getNextAgentID(), 5);
    QCOMPARE(hub.add()->getAgentID(), 6);
    router.add(nullptr);
    router.remove(nullptr);
    QCOMPARE(router.getXMLCommServerID(), -1);
    QList<int> known;
    for (int id = -2; id < 9; ++id) {
        known += router.contains(id) ? QList<int> { id } : QList<int>();
    }
    QCOMPARE(known, QList<int>({ -1, 1, 2, 4, 6 }));
}

void tst_XMLRouter::agentsAreFoundByType()
{
    Hub hub;
    const XMLRouter &router = *hub.router;
    hub.add(0);
    QCOMPARE(router.findAgentsOfType(AGENT_TYPE), (std::list<int> { 1, 2, 3 }));
    QCOMPARE(router.findAgentsOfType(0), (std::list<int> { -1, 4 }));  // the bridge is one
    QCOMPARE(router.findAgentOfType(AGENT_TYPE), 1);
    QCOMPARE(router.findAgentOfType(8), 0);
    QCOMPARE(router.getAgentType(2), AGENT_TYPE);
    QCOMPARE(router.getAgentType(NOBODY), NO_TYPE);
}

void tst_XMLRouter::anAgentAddedTwiceIsReachableUnderBothIds()
{
    Hub hub;
    XMLRouter &router = *hub.router;
    router.add(hub.agent(1));  // now 4, too
    hub.send(2, 1, "first");
    hub.send(2, 4, "second");
    QCOMPARE(hub.deliver(), str("4 got first, 4 got second"));
    QCOMPARE(router.findAgentsOfType(AGENT_TYPE), (std::list<int> { 4, 2, 3, 4 }));
    QCOMPARE(router.getAgentType(1), NO_TYPE);  // the agent reports the newer id alone
    hub.remove(1);
    hub.send(2, 1, "third");
    QCOMPARE(hub.deliver(), str("2 lost 4, 3 lost 4, 4 got third"));
}

void tst_XMLRouter::theNameIsLatin1()
{
    QCOMPARE(XMLRouter(nullptr, nullptr, "caf\xe9").objectName(), str("café"));
}

void tst_XMLRouter::sendIsTheOnlySlot()
{
    QCOMPARE(methodsOf(XMLRouter::staticMetaObject), QStringList(str("slot send()")));
}

void tst_XMLRouter::packetsArriveInTheOrderOfSending()
{
    Hub hub;
    hub.send(1, 2, "a");
    hub.send(1, 3, "b");
    hub.send(1, 3, "b");  // the same again
    const QPointer<XMLPacket> strange = hub.send(NOBODY, 2, "from a stranger");
    const QPointer<XMLPacket> lost = hub.send(1, NOBODY, "to nobody");
    hub.send(3, 2, "c");
    QCOMPARE(hub.takeLog(), QString());  // not before control is back at the event loop
    QVERIFY(strange);
    QCOMPARE(hub.deliver(), str("2 got a, 3 got b, 1 lost 99, 2 lost 99, 3 lost 99, 2 got c"));
    QVERIFY(!strange);
    QVERIFY(!lost);
}

void tst_XMLRouter::aPacketIsTakenOverOnce()
{
    Hub hub;
    Hub other;
    XMLPacket *queued = hub.send(1, 2, "a");
    XMLPacket *dropped = hub.send(0, 2, "dropped");
    dropped->setSourceAgentID(1);
    for (XMLPacket *packet : { queued, dropped }) {
        hub.router->send(packet);
        other.router->send(packet);
    }
    hub.send(1, 3, "b");
    QCOMPARE(hub.deliver(), str("2 got a, 3 got b"));
    QCOMPARE(other.deliver(), QString());
    hub.agent(2)->packets.removeOne(queued);
    queued->setDestinationAgentID(3);
    hub.router->send(queued);  // who has received a packet may send it on
    QCOMPARE(hub.deliver(), str("3 got a"));
}

void tst_XMLRouter::removalsAreReported()
{
    Hub hub;
    hub.agent(1)->onRemoved = [&](int id) {
        QVERIFY(!hub.router->contains(id));
        hub.add();  // too late to be notified
    };
    hub.remove(2);
    QCOMPARE(hub.takeLog(), str("1 lost 2, 3 lost 2"));
    hub.agent(1)->onRemoved = nullptr;
    hub.router->notifyAgentRemovals(3);  // not to itself
    hub.agent(3)->wantRemovalNotifications = false;
    hub.router->notifyAgentRemovals(NOBODY);
    QCOMPARE(hub.takeLog(), str("1 lost 3, 4 lost 3, 1 lost 99, 4 lost 99"));
    delete hub.router;
    QCOMPARE(hub.takeLog(), str("1 lost -1, 4 lost -1"));
}

void tst_XMLRouter::queuedPacketsSurviveTheRouter()
{
    Hub hub;
    Hub other;
    XMLPacket *packet = hub.send(1, 2, "a");
    delete hub.router;
    other.router->send(packet);
    QCOMPARE(other.deliver(), str("2 got a"));
}

// While agent 2 receives the first packet, two more are queued.
void tst_XMLRouter::aReceiverMayDoAnything()
{
    const auto &row = currentRow<Reaction>();
    Hub hub;
    hub.agent(2)->onReceive = [&](XMLPacket *) {
        hub.agent(2)->onReceive = nullptr;
        row.react(hub);
    };
    hub.send(1, 2, "a");
    hub.send(1, 3, "b");
    hub.send(1, 2, "c");
    QCOMPARE(hub.deliver(), str("2 got a, ") + str(row.log));
}

void tst_XMLRouter::theRouterMayBeDeletedWhileARemovalIsReported()
{
    Hub hub;
    hub.agent(2)->onRemoved = [&](int id) {
        if (id == NOBODY) {
            delete hub.router;
        }
    };
    hub.send(1, NOBODY, "a");
    QCOMPARE(hub.deliver(), str("1 lost 99, 2 lost 99, 1 lost -1, 2 lost -1, 3 lost -1"));
}

// A dialog runs its own event loop until it gets the answer to its question.
void tst_XMLRouter::aDialogWaitsForItsReply()
{
    Hub hub;
    hub.agent(1)->onReceive = [&](XMLPacket *) { hub.send(1, 2, "answer"); };
    hub.agent(2)->onReceive = [&](XMLPacket *packet) {
        if (messageOf(*packet) == str("open")) {
            hub.send(2, 1, "question");
            QVERIFY(QTest::qWaitFor([&] { return hub.log.contains(str("2 got answer")); }));
            hub.log += str("closed");
        }
    };
    hub.send(3, 2, "open");
    hub.send(1, 3, "waiting");
    QCOMPARE(hub.deliver(), str("2 got open, 3 got waiting, 1 got question, 2 got answer, closed"));
}

// It waits without sending anything itself.
void tst_XMLRouter::aDialogReceivesWhatWasQueuedBeforeIt()
{
    Hub hub;
    hub.agent(2)->onReceive = [&](XMLPacket *) {
        QVERIFY(QTest::qWaitFor([&] { return hub.log.contains(str("3 got close")); }));
    };
    hub.send(1, 2, "open");
    hub.send(1, 3, "close");
    QCOMPARE(hub.deliver(), str("2 got open, 3 got close"));
}

void tst_XMLRouter::aLongQueueTakesNoStack()
{
    Hub hub;
    hub.agent(2)->onReceive = [&](XMLPacket *) { hub.router->send(); };
    for (int i = 0; i < 20000; ++i) {
        hub.router->send(makePacket(1, 2, QString::number(i)));
    }
    runEvents();
    QCOMPARE(hub.log.size(), 20000);
    QCOMPARE(hub.log.last(), str("2 got 19999"));
}

void tst_XMLRouter::anObserverIsToldOfPackets()
{
    Hub hub;
    Watcher watcher(hub);
    XMLPacket *first = hub.send(1, 2, "a");
    hub.router->send(first);
    hub.send(1, 2, "a");
    hub.send(NOBODY, 2, "b");
    hub.send(1, NOBODY, "c");
    QCOMPARE(hub.takeLog(),
        str("sent: a, dropped again: a, dropped like the last: a, dropped of a stranger: b, "
            "sent: c"));
    QCOMPARE(hub.deliver(), str("to 2: a, 2 got a, lost: c, 1 lost 99, 2 lost 99, 3 lost 99"));
    hub.router->setObserver(nullptr);
    hub.send(1, 2, "d");
    QCOMPARE(hub.deliver(), str("2 got d"));
}

void tst_XMLRouter::anObserverIsToldOfAgents()
{
    Hub hub;
    Watcher watcher(hub);
    QCOMPARE(hub.router->observer(), &watcher);
    hub.router->setAgentBroker(
        new Broker([&hub](XMLRouter &, int type) { return hub.add(type)->getAgentID(); }));
    hub.router->supplyAgentOfType(OTHER_TYPE);
    hub.router->supplyAgentOfType(OTHER_TYPE);  // there is one now
    hub.remove(3);
    hub.remove(3);  // is gone already
    QCOMPARE(hub.takeLog(),
        str("added 4 of type 9, supplied 4 of type 9, "
            "removed 3 of type 7, 1 lost 3, 2 lost 3, 4 lost 3, 1 lost 3, 2 lost 3, 4 lost 3"));
}

void tst_XMLRouter::anObserverMayDoAlmostAnything()
{
    const auto &row = currentRow<Reaction>();
    Hub hub;
    hub.send(1, 2, "a");
    hub.send(1, 3, "b");
    hub.send(1, NOBODY, "c");
    Watcher watcher(hub);
    watcher.reactOnce = [&] { row.react(hub); };
    QCOMPARE(hub.deliver(), str("to 2: a, ") + str(row.log));
}

void tst_XMLRouter::aBrokerSuppliesWhatIsMissing()
{
    Hub hub;
    XMLRouter &router = *hub.router;
    QCOMPARE(router.supplyAgentOfType(OTHER_TYPE), 0);
    router.setAgentBroker(
        new Broker([&hub](XMLRouter &, int type) { return hub.add(type)->getAgentID(); }));
    QCOMPARE(router.supplyAgentOfType(AGENT_TYPE), 1);
    QCOMPARE(router.supplyAgentOfType(OTHER_TYPE), 4);
    QCOMPARE(router.supplyAgentOfType(OTHER_TYPE), 4);  // there is one now
    router.setAgentBroker(nullptr);
    QCOMPARE(router.supplyAgentOfType(10), 0);
}

void tst_XMLRouter::aBrokerThatAsksForTheSameTypeGetsNone()
{
    Hub hub;
    int calls = 0;
    hub.router->setAgentBroker(new Broker([&calls](XMLRouter &router, int type) {
        ++calls;
        return router.supplyAgentOfType(type);
    }));
    QCOMPARE(hub.router->supplyAgentOfType(OTHER_TYPE), 0);
    QCOMPARE(calls, 1);
}

// Before it supplies an agent, this broker needs one of the next lower type.
void tst_XMLRouter::brokersAreAskedWithinOneAnotherUpTo64Times()
{
    Hub hub;
    int calls = 0;
    hub.router->setAgentBroker(new Broker([&calls](XMLRouter &router, int type) {
        ++calls;
        return router.supplyAgentOfType(type - 1);
    }));
    QCOMPARE(hub.router->supplyAgentOfType(500), 0);
    QCOMPARE(calls, 64);
}

void tst_XMLRouter::aBrokerIsReplacedByTheNextOne()
{
    Hub hub;
    XMLRouter &router = *hub.router;
    Broker *const next = new Broker([](XMLRouter &, int) { return 55; });
    router.setAgentBroker(new Broker([next](XMLRouter &own, int type) {
        own.setAgentBroker(next);  // while it is asked
        return type + 1;
    }));
    QCOMPARE(router.supplyAgentOfType(500), 501);
    QCOMPARE(router.supplyAgentOfType(500), 55);
    router.setAgentBroker(next);  // deletes it
    QCOMPARE(router.supplyAgentOfType(500), 0);
}

QTEST_GUILESS_MAIN(tst_XMLRouter)
#include "tst_xmlrouter.moc"

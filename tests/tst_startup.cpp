#include "util.h"
#include "xmlrouter.h"

#include <QTimer>

#include <memory>

// Routers that live before, between and after application objects.
class tst_Startup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void sentBeforeApplication();
    void applicationAnew();

private:
    // Runs a new application's event loop for a while; nothing may call processEvents() by hand.
    static void runApplication()
    {
        int argc = 1;
        char name[] = "tst_startup";
        char *argv[] = { name, nullptr };
        QCoreApplication application(argc, argv);
        QTimer::singleShot(30, &application, &QCoreApplication::quit);
        application.exec();
    }
};

void tst_Startup::sentBeforeApplication()
{
    QVERIFY(!QCoreApplication::instance());
    QStringList log;
    RecordingAgent agent(1, &log);
    XMLRouter router(nullptr, nullptr, "early");
    router.add(&agent);
    agent.onReceive = [&](XMLPacket *packet) {
        if (messageOf(*packet) == str("b")) {
            router.send(makePacket(1, 1, str("later")));
        }
    };
    const QPointer<XMLPacket> dropped = makePacket(0, 1, str("dropped"));
    router.send(dropped);
    for (const char *text : { "a", "b", "b", "c" }) {
        router.send(makePacket(1, 1, str(text)));
    }
    QVERIFY(log.isEmpty());
    runApplication();
    QCOMPARE(log.join(QLatin1Char(' ')), str("1<a 1<b 1<c 1<later"));
    QVERIFY(!dropped);
    router.send(makePacket(1, 1, str("d")));
    router.send();  // by hand, without any event loop
    QCOMPARE(log.last(), str("1<d"));
}

// A timer that ended with the application that it was started under still looks active.
void tst_Startup::applicationAnew()
{
    for (const bool sentBetween : { true, false }) {
        QStringList log;
        RecordingAgent agent(1, &log);
        std::unique_ptr<XMLRouter> router;
        int argc = 0;
        {
            QCoreApplication first(argc, nullptr);
            router.reset(new XMLRouter(nullptr, nullptr, "lasting"));
            router->add(&agent);
            router->send(makePacket(1, 1, str("a")));
        }
        if (sentBetween) {
            router->send(makePacket(1, 1, str("b")));
        }
        QVERIFY(log.isEmpty());
        QCoreApplication second(argc, nullptr);
        if (!sentBetween) {
            router->send(makePacket(1, 1, str("b")));
        }
        QTimer::singleShot(30, &second, &QCoreApplication::quit);
        second.exec();
        QCOMPARE(log.join(QLatin1Char(' ')), str("1<a 1<b"));
    }
}

int main(int argc, char **argv)
{
    tst_Startup test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_startup.moc"

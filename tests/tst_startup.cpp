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
    // An application's event loop; nothing may call processEvents() by hand.
    static void run(QCoreApplication &application)
    {
        QTimer::singleShot(30, &application, &QCoreApplication::quit);
        application.exec();
    }
    int m_argc = 0;
};

void tst_Startup::sentBeforeApplication()
{
    QStringList log;
    RecordingAgent agent(1, &log);
    XMLRouter router(nullptr, nullptr, "early");
    router.add(&agent);
    const QPointer<XMLPacket> dropped = makePacket(0, 1, str("dropped"));
    router.send(dropped);
    for (const char *text : { "a", "b", "b", "c" }) {
        router.send(makePacket(1, 1, str(text)));
    }
    QVERIFY(log.isEmpty());
    QVERIFY(!QCoreApplication::instance());
    QCoreApplication application(m_argc, nullptr);
    run(application);
    QCOMPARE(log.join(str(", ")), str("1 got a, 1 got b, 1 got c"));
    QVERIFY(!dropped);
}

// A timer that ended with the application that it was started under still looks active.
void tst_Startup::applicationAnew()
{
    for (const bool sentBetween : { true, false }) {
        QStringList log;
        RecordingAgent agent(1, &log);
        XMLRouter router(nullptr, nullptr, "lasting");
        router.add(&agent);
        router.send(makePacket(1, 1, str("early")));
        auto application = std::make_unique<QCoreApplication>(m_argc, nullptr);
        router.send(makePacket(1, 1, str("a")));
        application.reset();  // without a loop, and with what waits for one
        application.reset(sentBetween ? nullptr : new QCoreApplication(m_argc, nullptr));
        router.send(makePacket(1, 1, str("b")));
        QVERIFY(log.isEmpty());
        if (sentBetween) {
            application.reset(new QCoreApplication(m_argc, nullptr));
        }
        run(*application);
        QCOMPARE(log.join(str(", ")), str("1 got early, 1 got a, 1 got b"));
    }
}

int main(int argc, char **argv)
{
    tst_Startup test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_startup.moc"

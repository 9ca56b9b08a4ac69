#include "util.h"
#include "xmlrouter.h"

#include <QTimer>

#include <memory>

// Routers that live before, between and after application objects.
class tst_Startup : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { m_router.add(&m_agent); }
    void whatIsSentBeforeAnApplicationWaitsForIt();
    void whatWaitsAsAnApplicationEndsIsForTheNext();

private:
    // An application's event loop; nothing may call processEvents() by hand.
    static void run(QCoreApplication &application)
    {
        QTimer::singleShot(30, &application, &QCoreApplication::quit);
        application.exec();
    }

    int m_argc = 0;
    QStringList m_log;
    RecordingAgent m_agent { 1, &m_log };
    XMLRouter m_router { nullptr, nullptr, "lasting" };
};

void tst_Startup::whatIsSentBeforeAnApplicationWaitsForIt()
{
    const QPointer<XMLPacket> dropped = makePacket(0, 1, str("dropped"));
    m_router.send(dropped);
    for (const char *text : { "a", "b", "b", "c" }) {
        m_router.send(makePacket(1, 1, str(text)));
    }
    QCoreApplication application(m_argc, nullptr);
    run(application);
    QCOMPARE(m_log, QStringList({ str("1 got a"), str("1 got b"), str("1 got c") }));
    QVERIFY(!dropped);
}

// A timer that ended with the application that it was started under still looks active.
void tst_Startup::whatWaitsAsAnApplicationEndsIsForTheNext()
{
    for (const bool sentBetween : { true, false }) {
        m_log.clear();
        auto application = std::make_unique<QCoreApplication>(m_argc, nullptr);
        m_router.send(makePacket(1, 1, str("a")));
        application.reset();  // without a loop
        application.reset(sentBetween ? nullptr : new QCoreApplication(m_argc, nullptr));
        m_router.send(makePacket(1, 1, str("b")));
        if (sentBetween) {
            application.reset(new QCoreApplication(m_argc, nullptr));
        }
        run(*application);
        QCOMPARE(m_log, QStringList({ str("1 got a"), str("1 got b") }));
    }
}

int main(int argc, char **argv)
{
    tst_Startup test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_startup.moc"

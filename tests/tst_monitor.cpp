#include "contrast.h"
#include "packetfile.h"
#include "packetlog.h"
#include "packetmodel.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlmonitor.h"
#include "xmlrouter.h"
#include "xmlview.h"

#include <QtWidgets>

#include <atomic>
#include <optional>
#include <thread>

using namespace TQXmlInternal;

namespace {

// Replies to each action with a message.
class Answerer : public XMLAgent
{
public:
    Answerer() : XMLAgent(9) {}
    void receive(XMLPacket *packet) override
    {
        const std::unique_ptr<XMLPacket> received(packet);
        if (packet->hasNodesOfType(XMLObject::XMLOBJECT_ACTION)) {
            XMLPacket *reply = getXMLPacket(packet->getSourceAgentID());
            XMLMessage message(str("ready"));
            reply->append(message);
            router->send(reply);
        }
    }
};

// A router with the agents 1, which asks, and 2, which answers.
struct Site
{
    Site()
    {
        for (Answerer &agent : agents) {
            router.add(&agent);
        }
    }
    ~Site()
    {
        router.setObserver(nullptr);
        router.send();  // a router leaves what waits in its queue
        for (Answerer &agent : agents) {
            router.remove(&agent);
        }
    }
    void ask(const char *name, int destination = 2)
    {
        XMLAction action(str(name), 1, 1);
        XMLPacket *packet = agents[0].getXMLPacket(destination);
        packet->append(action);
        router.send(packet);
    }
    void say(int source, int destination, const char *text)
    {
        router.send(makePacket(source, destination, str(text)));
    }

    XMLRouter router { nullptr, nullptr, "site" };
    Answerer agents[2];
};

// The model's rows, without times.
QStringList rowsOf(const QAbstractItemModel &model)
{
    QStringList rows;
    for (int y = 0; y < model.rowCount(); ++y) {
        QStringList row;
        for (int x = PacketModel::From; x < PacketModel::ColumnCount; ++x) {
            row += model.index(y, x).data().toString();
        }
        static const QRegularExpression time(str("[0-9.,]+ ms"));
        rows += row.join(str(" | ")).replace(time, str("a while"));
    }
    return rows;
}

}  // namespace

class tst_Monitor : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requestAndReplyArePaired();
    void aLateReplyIsPairedWithTheOldestAction();
    void whatIsNotDeliveredSaysWhy();
    void agentsComeAndGo();
    void theBridgeHasAName();
    void memoryIsBounded();
    void aLongTextIsCut();
    void aFileHoldsEverything();
    void aFileIsValid();
    void aFileThatIsNoneIsRefused();

    void keysOperateEverything();
    void keysSaveAndOpen();
    void aRouterOfAnotherThreadIsShown();
    void anObserverOfAnotherThreadMayOutliveTheMonitor();
    void aStuckWindowCostsBoundedMemory();
    void filtersNarrowTheList();
    void whatWasMissedIsSaid();
    void everythingHasAName();
    void anElementIsFoldedIntoItsFirstLine();
    void aBurstDoesNotFreezeTheWindow();
    void bothThemes();
    void aSelectedRowIsReadable();
};

void tst_Monitor::requestAndReplyArePaired()
{
    PacketLog log;
    PacketModel model(log, nullptr);
    Site site;
    site.router.setObserver(&log);
    site.ask("list");
    site.say(2, 1, "not a reply: the request has not arrived");
    site.router.send();
    model.sync();
    QCOMPARE(rowsOf(model),
        QStringList({ str("agent 1 | agent 2 | action list | 174 bytes | answered after a while"),
            str("agent 2 | agent 1 | message not a reply: the request has not arrived | 182 bytes "
                "| "
                "delivered after a while"),
            str("agent 2 | agent 1 | message ready | 147 bytes | reply after a while") }));
    QCOMPARE(log.find(0)->partner, 2);
    QCOMPARE(log.find(2)->partner, 0);
    QCOMPARE(log.find(0)->answer, log.find(2)->time - log.find(0)->time);
}

void tst_Monitor::aLateReplyIsPairedWithTheOldestAction()
{
    QStringList heard;
    RecordingAgent asking(1, &heard);
    RecordingAgent slow(2, &heard);
    PacketLog log;
    XMLRouter router(nullptr, nullptr, nullptr);
    router.add(&asking);
    router.add(&slow);
    router.setObserver(&log);
    for (const char *name : { "first", "second" }) {
        XMLAction action(str(name), 1, 1);
        XMLPacket *packet = asking.getXMLPacket(2);
        packet->append(action);
        router.send(packet);
    }
    router.send();
    router.send(makePacket(1, 2, str("in between")));
    router.send();
    router.send(makePacket(2, 1, str("to what was received last")));
    router.send(makePacket(2, 1, str("to the first")));
    router.send(makePacket(2, 1, str("to the second")));
    router.send(makePacket(2, 1, str("of its own")));
    QList<qint64> partners;
    for (qint64 number = 3; number < log.end(); ++number) {
        partners += log.find(number)->partner;
    }
    QCOMPARE(partners, QList<qint64>({ 2, 0, 1, -1 }));
    router.setObserver(nullptr);
    router.send();
}

void tst_Monitor::whatIsNotDeliveredSaysWhy()
{
    PacketLog log;
    PacketModel model(log, nullptr);
    Site site;
    site.router.setObserver(&log);
    site.say(1, 99, "a");
    site.say(1, 99, "a");
    site.say(99, 1, "b");
    XMLPacket *packet = makePacket(1, 2, str("c"));
    site.router.send(packet);
    site.router.send(packet);
    site.router.send();
    model.sync();
    QStringList outcomes;
    for (const QString &row : rowsOf(model)) {
        outcomes += row.section(str(" | "), 4);
    }
    QCOMPARE(outcomes,
        QStringList(
            { str("lost: there is no such agent"), str("dropped: equals the one queued last"),
                str("dropped: its source is not registered"), str("delivered after a while"),
                str("dropped: is queued already") }));
}

void tst_Monitor::agentsComeAndGo()
{
    PacketLog log;
    PacketModel model(log, nullptr);
    Site site;
    site.router.setObserver(&log);
    log.setAgentName(3, str("Preview"));
    Answerer third;
    site.router.add(&third);
    site.router.remove(&third);
    model.sync();
    QCOMPARE(rowsOf(model),
        QStringList({ str("Preview |  |  |  | agent of type 9 added"),
            str("Preview |  |  |  | agent of type 9 removed") }));
}

void tst_Monitor::theBridgeHasAName()
{
    const PacketLog log;
    const Site site;
    QCOMPARE(log.agentName(site.router.getXMLCommServerID()), str("server bridge"));
    QCOMPARE(log.agentName(1), str("agent 1"));
}

void tst_Monitor::memoryIsBounded()
{
    PacketLog log;
    PacketModel model(log, nullptr);
    for (int i = 0; i < PacketLog::MAX_RECORDS + 100; ++i) {
        log.append(PacketRecord());
    }
    model.sync();
    QCOMPARE(model.rowCount(), int(PacketLog::MAX_RECORDS));
    QCOMPARE(log.dropped(), 100);
    QCOMPARE(log.first(), 100);
    PacketRecord large;
    large.text = QByteArray(PacketLog::MAX_TEXT, 'x');
    for (int i = 0; i < 100; ++i) {
        log.append(large);
        QVERIFY(log.bytes() <= PacketLog::MAX_BYTES);
    }
    model.sync();
    QCOMPARE(model.rowCount(), 63);
    QCOMPARE(model.numberOf(model.index(0, 0)), log.first());
}

void tst_Monitor::aLongTextIsCut()
{
    PacketLog log;
    Site site;
    site.router.setObserver(&log);
    site.router.send(makePacket(1, 2, QString(2 * PacketLog::MAX_TEXT, QLatin1Char('x'))));
    QCOMPARE(int(log.find(0)->text.size()), int(PacketLog::MAX_TEXT));
    QVERIFY(log.find(0)->size > 2 * PacketLog::MAX_TEXT);
    QVERIFY(log.find(0)->isCut());
}

void tst_Monitor::aFileHoldsEverything()
{
    PacketLog log;
    PacketModel model(log, nullptr);
    Site site;
    site.router.setObserver(&log);
    log.setAgentName(1, str("Job <list>"));
    site.ask("list");
    site.say(1, 99, "Ünïcode, \"quoted\" & 🖨\nin two lines");
    site.say(1, 99, QByteArray(PacketLog::MAX_TEXT + 1, '<').constData());
    site.router.send();
    site.router.remove(&site.agents[1]);
    model.sync();
    QBuffer file;
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(writePackets(log, file));

    PacketLog copy;
    copy.append(PacketRecord());  // gives place
    PacketModel copied(copy, nullptr);
    file.seek(0);
    QCOMPARE(readPackets(file, copy), QString());
    copied.sync();
    QCOMPARE(rowsOf(copied), rowsOf(model));
    for (int row = 0; row < model.rowCount(); ++row) {
        QCOMPARE(copied.record(row)->text, model.record(row)->text);
        QCOMPARE(copied.record(row)->time, model.record(row)->time);
    }
    QCOMPARE(copied.record(0)->partner, copy.first() + log.find(0)->partner);
}

void tst_Monitor::aFileIsValid()
{
    const QString xmllint = QStandardPaths::findExecutable(str("xmllint"));
    if (xmllint.isEmpty()) {
        QTest::qSkip("xmllint is not installed", __FILE__, __LINE__);
        return;
    }
    PacketLog log;
    Site site;
    site.router.setObserver(&log);
    log.setAgentName(1, str("Job <list>"));
    site.ask("list");
    site.say(1, 99, "to nobody");
    site.say(99, 1, "from a stranger");
    site.router.send();
    site.router.remove(&site.agents[1]);
    QTemporaryFile file;
    QVERIFY(file.open());
    QVERIFY(writePackets(log, file));
    file.close();
    QProcess check;
    check.setProcessChannelMode(QProcess::MergedChannels);
    check.start(xmllint, { str("--noout"), str("--relaxng"), str(TQXML_SCHEMA), file.fileName() });
    QVERIFY(check.waitForFinished());
    const QByteArray said = check.readAll();
    QVERIFY2(check.exitCode() == 0, said.constData());
}

void tst_Monitor::aFileThatIsNoneIsRefused()
{
    PacketLog log;
    log.append(PacketRecord());
    const auto read = [&log](const char *text) {
        QByteArray bytes(text);
        QBuffer file(&bytes);
        file.open(QIODevice::ReadOnly);
        return readPackets(file, log);
    };
    QCOMPARE(read("plain text"), str("This is not a file of packets."));
    QCOMPARE(read("<tqxml/>"), str("This is not a file of packets."));
    const QString damaged =
        read("<packets xmlns='urn:tqxml:packets:1' dropped='0'>\n<packet time='x'/></packets>");
    QCOMPARE(damaged, str("The file is damaged, line 2: attribute time is no such number"));
    QVERIFY(!read("<packets xmlns='urn:tqxml:packets:1' dropped='0'>").isEmpty());
    QCOMPARE(log.end() - log.first(), 1);
}

// --- The widget ---

namespace {

struct Window
{
    Window() : monitor(&site.router)
    {
        monitor.show();
        activate();
    }
    void activate()
    {
        monitor.activateWindow();
        if (!QTest::qWaitForWindowActive(&monitor)) {
            qFatal("the window does not become active");
        }
        list()->setFocus();
    }
    QTableView *list() { return monitor.findChild<QTableView *>(); }
    QPlainTextEdit *text() { return monitor.findChild<QPlainTextEdit *>(); }
    QString status() { return monitor.findChild<QLabel *>(str("status"))->text(); }
    QLineEdit *field(const char *name) { return monitor.findChild<QLineEdit *>(str(name)); }
    QStringList rows() { return rowsOf(*list()->model()); }
    // Waits until the list follows.
    bool hasRows(int count)
    {
        return QTest::qWaitFor([this, count] { return list()->model()->rowCount() == count; });
    }
    void press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    void type(const char *text) { QTest::keyClicks(QApplication::focusWidget(), str(text)); }

    Site site;
    XMLMonitor monitor;
};

}  // namespace

void tst_Monitor::keysOperateEverything()
{
    Window window;
    window.site.ask("list books");
    QVERIFY(window.hasRows(2));

    window.press(Qt::Key_Home, Qt::ControlModifier);
    window.press(Qt::Key_Down);
    QVERIFY(window.text()->toPlainText().contains(str("msg=\"ready\"")));
    window.press(Qt::Key_G, Qt::ControlModifier);  // to the request
    QVERIFY(window.text()->toPlainText().contains(str("name=\"list books\"")));
    window.press(Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text(), window.text()->toPlainText());

    window.press(Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(QApplication::focusWidget(), window.field("find"));
    window.type("originator");
    window.press(Qt::Key_Return);
    QCOMPARE(window.text()->textCursor().selectedText(), str("originator"));
    window.type("x");
    window.press(Qt::Key_F3);
    QVERIFY(window.status().startsWith(str("“originatorx” is not in this packet")));

    window.press(Qt::Key_P, Qt::ControlModifier | Qt::ShiftModifier);
    window.site.say(1, 2, "unseen");
    QTRY_VERIFY(window.status().endsWith(str("paused, 1 not recorded")));
    window.press(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(window.hasRows(0));
}

// Answers the file dialog that opens next.
void answerDialog(const QString &fileName)
{
    auto *wait = new QTimer(qApp);
    QObject::connect(wait, &QTimer::timeout, wait, [wait, fileName] {
        if (auto *dialog = qobject_cast<QFileDialog *>(QApplication::activeModalWidget())) {
            wait->deleteLater();
            auto *field = dialog->findChild<QLineEdit *>();
            field->setText(fileName);
            QTest::keyClick(field, Qt::Key_Return);
        }
    });
    wait->start(10);
}

void tst_Monitor::keysSaveAndOpen()
{
    QTemporaryDir folder;
    const QString file = folder.filePath(str("a.tqpackets"));
    Window window;
    window.site.say(1, 2, "kept");
    QVERIFY(window.hasRows(1));
    answerDialog(file);
    window.press(Qt::Key_S, Qt::ControlModifier);
    QVERIFY(QFile::exists(file));
    window.activate();
    window.press(Qt::Key_L, Qt::ControlModifier);
    QVERIFY(window.hasRows(0));
    answerDialog(file);
    window.press(Qt::Key_O, Qt::ControlModifier);
    QVERIFY(window.hasRows(1));
    QVERIFY(window.rows().first().contains(str("message kept")));
}

void tst_Monitor::aRouterOfAnotherThreadIsShown()
{
    Window window;
    window.monitor.setRouter(nullptr);
    const auto observer = window.monitor.makeObserver();
    std::thread([&observer] {
        Site site;
        site.router.setObserver(observer.get());
        site.ask("list");
        site.say(1, 99, "to nobody");
        site.router.send();
    }).join();
    QVERIFY(window.hasRows(3));
    QCOMPARE(window.rows(),
        QStringList({ str("agent 1 | agent 2 | action list | 174 bytes | answered after a while"),
            str("agent 1 | agent 99 | message to nobody | 152 bytes | lost: there is no such "
                "agent"),
            str("agent 2 | agent 1 | message ready | 147 bytes | reply after a while") }));
}

void tst_Monitor::anObserverOfAnotherThreadMayOutliveTheMonitor()
{
    std::optional<Window> window { std::in_place };
    auto observer = window->monitor.makeObserver();
    std::atomic<bool> isSending { false };
    std::atomic<bool> isClosed { false };
    std::thread thread([&] {
        Site site;
        site.router.setObserver(observer.get());
        while (!isClosed) {
            site.ask("list");
            site.router.send();
            isSending = true;
        }
        site.ask("after the end");
        site.router.send();
        site.router.setObserver(nullptr);
        observer.reset();
    });
    QTRY_VERIFY(isSending);
    window.reset();
    isClosed = true;
    thread.join();
}

void tst_Monitor::aStuckWindowCostsBoundedMemory()
{
    constexpr int MORE = 100;
    PacketLog log;
    log.queue()->setReceiver([] {});
    PacketRelay relay(log.queue());
    for (size_t i = 0; i < PacketQueue::MAX_EVENTS + MORE; ++i) {
        relay.agentAdded(1, 1);
    }
    PacketQueue::Events waiting = log.queue()->take();
    QCOMPARE(waiting.events.size(), PacketQueue::MAX_EVENTS);
    QCOMPARE(waiting.dropped, MORE);
}

void tst_Monitor::filtersNarrowTheList()
{
    Window window;
    window.monitor.setAgentName(2, str("Archive"));
    window.site.ask("list");
    window.site.say(1, 1, "good morning");
    QVERIFY(window.hasRows(3));
    window.press(Qt::Key_K, Qt::ControlModifier);
    window.type("MORNING");
    QVERIFY(window.hasRows(1));
    QVERIFY(window.status().startsWith(str("1 of 3 lines")));
    window.field("words")->clear();
    window.field("agent")->setFocus();
    window.type("archive");
    QVERIFY(window.hasRows(2));
    window.field("agent")->clear();
    auto *kind = window.monitor.findChild<QComboBox *>();
    kind->setFocus();
    window.type("act");
    QVERIFY(window.hasRows(1));
    QCOMPARE(window.rows(),
        QStringList(str("agent 1 | Archive | action list | 174 bytes | answered after a while")));
}

void tst_Monitor::whatWasMissedIsSaid()
{
    Window window;
    QTemporaryDir folder;
    const QString file = folder.filePath(str("a.tqpackets"));
    window.site.say(1, 2, "a");
    QVERIFY(window.monitor.save(file));
    window.site.say(1, 2, "b");
    QVERIFY(window.hasRows(2));
    QVERIFY(window.monitor.open(file));
    QVERIFY(window.hasRows(1));
    QCOMPARE(window.status(), str("1 lines – paused, 0 not recorded"));
    QVERIFY(!window.monitor.open(folder.filePath(str("none"))));
    QVERIFY(window.status().startsWith(folder.filePath(str("none: "))));
}

// What Tab reaches has a name that a screen reader says; and it reaches everything.
void tst_Monitor::everythingHasAName()
{
    Window window;
    QSet<const QWidget *> reached;
    while (!reached.contains(QApplication::focusWidget())) {
        const QWidget *widget = QApplication::focusWidget();
        reached += widget;
        const auto *interface = QAccessible::queryAccessibleInterface(QApplication::focusWidget());
        QVERIFY2(!interface->text(QAccessible::Name).isEmpty(), widget->metaObject()->className());
        window.press(Qt::Key_Tab);
    }
    for (const auto *view :
        { static_cast<QWidget *>(window.list()), static_cast<QWidget *>(window.text()) }) {
        QVERIFY(reached.contains(view));
    }
    for (const QToolButton *button : window.monitor.findChildren<QToolButton *>()) {
        const bool isInAField = qobject_cast<QLineEdit *>(button->parentWidget()) != nullptr;
        QVERIFY2(isInAField || button->isHidden() || reached.contains(button),
            qPrintable(button->text()));
    }
}

void tst_Monitor::anElementIsFoldedIntoItsFirstLine()
{
    XmlView view(nullptr);
    view.setXml(
        str("<tqxml>\n <body>\n  <ui>\n   <action/>\n  </ui>\n  <msg/>\n </body>\n</tqxml>\n"));
    const auto shown = [&view] {
        QStringList lines;
        for (QTextBlock line = view.document()->begin(); line.isValid(); line = line.next()) {
            lines += line.isVisible() ? line.text().trimmed() : str("-");
        }
        return lines.join(QLatin1Char(' ')).trimmed();
    };
    view.foldItems();
    QCOMPARE(shown(), str("<tqxml> <body> <ui> - - <msg/> </body> </tqxml>"));
    QVERIFY(view.findNext(str("action")));
    QCOMPARE(shown(), str("<tqxml> <body> <ui> <action/> </ui> <msg/> </body> </tqxml>"));
    QTest::keyClick(&view, Qt::Key_Home, Qt::ControlModifier);
    QTest::keyClicks(&view, str("-"));
    QCOMPARE(shown(), str("<tqxml> - - - - - - -"));
    QTest::keyClicks(&view, str("+"));
    QCOMPARE(shown(), str("<tqxml> <body> <ui> <action/> </ui> <msg/> </body> </tqxml>"));
}

// 100,000 packets a second, for three seconds.
void tst_Monitor::aBurstDoesNotFreezeTheWindow()
{
    constexpr int PER_MS = 100;
    constexpr int COUNT = 3000 * PER_MS;
    Window window;
    const XMLAgent &sender = window.site.agents[0];
    int sent = 0;
    QElapsedTimer clock;
    QTimer source;
    connect(&source, &QTimer::timeout, this, [&] {
        for (int due = int(clock.elapsed()) * PER_MS; sent < std::min(due, COUNT); ++sent) {
            window.site.router.send(sender.getXMLPacket(1 + sent % 2));
        }
    });
    source.start(1);
    qint64 longest = 0;
    clock.start();
    while (sent < COUNT) {
        const qint64 before = clock.elapsed();
        QCoreApplication::processEvents();
        longest = std::max(longest, clock.elapsed() - before);
    }
    qInfo("%d packets in %d ms, the longest turn of the event loop took %d ms", sent,
        int(clock.elapsed()), int(longest));
    QVERIFY(longest < 500 * TQXML_SLOWNESS);
    source.stop();
    QVERIFY(window.hasRows(PacketLog::MAX_RECORDS));
    const QString dropped = QLocale().toString(COUNT - PacketLog::MAX_RECORDS);
    QTRY_VERIFY(window.status().contains(dropped + str(" older ones dropped")));
}

void tst_Monitor::bothThemes()
{
    Window window;
    Answerer third;
    window.monitor.setAgentName(1, str("Job list"));
    window.site.router.add(&third);
    window.site.ask("outputs");
    window.site.say(1, 3, "plate 12 is ready");
    window.site.say(1, 3, "plate 12 is ready");
    window.site.say(1, 99, "to nobody");
    window.site.say(98, 1, "from a stranger");
    window.site.ask("list jobs");
    QVERIFY(window.hasRows(9));
    window.site.router.remove(&third);
    window.list()->selectRow(1);
    const QPalette light = QApplication::palette();
    QVERIFY(window.monitor.grab().save(str("monitor.png")));
    QPalette dark(QColor(0x373b40), QColor(0x2a2d31));
    dark.setColor(QPalette::Base, QColor(0x1d2023));
    dark.setColor(QPalette::AlternateBase, QColor(0x25282c));
    QApplication::setPalette(dark);
    QTest::qWait(100);
    QVERIFY(window.monitor.grab().save(str("monitor-dark.png")));
    QApplication::setPalette(light);
}

void tst_Monitor::aSelectedRowIsReadable()
{
    Window window;
    window.site.say(1, 2, "a");
    QVERIFY(window.hasRows(1));
    window.list()->selectRow(0);
    const QRect cell = window.list()->visualRect(window.list()->model()->index(0, 1));
    const QImage shown = window.list()->viewport()->grab().toImage();
    const QPoint empty = (cell.topRight() - QPoint(4, -4)) * shown.devicePixelRatio();
    const QColor text = window.list()->palette().color(QPalette::HighlightedText);
    const double found = contrast(text, shown.pixelColor(empty));
    QVERIFY2(found >= READABLE, qPrintable(QString::number(found)));
}

QTEST_MAIN(tst_Monitor)
#include "tst_monitor.moc"

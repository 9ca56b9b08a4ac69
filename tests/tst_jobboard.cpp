#include "look.h"
#include "mainwindow.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlui.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <QtWidgets>

#include <ctime>

namespace {

// Processor time, which other programs do not lengthen; in ms.
qint64 work() { return qint64(std::clock()) * 1000 / CLOCKS_PER_SEC; }

QVariant cell(const QAbstractItemView *v, int y, int x) { return v->model()->index(y, x).data(); }

QModelIndex find(const QAbstractItemView *view, const char *name)
{
    const auto how = Qt::MatchExactly | Qt::MatchRecursive;
    return view->model()->match(view->model()->index(0, 0), 0, str(name), 1, how).value(0);
}

void click(QWidget *widget, QPoint at = {}) { QTest::mouseClick(widget, Qt::LeftButton, {}, at); }

void click(QAbstractItemView *view, const QModelIndex &row)
{
    view->scrollTo(row);
    click(view->viewport(), view->visualRect(row).center());
}

// Whether the view ends with a whole row.
bool endsWhole(const QAbstractItemView *view)
{
    const QRect room = view->viewport()->rect();
    return view->visualRect(view->indexAt(room.bottomLeft())).bottom() <= room.bottom();
}

// The window over a store.
struct Board
{
    explicit Board(const QByteArray &url) : server(url.constData()) { window.show(); }

    bool isLoaded() const { return button(Tool::Stop) && !button(Tool::Stop)->isVisible(); }
    int rows() const { return table->model()->rowCount(); }
    QAction *button(int type) const { return bar->shown(type); }
    void press(int type) const { click(bar->widgetForAction(button(type))); }
    const PacketLog &log() const { return static_cast<PacketLog &>(*packets->model()); }

    TQCommServer server;
    MainWindow window { server };
    ActionBar *bar = window.findChild<ActionBar *>();
    QTreeView *sources = window.findChild<QTreeView *>(str("sources"));
    QTreeView *detail = window.findChild<QTreeView *>(str("detail"));
    QTableView *table = window.findChild<QTableView *>(str("jobs"));
    QTreeView *packets = window.findChild<QTreeView *>(str("packets"));
};

}  // namespace

class tst_JobBoard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { setUpLook(); }
    void rowsAndToolBar();
    void pageSentAgain();
    void detailsAndPackets();
    void manyJobsAndFailure();
    void longLog();
};

void tst_JobBoard::rowsAndToolBar()
{
    Board board("sqlite::memory:");
    runEvents();
    QVERIFY(!board.isLoaded() && !board.button(Tool::Reload)->isVisible());
    board.press(Tool::Stop);
    QTRY_VERIFY(board.isLoaded() && board.rows() < 500);
    board.press(Tool::Reload);
    QTRY_VERIFY_WITH_TIMEOUT(board.rows() > 500 && board.isLoaded(), 60000);
    int rows = 0;
    for (int type = Tool::OnlyDone; type >= Tool::AnyState; --type) {  // the last by its action
        type > Tool::AnyState ? board.press(type) : board.bar->action(type)->setChecked(true);
        rows += board.rows();
        for (int i = Tool::AnyState; i <= Tool::OnlyDone; ++i) {
            QCOMPARE(board.button(i)->isChecked(), i == type);
        }
    }
    QCOMPARE(rows, 2 * board.rows());
    board.press(Tool::AnyState);  // the checked one stays checked
    QVERIFY(board.button(Tool::AnyState)->isChecked());

    click(board.sources, find(board.sources, "Revue du Métier 2"));  // on more than one output
    QCOMPARE(find(board.sources, "Revue du Métier 2").siblingAtColumn(1).data().toInt(), 9);
    QVERIFY(board.rows() == 9 && cell(board.table, 0, 0) == str("Revue du Métier 2 p. 4"));
    click(board.table->horizontalHeader()->viewport(), { 9, 9 });
    QVERIFY(cell(board.table, 0, 0) == str("Revue du Métier 2 p. 12"));
    QTest::keyClicks(board.window.findChild<QLineEdit *>(), str("p. 7"));
    QCOMPARE(board.rows(), 1);
    board.window.resize(1, 1);
    QVERIFY(board.table->columnWidth(0) >=
        static_cast<QAbstractItemView *>(board.table)->sizeHintForColumn(0));
}

void tst_JobBoard::pageSentAgain()
{
    Board board("sqlite::memory:");
    QTRY_VERIFY_WITH_TIMEOUT(board.isLoaded(), 60000);
    const int rows = board.rows();
    XMLUI page;  // which has another state checked
    XMLAction only(str("Only done"), Tool::OnlyDone, 1);
    only.setCheckable(true);
    only.setChecked(true);
    page.append(only);
    auto *packet = new XMLPacket;
    packet->append(page);
    board.bar->receive(packet);
    QVERIFY(board.button(Tool::OnlyDone)->isChecked() && board.rows() < rows);
    QVERIFY(!board.button(Tool::AnyState)->isChecked());
    board.press(Tool::ShowDetails);
    board.press(Tool::Reload);
    QTRY_VERIFY_WITH_TIMEOUT(board.isLoaded(), 60000);
    QVERIFY(board.button(Tool::OnlyDone)->isChecked());
    QVERIFY(!board.button(Tool::ShowDetails)->isChecked());
    const QModelIndex top = board.log().index(0, PacketLog::Content);
    const auto pages = board.log().match(top, Qt::DisplayRole, str("page tools"));
    const Xml sent(board.log().text(pages.value(0).row()));
    page.setNode(sent.root.lastChildElement().firstChildElement());
    QList<XMLAction *> actions;
    QCOMPARE(page.getActions(actions), 10);
    for (const XMLAction *action : actions) {
        QCOMPARE(action->isChecked(), board.button(action->getType())->isChecked());
    }
    qDeleteAll(actions);
}

void tst_JobBoard::detailsAndPackets()
{
    Board board("sqlite::memory:");
    QTRY_VERIFY_WITH_TIMEOUT(board.isLoaded(), 60000);
    const auto *text = board.window.findChild<QPlainTextEdit *>();
    for (int row = 0; row < board.log().rowCount(); ++row) {
        click(board.packets, board.log().index(row, 0));
        QVERIFY(text->toPlainText().contains(str("\n  <src agent_id=")));
        QVERIFY(QDomDocument().setContent(text->toPlainText()));  // the whole of it
    }
    QVERIFY(!board.button(Tool::CopyXml)->isEnabled());
    for (const bool isDark : { false, true }) {
        click(board.sources, find(board.sources, "Digital Press Colour"));
        click(board.table, board.table->model()->index(4, 0));
        QTest::keyClick(board.table, Qt::Key_Down);
        QTRY_COMPARE(cell(board.detail, 0, 1), cell(board.table, 5, 0));
        QCOMPARE(find(board.detail, "City").parent().data(), QVariant(str("Owner")));
        QTRY_VERIFY(board.button(Tool::CopyXml)->isEnabled());
        board.press(Tool::CopyXml);
        QVERIFY(QApplication::clipboard()->text().contains(cell(board.table, 5, 0).toString()));
        click(board.packets, board.packets->model()->index(2, 0));
        board.bar->widgetForAction(board.button(Tool::Reload))
            ->setAttribute(Qt::WA_UnderMouse, false);  // where the pointer is at first
        QTest::qWait(50);
        for (const auto *view : board.window.findChildren<QAbstractItemView *>()) {
            QVERIFY2(view->isHidden() || endsWhole(view), qPrintable(view->objectName()));
        }
        const QRect lines = text->viewport()->rect();
        QVERIFY(text->cursorRect(text->cursorForPosition(lines.bottomLeft())).bottom() <=
            lines.bottom());
        const QPixmap picture = board.window.grab();
        QVERIFY(picture.width() >= 1280 && picture.height() >= 800);
        QVERIFY(picture.save(QCoreApplication::applicationDirPath() +
            str(isDark ? "/jobboard-dark.png" : "/jobboard.png")));
        QCOMPARE(board.table->palette().base() != Qt::white, isDark);
        board.press(Tool::DarkLook);
    }
}

void tst_JobBoard::manyJobsAndFailure()
{
    const QTemporaryDir folder;
    QFile store(folder.filePath(str("store")));
    const QByteArray url = "sqlite:" + store.fileName().toUtf8();
    std::string error;
    QVERIFY(TQCreateGeneratedStore(url.constData(), 20000, {}, error));
    Board board(url);
    qint64 first = 0;  // turn of the event loop, with rows
    qint64 longest = 0;
    QString preferred;
    while (!board.isLoaded()) {
        const qint64 before = work();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (preferred.isEmpty() && board.rows() > 0) {
            board.table->viewport()->repaint();
            first = work() - before;
            const auto *sources = board.sources->model();
            const QModelIndex outputs = sources->index(1, 0);
            const QModelIndex last = sources->index(sources->rowCount(outputs) - 1, 0, outputs);
            preferred = last.data().toString();
            click(board.sources, last);
        }
        longest = std::max(longest, work() - before);
    }
    QVERIFY2(first <= 200 * TQXML_SLOWNESS, qPrintable(QString::number(first)));
    QVERIFY2(longest <= 400 * TQXML_SLOWNESS, qPrintable(QString::number(longest)));
    QFile status(str("/proc/self/status"));
    QVERIFY(status.open(QIODevice::ReadOnly));
    const QString peak = QString::fromUtf8(status.readAll()).section(str("VmHWM:"), 1);
    const int mebibytes = peak.section(str(" kB"), 0, 0).toInt() / 1024;
    QVERIFY2(mebibytes > 0 && mebibytes < 256 * TQXML_SLOWNESS, qPrintable(peak.left(20)));

    const QModelIndex top = board.log().index(0, PacketLog::Content);
    const auto requests = board.log().match(top, 0, str("request for jobs on "), -1);
    QCOMPARE(requests.size(), 85);  // one for each output
    QVERIFY(requests.at(83).data().toString().endsWith(preferred));  // the last is the oldest
    click(board.sources, board.sources->model()->index(0, 0));
    QCOMPARE(board.rows(), 20000);
    const qint64 before = work();
    board.table->sortByColumn(JobModel::Created, Qt::AscendingOrder);
    const qint64 sorting = work() - before;
    QVERIFY2(sorting <= 200 * TQXML_SLOWNESS, qPrintable(QString::number(sorting)));

    QVERIFY(store.resize(0));
    board.press(Tool::Reload);
    QTRY_VERIFY(qobject_cast<QMessageBox *>(QApplication::activeModalWidget()));
    QCOMPARE(board.rows(), 0);
}

void tst_JobBoard::longLog()
{
    PacketLog log;
    for (int i = 0; i < PacketLog::MAX_PACKETS + 1; ++i) {
        log.add(PacketLog::Sent, *std::make_unique<XMLPacket>());
    }
    QCOMPARE(log.rowCount(), PacketLog::MAX_PACKETS);
    QVERIFY(
        log.headerData(PacketLog::Content, Qt::Horizontal).toString().contains(str("last 500")));
    XMLPacket noise;  // which hardly becomes less, and is longer than is kept of one
    QByteArray bytes(48 * 1024, 0);
    for (uint i = 0; i < 20; ++i) {
        QRandomGenerator(i).fillRange(
            reinterpret_cast<quint32 *>(bytes.data()), bytes.size() / qsizetype(sizeof(quint32)));
        XMLMessage message(QString::fromLatin1(bytes.toBase64()));
        noise.append(message);
    }
    for (int i = 0; i < 16; ++i) {
        log.add(PacketLog::Sent, noise);
    }
    QVERIFY(log.rowCount() > 1 && log.rowCount() < 16);
    QVERIFY(log.text(0).endsWith(str(" more")) && log.text(-1).isEmpty());
}

QTEST_MAIN(tst_JobBoard)
#include "tst_jobboard.moc"

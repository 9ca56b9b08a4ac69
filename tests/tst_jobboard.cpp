#include "look.h"
#include "mainwindow.h"
#include "util.h"
#include "xmlaction.h"

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

// The window over a store.
struct Board
{
    explicit Board(const QByteArray &url) : server(url.constData()) { window.show(); }

    bool isLoaded() const { return button(Tool::Stop) && !button(Tool::Stop)->isVisible(); }
    int rows() const { return table->model()->rowCount(); }
    QAction *button(int type) const { return bar->shown(type); }
    void press(int type) const { click(bar->widgetForAction(button(type))); }

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
    void detailsAndPackets();
    void manyJobsAndFailure();
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

void tst_JobBoard::detailsAndPackets()
{
    Board board("sqlite::memory:");
    QTRY_VERIFY_WITH_TIMEOUT(board.isLoaded(), 60000);
    const auto *text = board.window.findChild<QPlainTextEdit *>();
    for (int row = 0; row < board.packets->model()->rowCount(); ++row) {
        click(board.packets, board.packets->model()->index(row, 0));
        QVERIFY(text->toPlainText().contains(str("\n  <src agent_id=")));
        QVERIFY(text->toPlainText().size() < PacketLog::MAX_TEXT + 100);
        QVERIFY(QTime::fromString(cell(board.packets, row, 0).toString(), str("HH:mm:ss.zzz"))
                    .isValid());
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
        QTest::qWait(50);
        QVERIFY(board.window.grab().save(str(isDark ? "jobboard-dark.png" : "jobboard.png")));
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
    qint64 first = 0;
    QString preferred;
    while (!board.isLoaded()) {
        const qint64 before = work();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (first == 0 && board.rows() > 0) {
            board.table->viewport()->repaint();
            first = work() - before;
            const auto *sources = board.sources->model();
            const QModelIndex outputs = sources->index(1, 0);
            const QModelIndex last = sources->index(sources->rowCount(outputs) - 1, 0, outputs);
            preferred = last.data().toString();
            click(board.sources, last);
        }
    }
    QVERIFY2(first <= 200 * TQXML_SLOWNESS, qPrintable(QString::number(first)));
    QFile memory(str("/proc/self/statm"));
    QVERIFY(memory.open(QIODevice::ReadOnly));
    QVERIFY(memory.readAll().split(' ')[1].toLongLong() * sysconf(_SC_PAGESIZE) < 1 << 30);

    const QModelIndex top = board.packets->model()->index(0, PacketLog::Content);
    const auto requests = top.model()->match(top, 0, str("request for jobs on "), -1);
    QCOMPARE(requests.size(), 85);  // one for each output
    QVERIFY(requests.at(83).data().toString().endsWith(preferred));  // the last is the oldest
    click(board.sources, board.sources->model()->index(0, 0));
    QCOMPARE(board.rows(), 20000);

    QVERIFY(store.resize(0));
    board.press(Tool::Reload);
    QTRY_VERIFY(qobject_cast<QMessageBox *>(QApplication::activeModalWidget()));
    QCOMPARE(board.rows(), 0);

    PacketLog log;
    for (int i = 0; i < PacketLog::MAX_PACKETS + 1; ++i) {
        log.add(PacketLog::Sent, *std::make_unique<XMLPacket>());
    }
    QCOMPARE(log.rowCount(), PacketLog::MAX_PACKETS);
}

QTEST_MAIN(tst_JobBoard)
#include "tst_jobboard.moc"

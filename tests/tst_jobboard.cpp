#include "look.h"
#include "mainwindow.h"

#include "xmlaction.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <QClipboard>
#include <QDomDocument>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QProcess>
#include <QTableView>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <QToolButton>
#include <QTreeWidget>

#include <algorithm>
#include <ctime>
#include <unistd.h>

namespace {

constexpr int PATIENCE = 120000;  // ms, for slow machines

// The window over a store, everything loaded, and what is in it.
struct Board
{
    explicit Board(const QByteArray &url = "sqlite::memory:")
        : server(url.constData()), window(server),
          sources(window.findChild<QTreeWidget *>(QStringLiteral("sources"))),
          table(window.findChild<QTableView *>(QStringLiteral("jobs"))),
          detail(window.findChild<QTreeWidget *>(QStringLiteral("detail"))),
          packets(window.findChild<QTreeView *>(QStringLiteral("packets"))),
          text(window.findChild<QPlainTextEdit *>(QStringLiteral("packetText")))
    {
        QObject::connect(&window, &MainWindow::loaded, [this] {
            isLoaded = true;
            couldStop = button("Stop loading")->isVisible() && !button("Reload")->isVisible();
        });
        window.show();
    }

    bool load()
    {
        return QTest::qWaitFor([this] { return isLoaded; }, PATIENCE);
    }
    int rows() const { return table->model()->rowCount(); }
    QString cell(int row, int column) const
    {
        return table->model()->index(row, column).data().toString();
    }
    QStringList column(int column) const
    {
        QStringList cells;
        for (int row = 0; row < rows(); ++row) {
            cells << cell(row, column);
        }
        return cells;
    }

    QTreeWidgetItem *source(const char *name) const
    {
        const auto found =
            sources->findItems(QString::fromUtf8(name), Qt::MatchExactly | Qt::MatchRecursive);
        return found.value(0);
    }
    void chooseSource(const char *name) const
    {
        sources->scrollToItem(source(name));
        clickAt(sources, sources->visualItemRect(source(name)).center());
    }
    void chooseJob(int row) const
    {
        clickAt(table, table->visualRect(table->model()->index(row, 0)).center());
    }
    void clickHeader(int column) const
    {
        QHeaderView *header = table->horizontalHeader();
        clickAt(header, { header->sectionViewportPosition(column) + 5, header->height() / 2 });
    }
    QToolButton *button(const char *name) const
    {
        const auto buttons = window.findChildren<QToolButton *>();
        const auto found = std::find_if(buttons.begin(), buttons.end(),
            [name](const QToolButton *b) { return b->text() == QLatin1String(name); });
        return found == buttons.end() ? nullptr : *found;
    }
    void press(const char *name) const { QTest::mouseClick(button(name), Qt::LeftButton); }
    QString detailText(std::initializer_list<const char *> path) const
    {
        const QTreeWidgetItem *at = detail->invisibleRootItem();
        for (const char *heading : path) {
            const QTreeWidgetItem *next = nullptr;
            for (int i = 0; at && i < at->childCount(); ++i) {
                next = at->child(i)->text(0) == QString::fromUtf8(heading) ? at->child(i) : next;
            }
            at = next;
        }
        return at ? at->text(1) : QString();
    }

    static void clickAt(QAbstractScrollArea *area, QPoint at)
    {
        QTest::mouseClick(area->viewport(), Qt::LeftButton, {}, at);
    }

    TQCommServer server;
    MainWindow window;
    bool isLoaded = false;
    bool couldStop = false;  // until then
    QTreeWidget *sources;
    QTableView *table;
    QTreeWidget *detail;
    QTreeView *packets;
    QPlainTextEdit *text;
};

qint64 residentBytes()
{
    QFile file(QStringLiteral("/proc/self/statm"));
    return file.open(QIODevice::ReadOnly)
        ? file.readAll().split(' ').value(1).toLongLong() * sysconf(_SC_PAGESIZE)
        : -1;
}

// How long the first rows take from the request for them to the screen, in ms; of processor time,
// too, which other programs do not lengthen.
class FirstRows : public QObject
{
public:
    explicit FirstRows(Board &board) : m_board(board)
    {
        QAbstractItemModel *log = board.packets->model();
        connect(log, &QAbstractItemModel::rowsInserted, this, [this, log] {
            const QString content = log->index(0, PacketLog::Content).data().toString();
            if (!m_clock.isValid() && content.startsWith(QLatin1String("request for jobs"))) {
                m_clock.start();
                m_work = std::clock();
            }
        });
        board.table->viewport()->installEventFilter(this);
    }

    qint64 wait = -1;
    qint64 work = -1;

protected:
    bool eventFilter(QObject *, QEvent *event) override
    {
        if (event->type() == QEvent::Paint && wait < 0 && m_board.rows() > 0) {
            m_board.table->viewport()->removeEventFilter(this);
            m_board.table->viewport()->repaint();
            wait = m_clock.elapsed();
            work = qint64(std::clock() - m_work) * 1000 / CLOCKS_PER_SEC;
        }
        return false;
    }

private:
    Board &m_board;
    QElapsedTimer m_clock;
    std::clock_t m_work = 0;
};

}  // namespace

class tst_JobBoard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { setUpLook(); }
    void sources();
    void sorting();
    void states();
    void details();
    void packets();
    void screenshots();
    void manyJobs();
    void failures();

private:
    // URL of a new store with that many jobs; empty when it cannot be made.
    QByteArray generatedStore(size_t jobs) const
    {
        const QByteArray url =
            "sqlite:" + m_folder.filePath(QString::number(jobs)).toUtf8() + ".db";
        std::string error;
        return TQCreateGeneratedStore(url.constData(), jobs, {}, error) ? url : QByteArray();
    }

    QTemporaryDir m_folder;
};

void tst_JobBoard::sources()
{
    Board board;
    QVERIFY(board.load());
    const int all = board.rows();
    QVERIFY(all >= 500);
    board.chooseSource("Imagesetter 70");
    QVERIFY(board.rows() > 0 && board.rows() < all);
    QCOMPARE(board.column(JobModel::Output).count(QStringLiteral("Imagesetter 70")), board.rows());
    QCOMPARE(board.source("Imagesetter 70")->text(1).toInt(), board.rows());

    // Its pages lie on more than one output.
    board.chooseSource("Revue du Métier 3");
    QCOMPARE(board.rows(), 9);
    QCOMPARE(board.source("Revue du Métier 3")->text(1), QStringLiteral("9"));
    QTest::keyClick(board.sources, Qt::Key_Down);
    QVERIFY(board.cell(0, JobModel::Name).startsWith(QStringLiteral("Revue du Métier 4 p. ")));
    board.chooseSource("Dom Casmurro");
    QCOMPARE(board.rows(), 4);

    board.chooseSource("All jobs");
    auto *search = board.window.findChild<QLineEdit *>(QStringLiteral("search"));
    QTest::keyClicks(search, QStringLiteral("casmurro p. "));
    QCOMPARE(board.rows(), 4);
    QTest::keyClick(search, Qt::Key_A, Qt::ControlModifier);
    QTest::keyClick(search, Qt::Key_Delete);
    QCOMPARE(board.rows(), all);
}

void tst_JobBoard::sorting()
{
    Board board;
    QVERIFY(board.load());
    board.chooseSource("Revue du Métier 2");
    QCOMPARE(board.cell(0, JobModel::Name), QStringLiteral("Revue du Métier 2 p. 4"));
    QCOMPARE(board.cell(8, JobModel::Name), QStringLiteral("Revue du Métier 2 p. 12"));
    for (const auto order : { Qt::AscendingOrder, Qt::DescendingOrder }) {
        board.clickHeader(JobModel::Copies);
        if (board.table->horizontalHeader()->sortIndicatorOrder() != order) {
            board.clickHeader(JobModel::Copies);
        }
        const QStringList copies = board.column(JobModel::Copies);
        const bool isSorted = std::is_sorted(
            copies.begin(), copies.end(), [order](const QString &a, const QString &b) {
                return order == Qt::AscendingOrder ? a.toInt() < b.toInt() : b.toInt() < a.toInt();
            });
        QVERIFY2(isSorted, qPrintable(copies.join(QLatin1Char(' '))));
    }
}

void tst_JobBoard::states()
{
    Board board;
    QVERIFY(board.load());
    const int all = board.rows();
    int sum = 0;
    const char *const names[] = { "Waiting", "In progress", "Done" };
    for (const char *name : names) {
        board.press(name);
        QCOMPARE(board.column(JobModel::State).count(QLatin1String(name)), board.rows());
        sum += board.rows();
        for (const char *other : { "All", "Waiting", "In progress", "Done" }) {
            QCOMPARE(board.button(other)->isChecked(), qstrcmp(other, name) == 0);
        }
    }
    QCOMPARE(sum, all);
    board.press("Done");  // the checked one stays checked
    QVERIFY(board.button("Done")->isChecked());

    // The mark of an action moves its button's, and those of its group.
    auto *bar = board.window.findChild<ActionBar *>();
    for (int type = 1; bar->action(type); ++type) {
        if (bar->action(type)->getName() == QLatin1String("All")) {
            bar->action(type)->setChecked(true);
        }
    }
    QVERIFY(board.button("All")->isChecked() && !board.button("Done")->isChecked());
    QCOMPARE(board.rows(), all);

    board.press("Details");
    QVERIFY(!board.detail->isVisible());
    board.press("Details");
    QVERIFY(board.detail->isVisible());
}

void tst_JobBoard::details()
{
    Board board;
    QVERIFY(board.load());
    QVERIFY(board.couldStop);
    QVERIFY(!board.button("Stop loading")->isVisible());
    QVERIFY(!board.button("Copy job as XML")->isEnabled());

    board.chooseSource("Candide, ou l’Optimisme");
    board.chooseJob(0);
    QCOMPARE(board.detailText({ "Name" }), board.cell(0, JobModel::Name));
    QCOMPARE(board.detailText({ "Book", "Author" }), QStringLiteral("Voltaire"));
    QCOMPARE(board.detailText({ "Book", "Owner", "City" }), QStringLiteral("Rouen"));
    QCOMPARE(board.detailText({ "Output", "Name" }), board.cell(0, JobModel::Output));
    QTest::keyClick(board.table, Qt::Key_Down);
    QCOMPARE(board.detailText({ "Name" }), board.cell(1, JobModel::Name));
    QCOMPARE(board.detailText({ "State" }), board.cell(1, JobModel::State));

    QTRY_VERIFY(board.button("Copy job as XML")->isEnabled());
    board.press("Copy job as XML");
    QDomDocument copied;
    QVERIFY(copied.setContent(QGuiApplication::clipboard()->text()));
    QCOMPARE(
        copied.documentElement().attribute(QStringLiteral("name")), board.cell(1, JobModel::Name));

    board.press("Reload");
    QTRY_VERIFY(!board.button("Copy job as XML")->isEnabled());
    QCOMPARE(board.detail->topLevelItemCount(), 0);
}

void tst_JobBoard::packets()
{
    Board board;
    QVERIFY(board.load());
    QAbstractItemModel *log = board.packets->model();
    int requests = 0;
    int replies = 0;
    for (int row = 0; row < log->rowCount(); ++row) {
        const auto cell = [log, row](int i) { return log->index(row, i).data().toString(); };
        const QString time = cell(PacketLog::Time);
        QVERIFY(QTime::fromString(time, QStringLiteral("HH:mm:ss.zzz")).isValid());
        const bool isSent = cell(PacketLog::Way) == QLatin1String("sent");
        if (cell(PacketLog::Agents).contains(QLatin1String("Server bridge"))) {
            (isSent ? requests : replies) += 1;
            QCOMPARE(isSent, cell(PacketLog::Content).startsWith(QLatin1String("request for ")));
        }

        board.packets->scrollTo(log->index(row, 0));
        Board::clickAt(board.packets, board.packets->visualRect(log->index(row, 0)).center());
        const QString text = board.text->toPlainText();
        QVERIFY(
            text.startsWith(QLatin1String("<tqxml")) && text.contains(QLatin1String("\n <body")));
        QVERIFY(text.size() < PacketLog::MAX_TEXT + 100);
    }
    const int outputs = board.source("Outputs")->childCount();
    QCOMPARE(requests, 2 + 2 * outputs);
    QCOMPARE(replies, requests);
}

void tst_JobBoard::screenshots()
{
    for (const char *name : { "jobboard.png", "jobboard-dark.png" }) {
        Board board;
        QVERIFY(board.load());
        if (qstrcmp(name, "jobboard-dark.png") == 0) {
            board.press("Dark");
        }
        board.chooseSource("Digital Press Colour");
        board.chooseJob(5);
        QVERIFY(QTest::qWaitFor([&] { return board.button("Copy job as XML")->isEnabled(); }));
        Board::clickAt(
            board.packets, board.packets->visualRect(board.packets->model()->index(4, 0)).center());
        board.table->setFocus();
        QTest::qWait(50);
        const QPixmap picture = board.window.grab();
        QVERIFY(picture.width() >= 1280 && picture.height() >= 800);
        QCOMPARE(isDarkLook(), qstrcmp(name, "jobboard-dark.png") == 0);
        const QString path = QCoreApplication::applicationDirPath() + QLatin1Char('/');
        QVERIFY(picture.save(path + QLatin1String(name)));
    }
    setDarkLook(false);
}

void tst_JobBoard::manyJobs()
{
    constexpr int JOBS = 20000;
    constexpr qint64 MAX_WORK = 200;  // ms
    constexpr qint64 MAX_WAIT = 2000;
    const QByteArray url = generatedStore(JOBS);
    QVERIFY(!url.isEmpty());
    Board board(url);
    FirstRows first(board);
    QVERIFY(board.load());
    qInfo("first rows after %lld ms, %lld of work; %lld MiB in use", first.wait, first.work,
        residentBytes() >> 20);
    QVERIFY(first.work >= 0 && first.work <= MAX_WORK && first.wait <= MAX_WAIT);
    QCOMPARE(board.rows(), JOBS);
    QVERIFY(board.packets->model()->rowCount() <= PacketLog::MAX_PACKETS);
    QVERIFY(residentBytes() < Q_INT64_C(1) << 30);

    // What is chosen while it loads goes first; the window takes part while the rest arrives.
    board.isLoaded = false;
    board.press("Reload");
    QTRY_VERIFY(board.source("Proofer 44 00085"));
    board.chooseSource("Proofer 44 00085");
    QTRY_VERIFY(board.rows() > 200);
    QVERIFY(!board.isLoaded);
    board.press("Stop loading");
    QVERIFY(board.load());
    board.chooseSource("All jobs");
    QVERIFY(board.rows() < JOBS);
}

void tst_JobBoard::failures()
{
    QProcess process;
    process.start(QStringLiteral(JOBBOARD),
        { QStringLiteral("--database"), QStringLiteral("sqlite:/nowhere/at.all") });
    QVERIFY(process.waitForFinished());
    QCOMPARE(process.exitCode(), 1);
    QVERIFY(process.readAllStandardError().contains("jobboard: /nowhere/at.all: "));

    const QByteArray url = generatedStore(100);
    Board board(url);
    QVERIFY(board.load());
    QFile file(QString::fromUtf8(url.mid(7)));
    QVERIFY(file.open(QIODevice::ReadWrite));
    file.write(QByteArray(int(file.size()), 'x'));
    file.close();
    board.isLoaded = false;
    board.press("Reload");
    QVERIFY(board.load());
    auto *box = board.window.findChild<QMessageBox *>();
    QVERIFY(box && box->isVisible() && !box->text().isEmpty());
    QTest::keyClick(box, Qt::Key_Return);
    QTRY_VERIFY(!board.window.findChild<QMessageBox *>());
    QCOMPARE(board.rows(), 0);
}

QTEST_MAIN(tst_JobBoard)
#include "tst_jobboard.moc"

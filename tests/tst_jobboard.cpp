#include "actions.h"
#include "contrast.h"
#include "dataout.h"
#include "detailpane.h"
#include "itemfields.h"
#include "jobtable.h"
#include "jobwindow.h"
#include "language.h"
#include "look.h"
#include "mainwindow.h"
#include "postgres.h"
#include "statusline.h"
#include "troublebar.h"
#include "util.h"
#include "xmlpacketable.h"

#include "tqstore.h"

#include <QPrinter>
#include <QtSql>
#include <QtWidgets>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

namespace {

constexpr int TIMEOUT = 60000;  // ms; more than anything here takes
constexpr int SAMPLE_JOBS = 573;
constexpr int NOT_WAITING = 458;  // of them
const QSize SMALL_SCREEN(1280, 800);

// What SQL says of the store, beside the library: the first column.
QStringList sql(const QString &statement)
{
    QStringList values;
    QSqlQuery query(statement);
    while (query.next()) {
        values << query.value(0).toString();
    }
    return query.lastError().isValid() ? QStringList(query.lastError().text()) : values;
}

// Takes a table away, and brings it back.
void spoil(const char *table) { sql(str("ALTER TABLE %1 RENAME TO gone").arg(str(table))); }
void mend(const char *table) { sql(str("ALTER TABLE gone RENAME TO %1").arg(str(table))); }

// The rows of a view, and after each those below it: the texts of some columns.
QStringList rows(const QAbstractItemView *view, int columns, const QModelIndex &top = {})
{
    QStringList list;
    for (int y = 0; y < view->model()->rowCount(top); ++y) {
        QStringList row;
        for (int x = 0; x < columns; ++x) {
            row << view->model()->index(y, x, top).data().toString();
        }
        list << row.join(str(" | ")) << rows(view, columns, view->model()->index(y, 0, top));
    }
    return list;
}

QStringList sorted(QStringList list)
{
    list.sort();
    return list;
}

// The jobs as lines.
QStringList contentOf(const JobRows &rows)
{
    QStringList lines;
    for (const JobRow &row : rows) {
        lines << str("%1 %2 %3 %4").arg(row.key.key).arg(row.name, row.output).arg(row.state);
    }
    return sorted(lines);
}

QStringList contentOf(const JobStore &store)
{
    JobRows rows;
    for (size_t place = 0; place < store.places(); ++place) {
        if (store.isUsed(place)) {
            const JobStore::Job &job = store.job(place);
            rows.emplace_back();
            rows.back().key = job.key;
            rows.back().name = store.texts().text(job.name);
            rows.back().output = store.texts().text(job.output);
            rows.back().state = job.state;
        }
    }
    return contentOf(rows);
}

// Removes some, and gives others and new ones values that no job had before.
void changeSomeJobs(std::map<unsigned, JobRow> &jobs, QRandomGenerator &random)
{
    for (int change = 0; change < 20; ++change) {
        const unsigned id = random.bounded(1U, 100U);
        if (random.bounded(3) == 0) {
            jobs.erase(id);
            continue;
        }
        JobRow &row = jobs[id];
        row.key = { id, PACKETDATATYPE_JOB };
        row.name = QString::number(random.generate(), 36) + str(" x");
        row.output = str("Output %1").arg(random.bounded(3));
        row.state = int(random.bounded(3));
    }
}

// A server that takes connections and never says a word.
class SilentServer
{
public:
    SilentServer()
    {
        sockaddr_in address = { AF_INET, 0, { htonl(INADDR_LOOPBACK) }, {} };
        socklen_t size = sizeof(address);
        bind(m_socket, reinterpret_cast<sockaddr *>(&address), size);
        listen(m_socket, 8);
        getsockname(m_socket, reinterpret_cast<sockaddr *>(&address), &size);
        m_port = ntohs(address.sin_port);
    }
    ~SilentServer() { end(); }
    void end() { ::close(std::exchange(m_socket, -1)); }
    QByteArray url() const
    {
        return "postgresql://tester@127.0.0.1:" + QByteArray::number(m_port) +
            "/shop?connect_timeout=60";
    }

private:
    int m_socket = socket(AF_INET, SOCK_STREAM, 0);
    int m_port;
};

}  // namespace

class tst_JobBoard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void theWindowShowsWhatIsStored();
    void searchAndStateNarrowTheJobs();
    void rowsAreInTheOrderThatPeopleExpect();
    void chosenRowsAreCopiedAsTheyAreShown();
    void whatIsShownIsExported();
    void anExportThatFailsSaysWhyAndLeavesNothing();
    void eachPrintedPageIsPainted();
    void theWindowComesBackAsItWas();
    void detailsFollowTheChoice();
    void aJobThatCannotBeReadSaysWhyUntilItCan();
    void aReloadKeepsPlaceAndChoice();
    void aChangeOfTheStoreIsShownByItself();
    void aReloadLeavesWhatWasReadAndNothingElse();
    void aFailedReloadKeepsWhatWasThere();
    void aStoreThatCannotBeOpenedIsTriedAgain();
    void aStoppedLoadSaysSo();
    void aSilentServerCostsAMessageOnly();
    void afterAStuckRequestRetryWorks();
    void everythingIsReachedByKeys();
    void everyPaneHasANameForScreenReaders();
    void germansReadGerman();
    void otherLanguagesFallBackToEnglish();
    void translationsKeepWhatIsPutInAndTheKeysOfMenus();
    void textsStandOutInBothThemes();
    void theWindowFitsASmallScreen();
    void pictures();
    void manyJobs();

private:
    // Opens the window over a store.
    void open(const QByteArray &store);
    bool load()
    {
        return QTest::qWaitFor([this] { return !window->board().isLoading(); }, TIMEOUT);
    }
    bool reload() { return trigger(actions()->reload), load(); }

    void retry() const
    {
        QTest::mouseClick(
            window->findChild<TroubleBar *>()->findChild<QPushButton *>(), Qt::LeftButton);
    }

    Actions *actions() const { return window->findChild<Actions *>(); }
    void trigger(QAction *action) const { action->trigger(); }
    QTreeView *sources() const { return window->findChild<QTreeView *>(str("sources")); }
    JobTable *jobs() const { return window->findChild<JobTable *>(); }
    QStringList names() const { return rows(jobs(), 1); }
    DetailPane *details() const { return window->findChild<DetailPane *>(str("detail")); }
    QStringList fields() const { return rows(details(), 2); }
    QLineEdit *search() const { return window->findChild<QLineEdit *>(str("search")); }
    QString status() const { return window->findChild<StatusLine *>()->text(); }
    QString trouble() const { return window->findChild<TroubleBar *>()->trouble(); }
    void choose(QAbstractItemView *view, const QString &name) const;
    void press(int key, Qt::KeyboardModifiers with = Qt::NoModifier) const
    {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key(key), with);
    }

    QTemporaryDir folder;
    QByteArray url;  // of a new store
    std::optional<QSettings> settings;
    std::optional<MainWindow> window;
};

void tst_JobBoard::initTestCase()
{
    setUpLook();
    QSqlDatabase::addDatabase(str("QSQLITE"));
}

void tst_JobBoard::init()
{
    window.reset();
    const QString path = folder.filePath(QUuid::createUuid().toString());
    url = "sqlite:" + path.toUtf8();
    std::string error;
    QVERIFY(TQCreateSampleStore(url.constData(), {}, error));
    QSqlDatabase store = QSqlDatabase::database();
    store.setDatabaseName(path);
    QVERIFY(store.open());
    settings.emplace(path + str(".ini"), QSettings::IniFormat);
    open(url);
    QVERIFY(load());
}

void tst_JobBoard::open(const QByteArray &store)
{
    window.reset();
    window.emplace(store, *settings);
    window->show();
    QVERIFY(QTest::qWaitForWindowExposed(&*window));
    window->activateWindow();
}

void tst_JobBoard::choose(QAbstractItemView *view, const QString &name) const
{
    const auto how = Qt::MatchExactly | Qt::MatchRecursive;
    const QModelIndex first = view->model()->index(0, 0);
    const QModelIndex row = view->model()->match(first, 0, name, 1, how).value(0);
    QVERIFY2(row.isValid(), qPrintable(name));
    view->setCurrentIndex(row);
}

// tests/jobboard.txt is what the panes show, as lines.
void tst_JobBoard::theWindowShowsWhatIsStored()
{
    sql(str("UPDATE tq_icc_profile SET device_class = 'prtr', size = 3, data = x'010203'"));
    sql(str("UPDATE tq_job SET publication_id = (SELECT min(id) FROM tq_publication), options = 5, "
            "trim_box = '10 20 110.5 220.5', bleed = 2.5, colours = 'Cyan\nBlack\nGold', "
            "coverage = '1 2 3', remark = 'Mind' WHERE name = 'Emma p. 294'"));
    QVERIFY(reload());
    QFile file(str(TQXML_WINDOW));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QStringList recorded = QString::fromUtf8(file.readAll()).split(QLatin1Char('\n'));
    QStringList shown { recorded.first() };
    const auto show = [&shown](const QString &pane, const QStringList &lines) {
        shown << QString() << pane + QLatin1Char(':') << lines;
    };
    show(str("Sources"), rows(sources(), 2));
    const QStringList headings { jobs()->headings().join(str(" | ")) };
    for (const char *source : { "Emma", "Revue du Métier 2" }) {
        choose(sources(), str(source));
        show(str(source), headings + rows(jobs(), int(jobs()->shownColumns().size())));
    }
    choose(sources(), str("Emma"));
    choose(jobs(), str("Emma p. 294"));
    QTRY_VERIFY(!fields().isEmpty());
    show(str("Emma p. 294"), fields());
    shown << QString();
    QFile actual(QCoreApplication::applicationDirPath() + str("/jobboard.txt"));
    QVERIFY(actual.open(QIODevice::WriteOnly));
    actual.write(shown.join(QLatin1Char('\n')).toUtf8());
    QCOMPARE(shown, recorded);
}

void tst_JobBoard::searchAndStateNarrowTheJobs()
{
    const QString select = str("SELECT name FROM tq_job WHERE ");
    for (int state = 0; state < stateNames().size(); ++state) {
        QAction *action = actions()->states[size_t(state) + 1];
        trigger(action);
        const QStringList found = sql(select + str("state = %1").arg(state));
        QCOMPARE(sorted(names()), sorted(found));
        QCOMPARE(action->text(), str("%1 (%2)").arg(stateName(state)).arg(found.size()));
    }
    trigger(actions()->states[0]);
    search()->setText(str("eugenie"));
    QTRY_COMPARE(sorted(names()), sorted(sql(select + str("name LIKE 'Eugénie%'"))));
    QVERIFY(!names().isEmpty());
    search()->setText(str("GRANDET P. 1"));  // the beginning of a number
    QTRY_COMPARE(sorted(names()), sorted(sql(select + str("name LIKE '%Grandet p. 1%'"))));
    const QString days = sql(str("SELECT min(substr(created, 1, 9)) FROM tq_job")).first();
    search()->setText(days);  // the beginning of a date
    QTRY_COMPARE(sorted(names()), sorted(sql(select + str("created LIKE '%1%'").arg(days))));
    search()->setText(str("no such job"));
    QTRY_COMPARE(names(), QStringList());
    QCOMPARE(jobs()->placeholder(), str("No job contains “no such job”."));
    QVERIFY(status().startsWith(str("0 of 573 jobs – updated ")));
}

void tst_JobBoard::rowsAreInTheOrderThatPeopleExpect()
{
    const QString select = str("SELECT name FROM tq_job WHERE publication_id = (SELECT id FROM "
                               "tq_publication WHERE name = 'Revue du Métier 2') ORDER BY ");
    choose(sources(), str("Revue du Métier 2"));
    QCOMPARE(names(), sql(select + str("page")));  // page 12 comes after page 4
    jobs()->sortByColumn(JobModel::Name, Qt::DescendingOrder);
    QCOMPARE(names(), sql(select + str("page DESC")));
    jobs()->sortByColumn(JobModel::State, Qt::DescendingOrder);
    QCOMPARE(names(), sql(select + str("state DESC, page")));  // by name where states are equal
}

void tst_JobBoard::chosenRowsAreCopiedAsTheyAreShown()
{
    choose(sources(), str("Emma"));
    for (const int column :
        { JobModel::Output, JobModel::Colours, JobModel::Created, JobModel::Priority }) {
        jobs()->hideColumn(column);
    }
    jobs()->showColumn(JobModel::Book);
    jobs()->horizontalHeader()->moveSection(8, 0);
    jobs()->selectRow(0);
    jobs()->selectionModel()->select(
        jobs()->model()->index(2, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    trigger(actions()->copy);
    const QMimeData *copied = QApplication::clipboard()->mimeData();
    QCOMPARE(copied->text(), str("Emma\tEmma p. 12\tDone\t1\nEmma\tEmma p. 200\tWaiting\t1000\n"));
    QVERIFY(copied->html().contains(str("<tr><th>Book</th><th>Job</th><th>State</th>")));
    QVERIFY(copied->html().contains(str("<td>Emma p. 200</td><td>Waiting</td><td>1000</td></tr>")));
}

// The content of a file.
QByteArray read(const QString &fileName)
{
    QFile file(fileName);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void tst_JobBoard::whatIsShownIsExported()
{
    sql(str("UPDATE tq_job SET colours = 'a \"b\", c' WHERE name = 'Emma p. 12'"));
    QVERIFY(reload());
    choose(sources(), str("Emma"));
    for (const int column : { JobModel::Output, JobModel::Created, JobModel::Priority }) {
        jobs()->hideColumn(column);
    }
    jobs()->sortByColumn(JobModel::Copies, Qt::DescendingOrder);
    const QString csv = folder.filePath(str("jobs.csv"));
    QCOMPARE(exportJobs(*jobs(), jobs()->allRows().mid(2), csv), QString());
    QCOMPARE(read(csv),
        QByteArray("Job,State,Colours,Copies\r\nEmma p. 106,Done,Black,500\r\n"
                   "Emma p. 12,Done,\"a \"\"b\"\", c\",1\r\n"));
    const QString xml = folder.filePath(str("jobs.xml"));
    QCOMPARE(exportJobs(*jobs(), { 1 }, xml), QString());
    const Xml document(QString::fromUtf8(read(xml)));
    const QDomElement job = document.root.lastChildElement().firstChildElement();
    QCOMPARE(job.firstChildElement().firstChildElement().attribute(str("value")), names()[1]);
}

void tst_JobBoard::anExportThatFailsSaysWhyAndLeavesNothing()
{
    const QString name = folder.filePath(str("none/jobs.csv"));
    QVERIFY(!exportJobs(*jobs(), { 0 }, name).isEmpty());
    QVERIFY(!QFile::exists(name));
    const QString directory = folder.filePath(str("taken"));
    QVERIFY(QDir().mkdir(directory));
    QVERIFY(!exportJobs(*jobs(), { 0 }, directory).isEmpty());
}

void tst_JobBoard::eachPrintedPageIsPainted()
{
    const QString name = folder.filePath(str("jobs.pdf"));
    QPrinter printer;
    printer.setOutputFormat(QPrinter::PdfFormat);
    printer.setOutputFileName(name);
    printJobs(*jobs(), jobs()->allRows(), printer);
    QVERIFY(read(name).count("/Type /Page\n") > 5);
}

void tst_JobBoard::theWindowComesBackAsItWas()
{
    window->resize(780, 560);
    jobs()->hideColumn(JobModel::Copies);
    jobs()->sortByColumn(JobModel::Created, Qt::DescendingOrder);
    trigger(actions()->showPackets);
    trigger(actions()->themes[size_t(Theme::Dark)]);
    open(url);
    QCOMPARE(window->size(), QSize(780, 560));
    QVERIFY(jobs()->isColumnHidden(JobModel::Copies));
    QCOMPARE(jobs()->horizontalHeader()->sortIndicatorSection(), int(JobModel::Created));
    QVERIFY(!actions()->showPackets->isChecked());
    QVERIFY(actions()->themes[size_t(Theme::Dark)]->isChecked());
    QVERIFY(isDarkLook());
    trigger(actions()->themes[size_t(Theme::Light)]);
    QVERIFY(!isDarkLook());
}

void tst_JobBoard::detailsFollowTheChoice()
{
    QCOMPARE(details()->placeholder(), str("No job is chosen."));
    QVERIFY(!actions()->copyXml->isEnabled());
    choose(jobs(), names()[4]);
    QTRY_COMPARE(fields().value(0), str("Name | ") + names()[4]);
    trigger(actions()->copyXml);
    QCOMPARE(XMLPacketable::getName(Xml(QApplication::clipboard()->text()).root), names()[4]);
    trigger(actions()->open);
    auto *own = window->findChild<JobWindow *>();
    QVERIFY(own);
    QCOMPARE(rows(own->findChild<DetailPane *>(), 2), fields());
    search()->setText(str("no such job"));
    QTRY_COMPARE(fields(), QStringList());
    QVERIFY(!actions()->copyXml->isEnabled());
}

void tst_JobBoard::aJobThatCannotBeReadSaysWhyUntilItCan()
{
    spoil("tq_output");
    choose(jobs(), names()[1]);
    QTRY_VERIFY(trouble().contains(str("The chosen job is not shown: ")));
    QCOMPARE(fields(), QStringList());
    mend("tq_output");
    choose(jobs(), names()[2]);
    QTRY_COMPARE(trouble(), QString());
    QVERIFY(!fields().isEmpty());
}

void tst_JobBoard::aReloadKeepsPlaceAndChoice()
{
    choose(sources(), str("Emma"));
    choose(jobs(), str("Emma p. 200"));
    sql(str("UPDATE tq_job SET remark = 'Changed'"));
    sql(str("DELETE FROM tq_job WHERE name = 'Emma p. 12'"));
    QVERIFY(reload());
    QCOMPARE(names(), QStringList({ str("Emma p. 106"), str("Emma p. 200"), str("Emma p. 294") }));
    QCOMPARE(jobs()->currentIndex().data().toString(), str("Emma p. 200"));
    QTRY_VERIFY(fields().contains(str("Remark | Changed")));
    QCOMPARE(sources()->currentIndex().data().toString(), str("Emma"));
}

void tst_JobBoard::aChangeOfTheStoreIsShownByItself()
{
    trigger(actions()->states[1]);  // waiting
    jobs()->sortByColumn(JobModel::Created, Qt::DescendingOrder);
    const QStringList before = names();
    jobs()->setCurrentIndex(jobs()->model()->index(50, 0));
    jobs()->selectionModel()->select(
        jobs()->model()->index(52, 0), QItemSelectionModel::Select | QItemSelectionModel::Rows);
    jobs()->verticalScrollBar()->setValue(45);
    const QString remove = str("DELETE FROM tq_job WHERE name = '%1'");
    sql(remove.arg(before[10]));
    sql(remove.arg(before[51]));
    QTRY_COMPARE(names().size(), before.size() - 2);
    QCOMPARE(jobs()->currentIndex().data().toString(), before[50]);
    const QStringList chosen { before[50], before[52] };
    QStringList selected;
    for (const int row : jobs()->selectedRows()) {
        selected << names()[row];
    }
    QCOMPARE(selected, chosen);
    QCOMPARE(jobs()->indexAt({ 0, 0 }).data().toString(), before[45]);
    QTRY_VERIFY(status().contains(str(" of 571 jobs – updated ")));
}

// Against a plain map, over random changes.
void tst_JobBoard::aReloadLeavesWhatWasReadAndNothingElse()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    const QByteArray saidSeed = "seed " + QByteArray::number(seed);
    QRandomGenerator random(seed);
    const Sources outputs { { Source::Output, str("Output 1"), { 1, 8 } } };
    JobStore store;
    std::map<unsigned, JobRow> model;  // by the number of the job
    for (int reload = 0; reload < 200; ++reload) {
        changeSomeJobs(model, random);
        JobRows rows;
        for (const auto &job : model) {
            rows.push_back(job.second);
        }
        std::shuffle(rows.begin(), rows.end(), random);
        JobChanges changes(store);
        changes.add(outputs);
        changes.add(rows);
        QVERIFY2(changes.apply(), saidSeed.constData());
        QVERIFY2(contentOf(store) == contentOf(rows), saidSeed.constData());
        store.texts().rank();
        const auto isOnOne = [](const JobRow &row) { return row.output == str("Output 1"); };
        QCOMPARE(store.entries(Source::Output).front().count,
            int(std::count_if(rows.begin(), rows.end(), isOnOne)));
        JobChanges same(store);
        same.add(outputs);
        same.add(rows);
        QVERIFY2(!same.apply(), saidSeed.constData());
    }
    QVERIFY2(store.texts().beginnings() < 1500, saidSeed.constData());  // of 2600
}

void tst_JobBoard::aFailedReloadKeepsWhatWasThere()
{
    const QStringList before = names() + rows(sources(), 2);
    sql(str("DELETE FROM tq_job WHERE state = 0"));
    spoil("tq_job");
    QVERIFY(reload());
    QVERIFY(trouble().startsWith(str("Loading failed: ")));
    QVERIFY(status().startsWith(str("573 of 573 jobs – as of ")));
    QCOMPARE(names() + rows(sources(), 2), before);
    mend("tq_job");
    retry();
    QVERIFY(load());
    QCOMPARE(trouble(), QString());
    QVERIFY(status().startsWith(str("458 of 458 jobs – updated ")));
}

void tst_JobBoard::aStoreThatCannotBeOpenedIsTriedAgain()
{
    const QString path = folder.filePath(str("later"));
    open("sqlite:" + path.toUtf8());
    window->board().setRetryAfter(100);
    QTRY_VERIFY(trouble().startsWith(str("Loading failed: ")));
    QTRY_COMPARE(jobs()->placeholder(), str("No jobs are loaded."));
    std::string error;
    QVERIFY(TQCreateSampleStore(("sqlite:" + path.toUtf8()).constData(), {}, error));
    QTRY_COMPARE_WITH_TIMEOUT(names().size(), SAMPLE_JOBS, TIMEOUT);  // by itself
    QTRY_COMPARE(trouble(), QString());
}

void tst_JobBoard::aStoppedLoadSaysSo()
{
    trigger(actions()->reload);
    trigger(actions()->stop);
    QCOMPARE(trouble(), str("Loading was stopped."));
    QCOMPARE(names().size(), SAMPLE_JOBS);
    open(url);
    trigger(actions()->stop);
    QVERIFY(status().endsWith(str("jobs that are loaded so far – not all jobs are loaded")));
    QVERIFY(reload());
    QCOMPARE(trouble(), QString());
}

void tst_JobBoard::aSilentServerCostsAMessageOnly()
{
    SilentServer server;
    open(server.url());
    QTRY_VERIFY_WITH_TIMEOUT(
        trouble().startsWith(str("The server has not answered for ")), 3 * Board::PATIENCE);
    QTest::keyClicks(search(), str("still here"));
    QCOMPARE(search()->text(), str("still here"));
    server.end();
    QTRY_VERIFY_WITH_TIMEOUT(trouble().startsWith(str("Loading failed: ")), TIMEOUT);
}

void tst_JobBoard::afterAStuckRequestRetryWorks()
{
    if (!PostgresServer::isInstalled()) {
        QTest::qSkip("PostgreSQL is not installed", __FILE__, __LINE__);
        return;
    }
    const QString silence = str("The server has not answered for ");
    PostgresServer server;
    QVERIFY(server.start());
    const QByteArray shop = PostgresServer::url("shop");
    std::string error;
    QVERIFY(TQCreateSampleStore(shop.constData(), {}, error));
    open(shop);
    QVERIFY(load());
    server.pause("shop");
    trigger(actions()->reload);
    QTRY_VERIFY_WITH_TIMEOUT(trouble().startsWith(silence), 3 * Board::PATIENCE);
    trigger(actions()->stop);
    QCOMPARE(trouble(), str("Loading was stopped."));
    retry();
    QTRY_VERIFY_WITH_TIMEOUT(trouble().startsWith(silence), 3 * Board::PATIENCE);
    QCOMPARE(names().size(), 573);
    server.resume("shop");
    QTRY_COMPARE_WITH_TIMEOUT(trouble(), QString(), TIMEOUT);

    server.pause("shop");
    trigger(actions()->reload);
    QTRY_VERIFY_WITH_TIMEOUT(trouble().startsWith(silence), 3 * Board::PATIENCE);
    server.stop();
    QTRY_VERIFY_WITH_TIMEOUT(trouble().startsWith(str("Loading failed: ")), TIMEOUT);
    QVERIFY(server.start());
    retry();
    QTRY_COMPARE_WITH_TIMEOUT(trouble(), QString(), TIMEOUT);
    QCOMPARE(names().size(), 573);
}

void tst_JobBoard::everythingIsReachedByKeys()
{
    jobs()->setFocus();
    press(Qt::Key_F, Qt::ControlModifier);
    QCOMPARE(QApplication::focusWidget(), search());
    QTest::keyClicks(search(), str("emma"));
    QTRY_COMPARE(names().size(), 4);
    press(Qt::Key_Tab);
    QCOMPARE(QApplication::focusWidget(), jobs());
    press(Qt::Key_Down);
    press(Qt::Key_Down, Qt::ShiftModifier);
    press(Qt::Key_C, Qt::ControlModifier);
    QCOMPARE(QApplication::clipboard()->text().count(QLatin1Char('\n')), 2);
    QTRY_VERIFY(!fields().isEmpty());
    QSet<QWidget *> visited;
    while (!visited.contains(QApplication::focusWidget())) {
        visited << QApplication::focusWidget();
        press(Qt::Key_Tab);
    }
    for (QWidget *pane : { static_cast<QWidget *>(sources()), static_cast<QWidget *>(jobs()),
             static_cast<QWidget *>(details()), static_cast<QWidget *>(search()) }) {
        QVERIFY2(visited.contains(pane), qPrintable(pane->objectName()));
    }
    jobs()->setFocus();
    press(Qt::Key_Return);
    QVERIFY(window->findChild<JobWindow *>());
    window->findChild<JobWindow *>()->close();
    window->activateWindow();
    jobs()->setFocus();
    press(Qt::Key_Escape);
    QTRY_COMPARE(names().size(), SAMPLE_JOBS);
    sql(str("DELETE FROM tq_job WHERE state = 0"));
    press(Qt::Key_F5);
    QTRY_COMPARE_WITH_TIMEOUT(names().size(), NOT_WAITING, TIMEOUT);
    press(Qt::Key_1, Qt::ControlModifier);  // waiting
    QCOMPARE(jobs()->placeholder(), str("No job is in this state."));
    press(Qt::Key_Q, Qt::ControlModifier);
    QVERIFY(!window->isVisible());
}

// Walks down what screen readers see.
void checkNames(QAccessibleInterface *thing)
{
    const QWidget *widget = qobject_cast<QWidget *>(thing->object());
    if (widget && widget->isVisible() && (widget->focusPolicy() & Qt::TabFocus)) {
        QVERIFY2(!thing->text(QAccessible::Name).isEmpty(), widget->metaObject()->className());
    }
    if (thing->role() == QAccessible::Table || thing->role() == QAccessible::Tree) {
        return;  // rows and cells have their texts
    }
    for (int i = 0; i < thing->childCount(); ++i) {
        if (QAccessibleInterface *child = thing->child(i)) {
            checkNames(child);
        }
    }
}

void tst_JobBoard::everyPaneHasANameForScreenReaders()
{
    checkNames(QAccessible::queryAccessibleInterface(&*window));
    for (const QAction *menu : window->menuBar()->actions()) {
        QVERIFY2(menu->text().contains(QLatin1Char('&')), qPrintable(menu->text()));
    }
}

void tst_JobBoard::germansReadGerman()
{
    const Language german { QLocale(QLocale::German) };
    const auto restore = qScopeGuard([before = QLocale()] { QLocale::setDefault(before); });
    QLocale::setDefault(QLocale(QLocale::German));
    open(url);
    QVERIFY(load());
    QCOMPARE(window->windowTitle(), str("Auftragstafel"));
    QCOMPARE(actions()->file->title(), str("&Datei"));
    QCOMPARE(rows(sources(), 1).first(), str("Alle Aufträge"));
    QCOMPARE(jobs()->headings().mid(0, 3),
        QStringList({ str("Auftrag"), str("Ausgabe"), str("Status") }));
    QVERIFY(status().startsWith(str("573 von 573 Aufträgen – aktualisiert ")));
    trigger(actions()->states[2]);
    QCOMPARE(jobs()->model()->index(0, JobModel::State).data().toString(), str("In Arbeit"));
    choose(jobs(), names()[0]);
    QTRY_VERIFY(fields().contains(str("Status | In Arbeit")));
    search()->setText(str("Plan"));
    QTRY_COMPARE(jobs()->placeholder(), str("Kein Auftrag enthält „Plan“."));
    spoil("tq_job");
    QVERIFY(reload());
    QVERIFY(trouble().startsWith(str("Laden fehlgeschlagen: ")));
}

void tst_JobBoard::otherLanguagesFallBackToEnglish()
{
    const auto jobIn = [](const QLocale &locale) {
        const Language language(locale);
        return QCoreApplication::translate("JobModel", "Job");
    };
    QCOMPARE(jobIn(QLocale(QLocale::German, QLocale::Austria)), str("Auftrag"));
    QCOMPARE(jobIn(QLocale(QLocale::English)), str("Job"));
    QCOMPARE(jobIn(QLocale(QLocale::Finnish)), str("Job"));
    QCOMPARE(jobIn(QLocale::c()), str("Job"));
}

// What is put into a text ("%1"), and how many keys ("&") its menu has.
QStringList marksOf(const QString &text)
{
    static const QRegularExpression mark(str("%[0-9]|&"));
    QStringList marks;
    for (auto found = mark.globalMatch(text); found.hasNext();) {
        marks << found.next().captured();
    }
    return sorted(marks);
}

void tst_JobBoard::translationsKeepWhatIsPutInAndTheKeysOfMenus()
{
    QFile file(str(TQXML_TRANSLATION));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const Xml translation(QString::fromUtf8(file.readAll()));
    const QDomNodeList messages = translation.root.elementsByTagName(str("message"));
    QVERIFY(!messages.isEmpty());
    for (int i = 0; i < messages.size(); ++i) {
        const QDomElement message = messages.at(i).toElement();
        const QString source = message.firstChildElement(str("source")).text();
        const QString translated = message.firstChildElement(str("translation")).text();
        QVERIFY2(marksOf(translated) == marksOf(source), qPrintable(source));
    }
}

void tst_JobBoard::textsStandOutInBothThemes()
{
    const QPair<QPalette::ColorRole, QPalette::ColorRole> pairs[] = { { QPalette::WindowText,
                                                                          QPalette::Window },
        { QPalette::Text, QPalette::Base }, { QPalette::Text, QPalette::AlternateBase },
        { QPalette::ButtonText, QPalette::Button }, { QPalette::PlaceholderText, QPalette::Base },
        { QPalette::ToolTipText, QPalette::ToolTipBase },
        { QPalette::HighlightedText, QPalette::Highlight }, { QPalette::Link, QPalette::Base } };
    for (const Theme theme : { Theme::Light, Theme::Dark }) {
        setTheme(theme);
        const QPalette palette = QApplication::palette();
        for (const auto &[text, ground] : pairs) {
            const double found = contrast(palette.color(text), palette.color(ground));
            QVERIFY2(found >= READABLE, qPrintable(str("%1 on %2").arg(text).arg(ground)));
        }
        for (int state = 0; state < stateNames().size(); ++state) {
            const auto mark = stateColour(state).value<QColor>();
            QVERIFY2(contrast(mark, palette.color(QPalette::Base)) >= READABLE,
                qPrintable(stateName(state)));
        }
    }
    setTheme(Theme::Light);
}

void tst_JobBoard::theWindowFitsASmallScreen()
{
    const QSize least = window->minimumSizeHint();
    QVERIFY2(least.width() <= SMALL_SCREEN.width() / 2, qPrintable(QString::number(least.width())));
    QVERIFY2(
        least.height() <= SMALL_SCREEN.height() / 2, qPrintable(QString::number(least.height())));
}

// Pictures for doc/. The larger one is taken by another process, at that scale.
void tst_JobBoard::pictures()
{
    const bool isLarge = qEnvironmentVariableIsSet("TQXML_LARGE");
    window->resize(SMALL_SCREEN);
    choose(sources(), str("Digital Press Colour"));
    choose(jobs(), names()[5]);
    QTRY_VERIFY(!fields().isEmpty());
    auto *packets = window->findChild<QTableView *>(str("packets"));
    packets->setCurrentIndex(packets->model()->index(2, 0));
    const QString folderOfPictures = QCoreApplication::applicationDirPath();
    const auto take = [&](const char *name) {
        QTest::qWait(50);
        QVERIFY(window->grab().save(folderOfPictures + str(name)));
    };
    if (isLarge) {
        take("/jobboard-2x.png");
        return;
    }
    take("/jobboard.png");
    trigger(actions()->themes[size_t(Theme::Dark)]);
    take("/jobboard-dark.png");
    trigger(actions()->themes[size_t(Theme::Light)]);
    QProcess large;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(str("TQXML_LARGE"), str("1"));
    environment.insert(str("QT_SCALE_FACTOR"), str("2"));
    large.setProcessEnvironment(environment);
    large.start(QCoreApplication::applicationFilePath(), { str("pictures") });
    QVERIFY(large.waitForFinished(TIMEOUT));
    QCOMPARE(large.exitCode(), 0);
    QCOMPARE(QImage(folderOfPictures + str("/jobboard-2x.png")).size(), SMALL_SCREEN * 2);
}

void tst_JobBoard::manyJobs()
{
    constexpr int JOBS = 20000;
    url += "-many";
    std::string error;
    QVERIFY(TQCreateGeneratedStore(url.constData(), JOBS, {}, error));
    open(url);
    qint64 longest = 0;  // turn of the event loop, ms
    while (window->board().isLoading()) {
        QElapsedTimer turn;
        turn.start();
        QCoreApplication::processEvents();
        longest = std::max(longest, turn.elapsed());
    }
    QCOMPARE(names().size(), JOBS);
    QVERIFY2(longest <= 400 * TQXML_SLOWNESS, qPrintable(QString::number(longest)));
    search()->setText(str("p. 7"));
    QTRY_VERIFY(names().size() < JOBS);
}

QTEST_MAIN(tst_JobBoard)
#include "tst_jobboard.moc"

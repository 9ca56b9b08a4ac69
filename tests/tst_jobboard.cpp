#include "look.h"
#include "mainwindow.h"
#include "util.h"
#include "xmlui.h"

#include "tqstore.h"

#include <QtSql>
#include <QtWidgets>

#include <ctime>

namespace {

// Processor time, which other programs do not lengthen; in ms.
qint64 work() { return qint64(std::clock()) * 1000 / CLOCKS_PER_SEC; }

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

QStringList jobsWhere(const char *condition)
{
    const QString select = str("SELECT j.name FROM tq_job j JOIN tq_output o ON o.id = output_id "
                               "LEFT JOIN tq_book b ON b.id = book_id LEFT JOIN tq_publication p "
                               "ON p.id = publication_id WHERE ");
    return sql(select + str(condition));
}

// Makes the names in a table unreadable where a condition holds; mend() undoes it.
void spoil(const QString &table, const QString &condition)
{
    const QString name = str("iif(%1, abs(-9223372036854775807 - 1), aside)").arg(condition);
    sql(str("ALTER TABLE %1 RENAME COLUMN name TO aside").arg(table));
    sql(str("ALTER TABLE %1 ADD COLUMN name AS (%2)").arg(table, name));
}
void mend(const QString &table)
{
    sql(str("ALTER TABLE %1 DROP COLUMN name").arg(table));
    sql(str("ALTER TABLE %1 RENAME COLUMN aside TO name").arg(table));
}

// The rows of a view, and after each those below it: the texts and colours of some columns.
QStringList rows(const QAbstractItemView *view, int columns, const QModelIndex &top = {})
{
    QStringList list;
    for (int y = 0; y < view->model()->rowCount(top); ++y) {
        QStringList row;
        for (int x = 0; x < columns; ++x) {
            const QModelIndex cell = view->model()->index(y, x, top);
            const QVariant colour = cell.data(Qt::DecorationRole);
            row << cell.data().toString() +
                    (colour.isNull() ? QString() : colour.value<QColor>().name());
        }
        list << row.join(str(" | ")) << rows(view, columns, view->model()->index(y, 0, top));
    }
    return list;
}

QStringList sorted(QStringList list) { return list.sort(), list; }

void click(QWidget *widget, QPoint at = {}) { QTest::mouseClick(widget, Qt::LeftButton, {}, at); }

void choose(QAbstractItemView *view, const QString &name)
{
    const auto how = Qt::MatchExactly | Qt::MatchRecursive;
    const QModelIndex first = view->model()->index(0, 0);
    const QModelIndex row = view->model()->match(first, 0, name, 1, how).value(0);
    view->scrollTo(row);
    click(view->viewport(), view->visualRect(row).center());
}

}  // namespace

class tst_JobBoard : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void columnsShowWhatIsStored();
    void sourcesCountTheirJobs();
    void aSourceShowsItsJobs();
    void stateAndNameNarrowTheJobs();
    void theChosenJobShowsItsFields();
    void detailsFollowTheChoice();
    void aJobThatCannotBeReadIsNotShown();
    void aReloadReadsTheChosenJobAgain();
    void aFailedReloadKeepsWhatWasThere_data();
    void aFailedReloadKeepsWhatWasThere();
    void aLoadThatEndsEarlySaysSo();
    void aPageChecksAndUnchecks();
    void packetsAreShownWhole();
    void theLogForgetsTheOldest();
    void bothLooksShowWholeRows();
    void manyJobs();

private:
    // Opens the window over a store, which something may happen to before it is loaded.
    void open(
        const QByteArray &url, const std::function<void()> &meanwhile = [] {});
    bool isLoaded() const { return !button(Tool::Stop)->isVisible(); }
    bool load() const
    {
        return QTest::qWaitFor([this] { return isLoaded(); }, 60000);
    }
    bool reload() const { return press(Tool::Reload), load(); }

    ActionBar *bar() const { return window->findChild<ActionBar *>(); }
    QAction *button(int type) const { return bar()->shown(type); }
    void press(int type) const { click(bar()->widgetForAction(button(type))); }
    QString checked() const;
    QTreeView *sources() const { return window->findChild<QTreeView *>(str("sources")); }
    QTableView *jobs() const { return window->findChild<QTableView *>(str("jobs")); }
    QStringList names() const { return rows(jobs(), 1); }
    QTreeView *details() const { return window->findChild<QTreeView *>(str("detail")); }
    QStringList fields() const { return rows(details(), 2); }
    QTreeView *packets() const { return window->findChild<QTreeView *>(str("packets")); }
    QPlainTextEdit *packet() const { return window->findChild<QPlainTextEdit *>(); }
    QString status() const { return window->findChild<QLabel *>(str("counts"))->text(); }
    void type(const char *name) { QTest::keyClicks(window->findChild<QLineEdit *>(), str(name)); }

    QTemporaryDir folder;
    QByteArray url;  // of a new store
    std::optional<TQCommServer> server;
    std::optional<MainWindow> window;
};

void tst_JobBoard::initTestCase()
{
    setUpLook();
    QSqlDatabase::addDatabase(str("QSQLITE"));
}

void tst_JobBoard::init()
{
    const QString path = folder.filePath(QUuid::createUuid().toString());
    url = "sqlite:" + path.toUtf8();
    std::string error;
    QVERIFY(TQCreateSampleStore(url.constData(), {}, error));
    QSqlDatabase store = QSqlDatabase::database();
    store.setDatabaseName(path);
    QVERIFY(store.open());
    open(url);
    QVERIFY(load());
}

void tst_JobBoard::open(const QByteArray &at, const std::function<void()> &meanwhile)
{
    window.reset();
    server.emplace(at.constData());
    meanwhile();
    window.emplace(*server);
    window->show();
}

QString tst_JobBoard::checked() const
{
    QStringList texts;
    for (const QAction *each : bar()->actions()) {
        texts << (each->isChecked() ? QStringList(each->text()) : QStringList());
    }
    return texts.join(str(", "));
}

void tst_JobBoard::columnsShowWhatIsStored()
{
    QStringList headings;
    for (int i = 0; i < JobModel::ColumnCount; ++i) {
        headings << jobs()->model()->headerData(i, Qt::Horizontal).toString();
    }
    QCOMPARE(headings.join(str("|")), str("Job|Output|State|Colours|Created|Copies|Priority"));
    const QString stored =
        str("SELECT printf('%s | %s | %s | %s | %s | %d | %d', j.name, o.name, CASE state WHEN 0 "
            "THEN 'Waiting#8a9299' WHEN 1 THEN 'In progress#e8a317' ELSE 'Done#3fa34d' END, "
            "replace(replace(j.colours, char(10), ' + '), 'Cyan + Magenta + Yellow + Black', "
            "'CMYK'), replace(substr(created, 1, 16), 'T', ' '), copies, priority) "
            "FROM tq_job j JOIN tq_output o ON o.id = output_id");
    QCOMPARE(sorted(rows(jobs(), JobModel::ColumnCount)), sorted(sql(stored)));
}

void tst_JobBoard::sourcesCountTheirJobs()
{
    sql(str("UPDATE tq_book SET name = 'Emma' WHERE name = 'Dracula'"));  // still two books
    QVERIFY(reload());
    QStringList counts = sql(str("SELECT 'All jobs | ' || count(*) FROM tq_job"));
    for (const char *group : { "output", "publication", "book" }) {
        counts << sql(str("SELECT s.name || ' | ' || count(*) FROM tq_job JOIN tq_%1 s "
                          "ON s.id = %1_id GROUP BY s.id")
                          .arg(str(group)));
    }
    counts << str("Outputs | ") << str("Publications | ") << str("Books | ");
    QCOMPARE(sorted(rows(sources(), 2)), sorted(counts));
}

void tst_JobBoard::aSourceShowsItsJobs()
{
    for (const auto &[source, condition] : { std::pair { "Outputs", "1" },
             { "Publications", "publication_id IS NOT NULL" }, { "Books", "book_id IS NOT NULL" },
             { "Proofer 44", "o.name = 'Proofer 44'" }, { "Emma", "b.name = 'Emma'" } }) {
        choose(sources(), str(source));
        QCOMPARE(sorted(names()), sorted(jobsWhere(condition)));
        QCOMPARE(jobs()->isColumnHidden(JobModel::Output), !qstrcmp(source, "Proofer 44"));
    }
    jobs()->sortByColumn(JobModel::Copies, Qt::AscendingOrder);
    QCOMPARE(names(), jobsWhere("b.name = 'Emma' ORDER BY copies"));
    jobs()->sortByColumn(JobModel::Name, Qt::AscendingOrder);
    choose(sources(), str("Revue du Métier 2"));  // page 12 comes after page 4
    QCOMPARE(names(), jobsWhere("p.name = 'Revue du Métier 2' ORDER BY page"));
    click(jobs()->horizontalHeader()->viewport(), { 9, 9 });
    QCOMPARE(names(), jobsWhere("p.name = 'Revue du Métier 2' ORDER BY page DESC"));
}

void tst_JobBoard::stateAndNameNarrowTheJobs()
{
    for (const auto &[tool, condition] :
        { std::pair { Tool::OnlyWaiting, "state = 0" }, { Tool::OnlyInProgress, "state = 1" },
            { Tool::AnyState, "1" }, { Tool::OnlyDone, "state = 2" } }) {
        press(tool);
        press(tool);  // which stays checked
        QCOMPARE(sorted(names()), sorted(jobsWhere(condition)));
        QCOMPARE(checked(), button(tool)->text() + str(", Details, Packets"));
    }
    choose(sources(), str("Books"));
    type("P. 7");
    const QStringList found = jobsWhere("book_id > 0 AND state = 2 AND j.name LIKE '%p. 7%'");
    QCOMPARE(sorted(names()), sorted(found));
    QCOMPARE(status(), str("%1 of 573 jobs").arg(found.size()));
}

void tst_JobBoard::theChosenJobShowsItsFields()
{
    sql(str("UPDATE tq_icc_profile SET device_class = 'prtr', size = 3, data = x'010203'"));
    sql(str("UPDATE tq_job SET publication_id = (SELECT min(id) FROM tq_publication), options = 5, "
            "trim_box = '10 20 110.5 220.5', bleed = 2.5, colours = 'Cyan\nBlack\nGold', "
            "coverage = '1 2 3', remark = 'Mind' WHERE name = 'Emma p. 294'"));
    QVERIFY(reload());
    choose(jobs(), str("Emma p. 294"));
    QTRY_COMPARE(fields().join(str(", ")),
        str("Name | Emma p. 294, Publication | Revue du Métier 1, Page | 294, "
            "State | In progress, Priority | 1, Copies | 1500, Trim box (pt) | 100.5 × 200.5, "
            "Bleed (mm) | 2.5, Colours | Cyan + Black + Gold, Coverage (%) | 1, 2, 3, "
            "Options | trapped, proofed, Created | 2024-03-01 17:17, Remark | Mind, "
            "Output | Platesetter A1 North, Name | Platesetter A1 North, "
            "Technology | platesetter, Resolution (dpi) | 2400, Width (pt) | 1757.48, "
            "Height (pt) | 2551.18, Colours | CMYK + Spot 1 + Spot 2, "
            "Rulings (lpi) | 150, 175, 200, 240, Location | Hall 1, north side, "
            "Installed | 2016-11-07, Book | Emma, Title | Emma, Author | Jane Austen, Pages | 474, "
            "First published | 1815, Language | en, Page size (mm) | 135 × 216, "
            "Subjects | Novel, Manners, Owner | Lantern Row Press, Name | Lantern Row Press, "
            "City | London, Country | United Kingdom, Founded | 1908, ICC profile | Gray-CIE_L, "
            "Name | Gray-CIE_L, File | Gray-CIE_L.icc, Device class | printer, "
            "Colour space | GRAY, Version | 2.3, Size (bytes) | 3, Data | 3 bytes"));
}

void tst_JobBoard::detailsFollowTheChoice()
{
    QVERIFY(!button(Tool::CopyXml)->isEnabled());
    choose(jobs(), names()[4]);
    QTest::keyClick(jobs(), Qt::Key_Down);
    QTRY_COMPARE(fields().value(0), str("Name | ") + names()[5]);
    press(Tool::CopyXml);
    QCOMPARE(XMLPacketable::getName(Xml(QApplication::clipboard()->text()).root), names()[5]);
    type("no such job");
    QTRY_COMPARE(fields(), QStringList());
    QVERIFY(!button(Tool::CopyXml)->isEnabled());
}

void tst_JobBoard::aJobThatCannotBeReadIsNotShown()
{
    const QString notShown = str("573 of 573 jobs – the chosen job is not shown: ");
    choose(jobs(), names()[0]);
    QTRY_COMPARE(fields().value(0), str("Name | ") + names()[0]);
    spoil(str("tq_output"), str("1"));
    choose(jobs(), names()[1]);
    QTRY_COMPARE(fields(), QStringList());
    QCOMPARE(status(), notShown + str(server->errorText()));
    mend(str("tq_output"));
    choose(jobs(), names()[2]);
    QTRY_COMPARE(fields().value(0), str("Name | ") + names()[2]);
    QCOMPARE(status(), str("573 of 573 jobs"));
    sql(str("DELETE FROM tq_job"));
    choose(jobs(), names()[3]);
    QTRY_COMPARE(status(), notShown + str("it is not in the store any more"));
}

void tst_JobBoard::aReloadReadsTheChosenJobAgain()
{
    choose(sources(), str("Emma"));
    const QStringList before = names();
    choose(jobs(), before[1]);
    QTRY_VERIFY(!fields().isEmpty());
    sql(str("DELETE FROM tq_job WHERE name = '%1'").arg(before[0]));
    sql(str("UPDATE tq_job SET remark = 'Changed'"));
    QVERIFY(reload());
    QCOMPARE(names(), before.mid(1));
    QTRY_VERIFY(fields().contains(str("Remark | Changed")));
    QCOMPARE(fields().value(0), str("Name | ") + before[1]);
}

void tst_JobBoard::aFailedReloadKeepsWhatWasThere_data()
{
    QTest::addColumn<QString>("table");
    QTest::addColumn<QString>("unreadable");
    QTest::newRow("outputs") << str("tq_output") << str("1");
    QTest::newRow("one owner's books") << str("tq_book") << str("year = 1815");
    QTest::newRow("some outputs' jobs") << str("tq_job") << str("remark = 'Proof approved'");
}

void tst_JobBoard::aFailedReloadKeepsWhatWasThere()
{
    QFETCH(QString, table);
    QFETCH(QString, unreadable);
    const QStringList before = names() + rows(sources(), 2);
    sql(str("DELETE FROM tq_job WHERE state = 0"));
    spoil(table, unreadable);
    QVERIFY(reload());
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    QVERIFY(box);
    QCOMPARE(box->text(), str(server->errorText()));
    QCOMPARE(status(), str("573 of 573 jobs – as loaded before – loading failed: ") + box->text());
    QCOMPARE(names() + rows(sources(), 2), before);
    box->accept();
    mend(table);
    QVERIFY(reload());
    QCOMPARE(status(), str("458 of 458 jobs"));
}

void tst_JobBoard::aLoadThatEndsEarlySaysSo()
{
    press(Tool::Reload);
    QVERIFY(!button(Tool::Reload)->isVisible());
    press(Tool::Stop);
    QVERIFY(load());
    QCOMPARE(status(), str("573 of 573 jobs – as loaded before – loading was stopped"));

    open(url, [] { spoil(str("tq_book"), str("year = 1815")); });  // one book of many
    QVERIFY(load());
    const QString failed = str("0 of 0 jobs – not all – loading failed: ");
    QCOMPARE(status(), failed + str(server->errorText()));
    QCOMPARE(rows(sources(), 1).constLast(), str("Books"));
    QVERIFY(status().endsWith(str(": integer overflow")));  // nothing was read after that
}

void tst_JobBoard::aPageChecksAndUnchecks()
{
    XMLAction only(str("Ready"), Tool::OnlyDone, 1);
    only.setCheckable(true);
    only.setChecked(true);
    XMLUI page(str("tools"));
    page.append(only);
    auto *sent = new XMLPacket;
    sent->append(page);
    bar()->receive(sent);
    QCOMPARE(checked(), str("Ready, Details, Packets"));
    QCOMPARE(sorted(names()), sorted(jobsWhere("state = 2")));
    press(Tool::ShowDetails);
    QVERIFY(!details()->isVisible());
    press(Tool::ShowPackets);
    QVERIFY(!packets()->isVisible());
    QVERIFY(reload());
    QCOMPARE(checked(), str("Done"));
}

void tst_JobBoard::packetsAreShownWhole()
{
    const QStringList log = rows(packets(), PacketLog::ColumnCount);
    const int reply = int(log.size()) - 4;  // after the page, twice, and the first request
    packets()->setCurrentIndex(packets()->model()->index(reply, 0));
    const QString shown = packet()->toPlainText();
    const QString size = QLocale().formattedDataSize(shown.toUtf8().size());
    QCOMPARE(log[reply].section(str(" | "), 1),
        str("received | Server bridge → Job list | 5 items | ") + size);
    const Xml whole(shown);
    const QDomNodeList items = whole.root.lastChildElement().childNodes();
    for (int i = 0; i < 5; ++i) {
        const QString name = sql(str("SELECT name FROM tq_output ORDER BY name")).value(i);
        QCOMPARE(XMLPacketable::getName(items.at(i).toElement()), name);
    }
}

void tst_JobBoard::theLogForgetsTheOldest()
{
    PacketLog log;
    for (int i = 0; i < 501; ++i) {
        log.add(PacketLog::Sent, *std::make_unique<XMLPacket>());
    }
    QCOMPARE(log.headerData(PacketLog::Content, Qt::Horizontal).toString(),
        str("Content (the last 500 packets)"));
    XMLPacket large;  // larger than is kept of one packet, and hardly to be compressed
    QByteArray noise(48 * 1024, 0);
    for (quint32 i = 0; i < 20; ++i) {
        QRandomGenerator(i).fillRange(reinterpret_cast<quint32 *>(noise.data()), 12 * 1024);
        XMLMessage message(str(noise.toBase64()));
        large.append(message);
    }
    for (int i = 0; i < 20; ++i) {
        log.add(PacketLog::Sent, large);
    }
    QVERIFY(log.rowCount() < 20);
    QVERIFY(log.text(0).endsWith(str(" more")));
}

void tst_JobBoard::bothLooksShowWholeRows()
{
    choose(sources(), str("Digital Press Colour"));
    choose(jobs(), names()[5]);
    QTRY_VERIFY(!fields().isEmpty());
    packets()->setCurrentIndex(packets()->model()->index(2, 0));
    bar()->widgetForAction(button(Tool::Reload))->setAttribute(Qt::WA_UnderMouse, false);
    for (const bool isDark : { false, true }) {
        QTest::qWait(50);
        for (const auto *view : window->findChildren<QAbstractItemView *>()) {
            const QRect room = view->viewport()->rect();
            const QRect last = view->visualRect(view->indexAt(room.bottomLeft()));
            QVERIFY2(last.bottom() <= room.bottom(), qPrintable(view->objectName()));
        }
        const QRect room = packet()->viewport()->rect();
        const QTextCursor last = packet()->cursorForPosition(room.bottomLeft());
        QVERIFY(packet()->cursorRect(last).bottom() <= room.bottom());
        const QString picture = str(isDark ? "/jobboard-dark.png" : "/jobboard.png");
        QVERIFY(window->grab().save(QCoreApplication::applicationDirPath() + picture));
        QCOMPARE(jobs()->palette().base() != Qt::white, isDark);
        press(Tool::DarkLook);
    }
}

void tst_JobBoard::manyJobs()
{
    url += "-many";
    std::string error;
    QVERIFY(TQCreateGeneratedStore(url.constData(), 20000, {}, error));
    open(url);
    qint64 first = 0;  // turn of the event loop, with rows
    qint64 longest = 0;
    QString preferred;
    while (!isLoaded()) {
        const qint64 before = work();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        if (first == 0 && jobs()->model()->rowCount() > 0) {
            jobs()->viewport()->repaint();
            first = work() - before;
            preferred = rows(sources(), 1, sources()->model()->index(1, 0)).constLast();
            choose(sources(), preferred);
        }
        longest = std::max(longest, work() - before);
    }
    QVERIFY2(first <= 200 * TQXML_SLOWNESS, qPrintable(QString::number(first)));
    QVERIFY2(longest <= 400 * TQXML_SLOWNESS, qPrintable(QString::number(longest)));
    QFile memory(str("/proc/self/status"));
    QVERIFY(memory.open(QIODevice::ReadOnly));
    const QString peak = QString::fromUtf8(memory.readAll()).section(str("VmHWM:"), 1);
    QVERIFY(peak.section(str(" kB"), 0, 0).toInt() < 256 * 1024 * TQXML_SLOWNESS);
    const QStringList requests = rows(packets(), 4).filter(str("request for jobs on "));
    QVERIFY(requests.value(83).endsWith(preferred));  // of 85, the newest first
    choose(sources(), str("All jobs"));
    QCOMPARE(names().size(), 20000);
    const qint64 before = work();
    jobs()->sortByColumn(JobModel::Created, Qt::AscendingOrder);
    QVERIFY(work() - before <= 200 * TQXML_SLOWNESS);
}

QTEST_MAIN(tst_JobBoard)
#include "tst_jobboard.moc"

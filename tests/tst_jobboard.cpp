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

// Takes a table away, and brings it back.
void spoil(const char *table) { sql(str("ALTER TABLE %1 RENAME TO gone").arg(str(table))); }
void mend(const char *table) { sql(str("ALTER TABLE gone RENAME TO %1").arg(str(table))); }

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
    void theWindowShowsWhatIsStored();
    void stateAndNameNarrowTheJobs();
    void tablesAreSortedByTheirHeadings();
    void detailsFollowTheChoice();
    void aJobThatCannotBeReadIsNotShown();
    void aReloadReadsTheChosenJobAgain();
    void aFailedReloadKeepsWhatWasThere();
    void aLoadThatEndsEarlySaysSo();
    void aPageChecksAndUnchecks();
    void packetsAreShownWhole();
    void theLogForgetsTheOldest();
    void bothLooksShowWholeRows();
    void manyJobs();

private:
    // Opens the window over the store of the server.
    void open();
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
    server.emplace(url.constData());
    open();
    QVERIFY(load());
}

void tst_JobBoard::open()
{
    window.reset();
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
    QStringList columns;
    for (int i = 0; i < JobModel::ColumnCount; ++i) {
        columns << jobs()->model()->headerData(i, Qt::Horizontal).toString();
    }
    const QStringList headings { columns.join(str(" | ")) };
    for (const char *source : { "Emma", "Revue du Métier 2" }) {
        choose(sources(), str(source));
        show(str(source), headings + rows(jobs(), JobModel::ColumnCount));
        QVERIFY(!jobs()->isColumnHidden(JobModel::Output));
    }
    choose(sources(), str("Emma"));
    choose(jobs(), str("Emma p. 294"));
    QTRY_VERIFY(!fields().isEmpty());
    show(str("Emma p. 294"), fields());
    choose(sources(), str("Proofer 44"));
    QCOMPARE(names().size(), sql(str("SELECT id FROM tq_job WHERE output_id = 1073741828")).size());
    QVERIFY(jobs()->isColumnHidden(JobModel::Output));  // the same in each row
    QCOMPARE(shown << QString(), recorded);
}

void tst_JobBoard::stateAndNameNarrowTheJobs()
{
    const QString select = str("SELECT name FROM tq_job WHERE ");
    for (const auto &[tool, condition] :
        { std::pair { Tool::OnlyWaiting, "state = 0" }, { Tool::OnlyInProgress, "state = 1" },
            { Tool::AnyState, "1" }, { Tool::OnlyDone, "state = 2" } }) {
        press(tool);
        press(tool);  // which stays checked
        QCOMPARE(sorted(names()), sorted(sql(select + str(condition))));
        QCOMPARE(checked(), button(tool)->text() + str(", Details, Packets"));
    }
    choose(sources(), str("Books"));
    type("P. 7");
    const QStringList found = sql(select + str("book_id > 0 AND state = 2 AND name LIKE '%p. 7%'"));
    QCOMPARE(sorted(names()), sorted(found));
    QCOMPARE(status(), str("%1 of 573 jobs").arg(found.size()));
}

void tst_JobBoard::tablesAreSortedByTheirHeadings()
{
    const QString select = str("SELECT name FROM tq_job WHERE publication_id = (SELECT id FROM "
                               "tq_publication WHERE name = 'Revue du Métier 2') ORDER BY ");
    choose(sources(), str("Revue du Métier 2"));
    QCOMPARE(names(), sql(select + str("page")));  // page 12 comes after page 4
    click(jobs()->horizontalHeader()->viewport(), { 9, 9 });
    QCOMPARE(names(), sql(select + str("page DESC")));
    jobs()->sortByColumn(JobModel::Created, Qt::AscendingOrder);
    QCOMPARE(names(), sql(select + str("created")));
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
    QTRY_VERIFY(!fields().isEmpty());
    spoil("tq_output");
    choose(jobs(), names()[1]);
    QTRY_COMPARE(fields(), QStringList());
    QCOMPARE(status(), notShown + str(server->errorText()));
    mend("tq_output");
    choose(jobs(), names()[2]);
    QTRY_COMPARE(status(), str("573 of 573 jobs"));
    sql(str("DELETE FROM tq_job"));
    choose(jobs(), names()[3]);
    QTRY_COMPARE(status(), notShown + str("it is not in the store any more"));
}

void tst_JobBoard::aReloadReadsTheChosenJobAgain()
{
    choose(jobs(), names()[1]);
    QTRY_VERIFY(!fields().isEmpty());
    const QString chosen = fields()[0];
    sql(str("UPDATE tq_job SET remark = 'Changed'"));
    QVERIFY(reload());
    QTRY_VERIFY(fields().contains(str("Remark | Changed")));
    QCOMPARE(fields()[0], chosen);
}

void tst_JobBoard::aFailedReloadKeepsWhatWasThere()
{
    const QStringList before = names() + rows(sources(), 2);
    sql(str("DELETE FROM tq_job WHERE state = 0"));
    spoil("tq_job");
    QVERIFY(reload());
    auto *box = qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
    QVERIFY(box);
    QCOMPARE(box->text(), str(server->errorText()));
    QCOMPARE(status(), str("573 of 573 jobs – as loaded before – loading failed: ") + box->text());
    QCOMPARE(names() + rows(sources(), 2), before);
    box->accept();
    mend("tq_job");
    QVERIFY(reload());
    QCOMPARE(status(), str("458 of 458 jobs"));
}

void tst_JobBoard::aLoadThatEndsEarlySaysSo()
{
    press(Tool::Reload);
    press(Tool::Stop);
    QVERIFY(load());
    QCOMPARE(status(), str("573 of 573 jobs – as loaded before – loading was stopped"));
    spoil("tq_book");
    open();
    QVERIFY(load());
    const QString failed = str("0 of 0 jobs – not all – loading failed: ");
    QCOMPARE(status(), failed + str(server->errorText()));
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
    QCOMPARE(status(), str("343 of 573 jobs"));
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
    QCOMPARE(Xml(shown).root.lastChildElement().childNodes().count(), 5);
}

void tst_JobBoard::theLogForgetsTheOldest()
{
    PacketLog log;
    for (int i = 0; i < 501; ++i) {
        log.add(PacketLog::Sent, *std::make_unique<XMLPacket>());
    }
    QCOMPARE(log.rowCount(), 500);
    QCOMPARE(log.headerData(PacketLog::Content, Qt::Horizontal).toString(),
        str("Content (the last 500 packets)"));
}

void tst_JobBoard::bothLooksShowWholeRows()
{
    choose(sources(), str("Digital Press Colour"));
    choose(jobs(), names()[5]);
    QTRY_VERIFY(!fields().isEmpty());
    packets()->setCurrentIndex(packets()->model()->index(2, 0));
    bar()->widgetForAction(button(Tool::Reload))->setAttribute(Qt::WA_UnderMouse, false);
    for (const char *picture : { "/jobboard.png", "/jobboard-dark.png" }) {
        QTest::qWait(50);
        for (const auto *view : window->findChildren<QAbstractItemView *>()) {
            const QRect room = view->viewport()->rect();
            const QRect last = view->visualRect(view->indexAt(room.bottomLeft()));
            QVERIFY2(last.bottom() <= room.bottom(), qPrintable(view->objectName()));
        }
        QVERIFY(window->grab().save(QCoreApplication::applicationDirPath() + str(picture)));
        press(Tool::DarkLook);
    }
}

void tst_JobBoard::manyJobs()
{
    url += "-many";
    std::string error;
    QVERIFY(TQCreateGeneratedStore(url.constData(), 20000, {}, error));
    window.reset();
    server.emplace(url.constData());
    open();
    qint64 longest = 0;  // turn of the event loop
    QString preferred;
    while (!isLoaded()) {
        const qint64 before = work();
        QCoreApplication::processEvents();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        longest = std::max(longest, work() - before);
        if (preferred.isEmpty() && jobs()->model()->rowCount() > 0) {
            preferred = rows(sources(), 1, sources()->model()->index(1, 0)).constLast();
            choose(sources(), preferred);
        }
    }
    QVERIFY2(longest <= 400 * TQXML_SLOWNESS, qPrintable(QString::number(longest)));
    const QStringList requests = rows(packets(), 4).filter(str("request for jobs on "));
    QVERIFY(requests.value(83).endsWith(preferred));  // of 85, the newest first
    choose(sources(), str("All jobs"));
    QCOMPARE(names().size(), 20000);
}

QTEST_MAIN(tst_JobBoard)
#include "tst_jobboard.moc"

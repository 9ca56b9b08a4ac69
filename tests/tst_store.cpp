#include "stores.h"

#include <QRegularExpression>
#include <QtEndian>

#include <sched.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

const QString PROFILES = str("/usr/share/color/icc/");

// Where a profile has what.
constexpr int SIZE_AT = 0;
constexpr int VERSION_AT = 8;
constexpr int CLASS_AT = 12;
constexpr int SPACE_AT = 16;
constexpr int SIGNATURE_AT = 36;
constexpr int TAG_COUNT_AT = 128;
constexpr int FIRST_TAG_OFFSET_AT = 136;

void setNumber(QByteArray &profile, int at, quint32 number)
{
    qToBigEndian(number, profile.data() + at);
}

using Damage = std::function<void(QByteArray &profile)>;

}  // namespace

Q_DECLARE_METATYPE(Damage)

class tst_Store : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_stores.start()); }
    void init();
    void everySystemProfileIsImported();
    void whatIsNoWholeProfileIsRefused_data();
    void whatIsNoWholeProfileIsRefused();
    void onlyRegularFilesAreProfiles();
    void onlyFilesOfTheLibrarysOwnFormAreOpened_data();
    void onlyFilesOfTheLibrarysOwnFormAreOpened();
    void ofSeveralThatCreateAStoreOneSucceeds_data() { Stores::addDatabases(); }
    void ofSeveralThatCreateAStoreOneSucceeds();
    void whatAKilledCreatorLeftIsRemoved();
    void aCreatorAtWorkIsLeftAlone();
    void linksOfOthersAreNotFollowed();
    void theLogOfADeletedStoreIsNotTakenOver();
    void aNewStoreLetsReadersAndAWriterWorkAtATime();
    void aNameThatBeginsWithAColonIsOne();
    void eachTableHoldsItsIdsToARangeOfItsOwn_data() { Stores::addDatabases(); }
    void eachTableHoldsItsIdsToARangeOfItsOwn();
    void importsAtATimeAllSucceed_data() { Stores::addDatabases(); }
    void importsAtATimeAllSucceed();
    void anImportTakesAllFromTheFile();
    void anImportThatFailsOrIsStoppedChangesNothing();
    void theSampleHoldsItsBooksAndJobs();
    void aTableOfAnotherSchemaIsNoStore();

private:
    QString path(const char *name) const { return m_stores.path(str(name)); }
    QByteArray url(const char *name) const { return m_stores.url(name); }
    // The URL of a store of the current row's kind.
    QByteArray urlOfRow(const char *name) const
    {
        QFETCH(bool, isPostgres);
        return m_stores.url(name, isPostgres);
    }
    // What there is of files and folders that belong to a store.
    QStringList remainsOf(const char *name) const;
    // The URL of a file with the sample.
    QByteArray sample(const char *name) const { return m_stores.sample(name); }

    Stores m_stores;
};

namespace {

// A process of its own that does some work, alone with its process id in a container where the
// system allows that, and what it answers.
class Child
{
public:
    explicit Child(const std::function<QString()> &work)
    {
        if (!m_answer.open()) {
            qFatal("no file for a child's answer");
        }
        m_process = fork();
        if (m_process == 0) {
            prctl(PR_SET_PDEATHSIG, SIGKILL);
            unshare(CLONE_NEWPID);  // for the next process
            const pid_t inner = fork();
            if (inner == 0) {
                m_answer.write(work().toUtf8());
                m_answer.flush();
                _exit(0);
            }
            int status = 0;
            waitpid(inner, &status, 0);
            _exit(0);
        }
    }
    QString answer()
    {
        int status = 0;
        waitpid(m_process, &status, 0);
        return QString::fromUtf8(contentOf(m_answer.fileName()));
    }

private:
    QTemporaryFile m_answer;
    pid_t m_process;
};

// What goes wrong when a store is opened; empty when nothing does.
QString openError(const QByteArray &url) { return str(TQCommServer(url.constData()).errorText()); }

// Runs statements that a database must accept.
void execute(const QByteArray &url, const QByteArrayList &statements)
{
    for (const QByteArray &statement : statements) {
        QString error;
        sql(url, statement, &error);
        QCOMPARE(error, QString());
    }
}

using Keys = std::vector<TQKEY_ELEMENT>;

// What goes wrong when files are imported; empty when nothing does.
QString importError(const QByteArray &url, const QStringList &files, Keys *keys = nullptr,
    const TQPROGRESS &progress = {})
{
    std::vector<std::string> paths;
    for (const QString &file : files) {
        paths.push_back(file.toStdString());
    }
    std::string error;
    TQImportProfiles(url.constData(), paths, progress, error, keys);
    return QString::fromStdString(error);
}

}  // namespace

void tst_Store::init() { Stores::isSkipped(QByteArray(QTest::currentDataTag()) == "PostgreSQL"); }

void tst_Store::everySystemProfileIsImported()
{
    QStringList files;
    for (const QString &name : QDir(PROFILES).entryList({ str("*.icc"), str("*.ICM") })) {
        files += PROFILES + name;
    }
    QVERIFY(files.size() > 10);
    QCOMPARE(importError(sample("system.db"), files), QString());
}

void tst_Store::whatIsNoWholeProfileIsRefused_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, const char *reason, const Damage &damage) {
        QTest::newRow(name) << damage << str(reason);
    };
    const char *unprintable = "no class and colour space that can be printed";
    row("a header without tags", "of 0 tags, 0 lie in the file",
        [](QByteArray &profile) { setNumber(profile, TAG_COUNT_AT, 0); });
    row("a tag behind the end", "of 5 tags, 4 lie in the file",
        [](QByteArray &profile) { setNumber(profile, FIRST_TAG_OFFSET_AT, 0x7fffffff); });
    row("a table of tags behind the end", "no header and table of tags that can be read",
        [](QByteArray &profile) { setNumber(profile, TAG_COUNT_AT, 0x10000000); });
    row("a cut file", "419 bytes, the header says 420",
        [](QByteArray &profile) { profile.chop(1); });
    row("a part of a header", "127 bytes, less than a header",
        [](QByteArray &profile) { profile.truncate(127); });
    row("another signature", "no signature \"acsp\"",
        [](QByteArray &profile) { profile.replace(SIGNATURE_AT, 4, "acsq"); });
    row("more than a profile may have", "67108865 bytes, more than 67108864",
        [](QByteArray &profile) {
            setNumber(profile, SIZE_AT, (64 << 20) + 1);
            profile.append(QByteArray((64 << 20) + 1 - profile.size(), 'x'));
        });
    row("a colour space with NUL bytes", unprintable,
        [](QByteArray &profile) { setNumber(profile, SPACE_AT, 0x47520000); });
    row("a class with an escape character", unprintable,
        [](QByteArray &profile) { profile.replace(CLASS_AT, 4, "\033[2J"); });
}

void tst_Store::whatIsNoWholeProfileIsRefused()
{
    QFETCH(Damage, damage);
    QFETCH(QString, reason);
    QByteArray profile = contentOf(PROFILES + str("Gray.icc"));
    damage(profile);
    const QString file = path("damaged.icc");
    write(file, profile);
    QCOMPARE(importError(url("system.db"), { file }),
        file + str(": not a whole ICC profile: ") + reason);
}

void tst_Store::onlyRegularFilesAreProfiles()
{
    const QString fifo = path("fifo");
    QCOMPARE(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    for (const QString &file : { fifo, m_stores.folder.path(), str("/dev/zero") }) {
        QCOMPARE(importError(url("system.db"), { file }), file + str(": not a file"));
    }
}

void tst_Store::onlyFilesOfTheLibrarysOwnFormAreOpened_data()
{
    QTest::addColumn<QByteArrayList>("statements");
    QTest::addColumn<QString>("error");
    const auto row = [](const char *name, const char *error, const QByteArrayList &statements) {
        QTest::newRow(name) << statements << str(error);
    };
    const char *more = ": not a store of this system: it holds more than a store's tables";
    row("a view in place of a table",
        ": not a store of this system: tq_output is missing or changed",
        { "ALTER TABLE tq_output RENAME TO hidden",
            "CREATE VIEW tq_output AS SELECT * FROM hidden" });
    row("a view in place of the version", ": not a store of this system",
        { "DROP TABLE tq_schema", "CREATE VIEW tq_schema AS SELECT 1 AS version" });
    row("a trigger", more,
        { "CREATE TRIGGER t AFTER INSERT ON tq_icc_profile BEGIN DELETE FROM tq_job; END" });
    row("a virtual table", more, { "CREATE VIRTUAL TABLE words USING fts5(word)" });
    row("one index less", ": not a store of this system: tq_job_by_output is missing or changed",
        { "DROP INDEX tq_job_by_output" });
    row("a table of another form", ": not a store of this system: tq_job is missing or changed",
        { "ALTER TABLE tq_job ADD COLUMN mine TEXT" });
    row("another version", ": the store has version 4711, this library knows version 2",
        { "UPDATE tq_schema SET version = 4711", "CREATE TABLE tq_novelty (id INTEGER)" });
    row("one that was tidied", nullptr,
        { "ALTER TABLE tq_output RENAME TO elsewhere", "ALTER TABLE elsewhere RENAME TO tq_output",
            "ANALYZE", "VACUUM" });
}

void tst_Store::onlyFilesOfTheLibrarysOwnFormAreOpened()
{
    QFETCH(QByteArrayList, statements);
    QFETCH(QString, error);
    QFile::remove(path("hostile.db"));
    const QByteArray store = sample("hostile.db");
    execute(store, statements);
    const QString expected = error.isEmpty() ? error : path("hostile.db") + error;
    QCOMPARE(openError(store), expected);
    QCOMPARE(importError(store, { PROFILES + str("CineLogCurve.icc") }), expected);
}

QStringList tst_Store::remainsOf(const char *name) const
{
    return QDir(m_stores.folder.path())
        .entryList({ str("*") + str(name) + str("*") }, QDir::AllEntries | QDir::Hidden);
}

void tst_Store::ofSeveralThatCreateAStoreOneSucceeds()
{
    const QByteArray store = urlOfRow("contested");
    std::vector<std::unique_ptr<Child>> creators;
    for (int i = 0; i < 6; ++i) {
        creators.push_back(std::make_unique<Child>([&] { return createError(store); }));
    }
    QStringList errors;
    for (const auto &creator : creators) {
        errors += creator->answer();
    }
    errors.removeOne(QString());
    QCOMPARE(errors.filter(QRegularExpression(str(": (exists|holds a store) already$"))).size(), 5);
    QVERIFY(remainsOf("contested").size() <= 1);
    QCOMPARE(openError(store), QString());
}

void tst_Store::whatAKilledCreatorLeftIsRemoved()
{
    const auto die = [](size_t, size_t) -> bool { _exit(1); };  // cleans up as little as a kill
    Child([&] { return createError(url("left.db"), die); }).answer();
    QCOMPARE(remainsOf("left.db").size(), 1);
    QVERIFY(!remainsOf("left.db").contains(str("left.db")));
    QCOMPARE(createError(url("left.db")), QString());
    QCOMPARE(remainsOf("left.db"), QStringList { str("left.db") });

    Child([&] { return createError(url("left.db.later"), die); }).answer();
    write(path("left.db.later"), "made by somebody else meanwhile");
    QVERIFY(!createError(url("left.db.later")).isEmpty());
    QCOMPARE(remainsOf("left.db.later"), QStringList { str("left.db.later") });
}

void tst_Store::aCreatorAtWorkIsLeftAlone()
{
    const QString go = path("go");
    const auto wait = [&](size_t, size_t) {
        return QTest::qWaitFor([&] { return QFile::exists(go); }, 60000);
    };
    Child slow([&] { return createError(url("slow.db"), wait); });
    QTRY_COMPARE(remainsOf("slow.db").size(), 1);
    QCOMPARE(createError(url("slow.db")), QString());
    QCOMPARE(remainsOf("slow.db").size(), 2);
    write(go, "now");
    QCOMPARE(slow.answer(), path("slow.db") + str(": exists already"));
    QCOMPARE(remainsOf("slow.db"), QStringList { str("slow.db") });
    QCOMPARE(openError(url("slow.db")), QString());
}

void tst_Store::linksOfOthersAreNotFollowed()
{
    const QDir shared(m_stores.folder.path());
    QVERIFY(shared.mkdir(str("precious")));
    write(path("precious/part"), "precious");
    QVERIFY(QFile::link(str("precious"), path(".linked.db.init-abcdef")));
    QCOMPARE(createError(url("linked.db")), QString());
    QVERIFY(QFile::link(str("missing"), path("nowhere.db")));
    QCOMPARE(createError(url("nowhere.db")), path("nowhere.db: exists already"));
    QCOMPARE(contentOf(path("precious/part")), QByteArray("precious"));
    QVERIFY(!QFile::exists(path("missing")));
}

void tst_Store::theLogOfADeletedStoreIsNotTakenOver()
{
    for (const QString &log : { path("deleted.db-wal"), path("deleted.db-journal") }) {
        write(log, "what a killed import has written");
        QCOMPARE(createError(url("deleted.db")), log + str(": exists already, of another store"));
        QVERIFY(QFile::remove(log));
    }
}

void tst_Store::aNewStoreLetsReadersAndAWriterWorkAtATime()
{
    QCOMPARE(sql(sample("wal.db"), "PRAGMA journal_mode"), QByteArrayList { "wal" });
    QCOMPARE(remainsOf("wal.db"), QStringList { str("wal.db") });
}

void tst_Store::aNameThatBeginsWithAColonIsOne()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_stores.folder.path()));
    QCOMPARE(createError("sqlite::colon.db"), QString());
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(remainsOf("colon.db"), QStringList { str(":colon.db") });
}

void tst_Store::eachTableHoldsItsIdsToARangeOfItsOwn()
{
    const QByteArray store = urlOfRow("ranges");
    QCOMPARE(createError(store), QString());
    const QByteArrayList tables { "tq_job", "tq_output", "tq_book_owner", "tq_book",
        "tq_icc_profile", "tq_publication" };
    for (const QByteArray &table : tables) {
        for (const QByteArray &other : tables) {
            const QByteArray extreme = table < other ? "min" : "max";
            const QByteArray moved = "UPDATE " + table + " SET id = (SELECT " + extreme +
                "(id) FROM " + other + ") WHERE id = (SELECT min(id) FROM " + table + ")";
            QString error;
            sql(store, moved, &error);
            const bool isRefused = error.contains(str("check constraint"), Qt::CaseInsensitive);
            QVERIFY2(isRefused == (table != other), moved.constData());
        }
    }
    execute(store,
        { "INSERT INTO tq_job (id, output_id, name, page, state) "
          "SELECT 9999, min(id), 'mine', 1, 0 FROM tq_output" });
}

void tst_Store::importsAtATimeAllSucceed()
{
    constexpr int IMPORTS = 18;
    const QByteArray store = urlOfRow("imports");
    QCOMPARE(createError(store), QString());
    std::vector<std::unique_ptr<Child>> children;
    for (int i = 0; i < IMPORTS; ++i) {
        const QString file = m_stores.path(str("import %1.icc").arg(i));
        write(file, contentOf(PROFILES + str("Gray.icc")));
        children.push_back(std::make_unique<Child>([=] { return importError(store, { file }); }));
    }
    for (const auto &child : children) {
        QCOMPARE(child->answer(), QString());
    }
    // The sample has 8 from 0x58000000 on.
    QCOMPARE(sql(store, "SELECT count(id) FROM tq_icc_profile"), QByteArrayList { "26" });
    QCOMPARE(sql(store, "SELECT max(id) FROM tq_icc_profile"),
        QByteArrayList { QByteArray::number(0x58000000 + 8 + IMPORTS - 1) });
}

void tst_Store::anImportTakesAllFromTheFile()
{
    const QByteArray store = sample("replaced.db");
    const auto read = [&store](const char *which) {
        return sql(store,
            QByteArray(
                "SELECT name || ' ' || file || ' ' || device_class || ' ' || colour_space || "
                "' ' || version || ' ' || size || ' ' || length(data) "
                "FROM tq_icc_profile WHERE name ") +
                which + " 'gray.v2' ORDER BY id");
    };
    const QByteArrayList others = read("<>");
    const QString file = path("gray.v2.icc");
    write(file, contentOf(PROFILES + str("Gray.icc")));
    Keys keys;
    QCOMPARE(importError(store, { file }, &keys), QString());
    QCOMPARE(read("="), QByteArrayList({ "gray.v2 gray.v2.icc mntr GRAY 2.3 420 420" }));
    QCOMPARE(keys.at(0).key, 0x58000008U);
    QCOMPARE(keys.at(0).hkey, unsigned(PACKETDATATYPE_ICCPROFILE));
    QByteArray newer = contentOf(PROFILES + str("ITULab.icc"));
    setNumber(newer, VERSION_AT, 0x04200000);
    write(file, newer);
    QCOMPARE(importError(store, { file }), QString());
    QCOMPARE(read("="), QByteArrayList({ "gray.v2 gray.v2.icc spac Lab 4.2 431756 431756" }));
    QCOMPARE(read("<>"), others);
}

void tst_Store::anImportThatFailsOrIsStoppedChangesNothing()
{
    const QByteArray store = sample("whole.db");
    const QString file = PROFILES + str("CineLogCurve.icc");
    Keys keys;
    QVERIFY(!importError(store, { file, path("missing.icc") }, &keys).isEmpty());
    QCOMPARE(keys.size(), size_t(0));
    const auto stop = [](size_t, size_t) { return false; };
    QCOMPARE(importError(store, { file }, &keys, stop), str("interrupted"));
    execute(store, { "INSERT INTO tq_icc_profile (id, name) VALUES (1610612735, 'last')" });
    QCOMPARE(importError(store, { file }, &keys),
        path("whole.db") + str(": no id is left for an ICC profile"));
    QCOMPARE(sql(store, "SELECT count(*) FROM tq_icc_profile"), QByteArrayList({ "9" }));
}

void tst_Store::theSampleHoldsItsBooksAndJobs()
{
    const QByteArray store = sample("contents.db");
    QCOMPARE(sql(store,
                 "SELECT author || ' ' || pages || ' ' || year || ' ' || language FROM tq_book "
                 "WHERE name = 'Emma'"),
        QByteArrayList({ "Jane Austen 474 1815 en" }));
    QCOMPARE(
        sql(store, "SELECT state || ' ' || count(*) FROM tq_job GROUP BY state ORDER BY state"),
        QByteArrayList({ "0 115", "1 115", "2 343" }));
}

void tst_Store::aTableOfAnotherSchemaIsNoStore()
{
    if (Stores::isSkipped(true)) {
        return;
    }
    const QByteArray store = m_stores.url("schemas", true);
    execute(store, { "CREATE SCHEMA other CREATE TABLE tq_schema (version INTEGER)" });
    QCOMPARE(openError(store), str("schemas: not a store of this system"));
    QCOMPARE(createError(store), QString());
}

QTEST_GUILESS_MAIN(tst_Store)
#include "tst_store.moc"

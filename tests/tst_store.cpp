#include "postgres.h"
#include "tqstore.h"

#include <QRegularExpression>
#include <QSqlError>
#include <QtEndian>

#include <csignal>
#include <memory>

#include <sched.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <sys/wait.h>

namespace {

const QString PROFILES = str("/usr/share/color/icc/");

// Where a profile's header has what.
enum HeaderField { SizeAt = 0, DeviceClassAt = 12, ColourSpaceAt = 16, SignatureAt = 36 };
constexpr int TAG_COUNT_AT = 128;
constexpr int FIRST_TAG_OFFSET_AT = TAG_COUNT_AT + 8;

QByteArray contentOf(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void write(const QString &path, const QByteArray &content)
{
    QFile file(path);
    QVERIFY(file.open(QIODevice::WriteOnly));
    QCOMPARE(file.write(content), content.size());
}

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
    void initTestCase();
    void init();
    void everySystemProfileIsImported();
    void whatIsNoWholeProfileIsRefused_data();
    void whatIsNoWholeProfileIsRefused();
    void onlyRegularFilesAreProfiles();
    void aFileWithAnythingOfItsOwnIsRefused_data();
    void aFileWithAnythingOfItsOwnIsRefused();
    void aFileThatWasTidiedIsAccepted();
    void aStoreOfAnotherVersionIsToldByIt();
    void ofSeveralThatCreateAStoreOneSucceeds_data() { addDatabases(); }
    void ofSeveralThatCreateAStoreOneSucceeds();
    void whatAKilledCreatorLeftIsRemoved();
    void aCreatorAtWorkIsLeftAlone();
    void linksOfOthersAreNotFollowed();
    void theLogOfADeletedStoreIsNotTakenOver();
    void aNewStoreLetsReadersAndAWriterWorkAtATime();
    void aNameThatBeginsWithAColonIsOne();
    void eachTableHoldsItsIdsToARangeOfItsOwn_data() { addDatabases(); }
    void eachTableHoldsItsIdsToARangeOfItsOwn();
    void importsAtATimeAllSucceed_data() { addDatabases(); }
    void importsAtATimeAllSucceed();
    void aProfileIsReplacedByOneOfItsName();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QByteArray url(const QString &name) const { return "sqlite:" + path(name).toUtf8(); }
    // Rows for a test of both databases, and the URL of a store in the current row's.
    static void addDatabases();
    QByteArray urlOfRow(const char *name);
    // What there is of files and folders that belong to a store.
    QStringList remainsOf(const QString &name) const;
    // A new store with the sample; its URL.
    QByteArray sample(const QString &name) const;

    QTemporaryDir m_folder;
    PostgresServer m_postgres;
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

QString createError(const QByteArray &url, const TQPROGRESS &progress = {})
{
    std::string error;
    TQCreateSampleStore(url.constData(), progress, error);
    return QString::fromStdString(error);
}

// What a database says against a statement; empty when it runs.
QString sqlError(const QByteArray &url, const QByteArray &statement)
{
    const auto name = str("statements");
    QString error;
    {
        const bool isFile = url.startsWith("sqlite:");
        auto database = QSqlDatabase::addDatabase(str(isFile ? "QSQLITE" : "QPSQL"), name);
        database.setDatabaseName(str(url.mid(url.lastIndexOf(isFile ? ':' : '/') + 1)));
        QSqlQuery query(database.open() ? database : QSqlDatabase());
        if (!query.exec(str(statement))) {
            error = query.lastError().text();
        }
    }
    QSqlDatabase::removeDatabase(name);
    return error;
}

void execute(const QByteArray &url, const QByteArrayList &statements)
{
    for (const QByteArray &statement : statements) {
        QCOMPARE(sqlError(url, statement), QString());
    }
}

// What goes wrong when files are imported; empty when nothing does.
QString importError(const QByteArray &url, const QStringList &files)
{
    std::vector<std::string> paths;
    for (const QString &file : files) {
        paths.push_back(file.toStdString());
    }
    std::string error;
    TQImportProfiles(url.constData(), paths, {}, error);
    return QString::fromStdString(error);
}

}  // namespace

void tst_Store::initTestCase() { QVERIFY(!m_postgres.isInstalled() || m_postgres.start()); }

void tst_Store::init()
{
    const bool isPostgres = QByteArray(QTest::currentDataTag()) == "PostgreSQL";
    if (isPostgres && !m_postgres.isInstalled()) {
        QTest::qSkip("PostgreSQL is not installed", __FILE__, __LINE__);
    }
}

QByteArray tst_Store::sample(const QString &name) const
{
    std::string error;
    if (!TQCreateSampleStore(url(name).constData(), {}, error)) {
        qFatal("no sample: %s", error.c_str());
    }
    return url(name);
}

void tst_Store::everySystemProfileIsImported()
{
    QStringList files;
    for (const QString &name : QDir(PROFILES).entryList({ str("*.icc"), str("*.ICM") })) {
        files += PROFILES + name;
    }
    QVERIFY(files.size() > 10);
    QCOMPARE(importError(sample(str("system.db")), files), QString());
}

void tst_Store::whatIsNoWholeProfileIsRefused_data()
{
    QTest::addColumn<Damage>("damage");
    QTest::addColumn<QString>("reason");
    const auto row = [](const char *name, const char *reason, const Damage &damage) {
        QTest::newRow(name) << damage << str(reason);
    };
    row("a size that is not the file's", "420 bytes, the header says 128",
        [](QByteArray &profile) { setNumber(profile, SizeAt, 128); });
    const char *unprintable = "no class and colour space that can be printed";
    row("zeros with the signature", unprintable, [](QByteArray &profile) {
        profile.fill('\0');
        setNumber(profile, SizeAt, quint32(profile.size()));
        profile.replace(SignatureAt, 4, "acsp");
    });
    row("a header without tags", "of 0 tags, 0 lie in the file",
        [](QByteArray &profile) { setNumber(profile, TAG_COUNT_AT, 0); });
    row("a tag behind the end", "of 5 tags, 4 lie in the file",
        [](QByteArray &profile) { setNumber(profile, FIRST_TAG_OFFSET_AT, 0x7fffffff); });
    row("a table of tags behind the end", "no header and table of tags that can be read",
        [](QByteArray &profile) { setNumber(profile, TAG_COUNT_AT, 0x10000000); });
    row("a cut file", "419 bytes, the header says 420",
        [](QByteArray &profile) { profile.chop(1); });
    row("a file that goes on", "421 bytes, the header says 420",
        [](QByteArray &profile) { profile.append('x'); });
    row("a part of a header", "127 bytes, less than a header",
        [](QByteArray &profile) { profile.truncate(127); });
    row("another signature", "no signature \"acsp\"",
        [](QByteArray &profile) { profile.replace(SignatureAt, 4, "acsq"); });
    row("more than a profile may have", "67108865 bytes, more than 67108864",
        [](QByteArray &profile) {
            setNumber(profile, SizeAt, (64 << 20) + 1);
            profile.append(QByteArray((64 << 20) + 1 - profile.size(), 'x'));
        });
    row("a colour space with NUL bytes", unprintable,
        [](QByteArray &profile) { setNumber(profile, ColourSpaceAt, 0x47520000); });
    row("a class with an escape character", unprintable,
        [](QByteArray &profile) { profile.replace(DeviceClassAt, 4, "\033[2J"); });
}

void tst_Store::whatIsNoWholeProfileIsRefused()
{
    QFETCH(Damage, damage);
    QFETCH(QString, reason);
    QByteArray profile = contentOf(PROFILES + str("Gray.icc"));
    damage(profile);
    const QString file = path(str("damaged.icc"));
    write(file, profile);
    QCOMPARE(importError(url(str("system.db")), { file }),
        file + str(": not a whole ICC profile: ") + reason);
}

void tst_Store::onlyRegularFilesAreProfiles()
{
    const QString fifo = path(str("fifo"));
    QCOMPARE(mkfifo(fifo.toUtf8().constData(), 0600), 0);
    for (const QString &file : { fifo, m_folder.path(), str("/dev/zero") }) {
        QCOMPARE(importError(url(str("system.db")), { file }), file + str(": not a file"));
    }
}

void tst_Store::aFileWithAnythingOfItsOwnIsRefused_data()
{
    QTest::addColumn<QByteArrayList>("statements");
    QTest::addColumn<QString>("detail");
    const auto row = [](const char *name, const char *detail, const QByteArrayList &statements) {
        QTest::newRow(name) << statements << str(detail);
    };
    const char *more = ": it holds more than a store's tables";
    row("a view in place of a table", ": tq_output is missing or changed",
        { "ALTER TABLE tq_output RENAME TO hidden",
            "CREATE VIEW tq_output AS SELECT * FROM hidden" });
    row("an endless view in place of a table", ": tq_publication is missing or changed",
        { "DROP TABLE tq_publication",
            "CREATE VIEW tq_publication AS WITH RECURSIVE n(id) AS "
            "(SELECT 1 UNION ALL SELECT id + 1 FROM n) SELECT id, 'x' AS name FROM n" });
    row("a view in place of the version", "",
        { "DROP TABLE tq_schema", "CREATE VIEW tq_schema AS SELECT 1 AS version" });
    row("a trigger", more,
        { "CREATE TRIGGER t AFTER INSERT ON tq_icc_profile BEGIN DELETE FROM tq_job; END" });
    row("a virtual table", more, { "CREATE VIRTUAL TABLE words USING fts5(word)" });
    row("one index more", more, { "CREATE INDEX i ON tq_icc_profile (hex(data))" });
    row("one index less", ": tq_job_by_output is missing or changed",
        { "DROP INDEX tq_job_by_output" });
    row("a table of another form", ": tq_job is missing or changed",
        { "ALTER TABLE tq_job ADD COLUMN mine TEXT" });
}

void tst_Store::aFileWithAnythingOfItsOwnIsRefused()
{
    QFETCH(QByteArrayList, statements);
    QFETCH(QString, detail);
    const QString file = path(str("hostile.db"));
    QFile::remove(file);
    const QByteArray store = sample(str("hostile.db"));
    execute(store, statements);
    const QString error = file + str(": not a store of this system") + detail;
    TQCommServer server(store.constData());
    QCOMPARE(str(server.errorText()), error);
    QCOMPARE(importError(store, { PROFILES + str("CineLogCurve.icc") }), error);
}

void tst_Store::aFileThatWasTidiedIsAccepted()
{
    const QByteArray store = sample(str("tidied.db"));
    execute(store,
        { "ALTER TABLE tq_output RENAME TO elsewhere", "ALTER TABLE elsewhere RENAME TO tq_output",
            "ANALYZE", "VACUUM" });
    TQCommServer server(store.constData());
    QCOMPARE(str(server.errorText()), QString());
}

void tst_Store::aStoreOfAnotherVersionIsToldByIt()
{
    const QByteArray store = sample(str("newer.db"));
    execute(
        store, { "UPDATE tq_schema SET version = 4711", "CREATE TABLE tq_novelty (id INTEGER)" });
    TQCommServer server(store.constData());
    QVERIFY(str(server.errorText()).contains(str("the store has version 4711")));
}

void tst_Store::addDatabases()
{
    QTest::addColumn<bool>("isPostgres");
    QTest::newRow("SQLite") << false;
    QTest::newRow("PostgreSQL") << true;
}

QByteArray tst_Store::urlOfRow(const char *name)
{
    QFETCH(bool, isPostgres);
    return isPostgres ? m_postgres.url(name) : url(str(name) + str(".db"));
}

QStringList tst_Store::remainsOf(const QString &name) const
{
    return QDir(m_folder.path())
        .entryList({ str("*") + name + str("*") }, QDir::AllEntries | QDir::Hidden);
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
    QVERIFY(remainsOf(str("contested")).size() <= 1);
    TQCommServer server(store.constData());
    QCOMPARE(str(server.errorText()), QString());
}

void tst_Store::whatAKilledCreatorLeftIsRemoved()
{
    const auto die = [](size_t, size_t) -> bool { _exit(1); };  // cleans up as little as a kill
    Child([&] { return createError(url(str("left.db")), die); }).answer();
    QCOMPARE(remainsOf(str("left.db")).size(), 1);
    QVERIFY(!remainsOf(str("left.db")).contains(str("left.db")));
    QCOMPARE(createError(url(str("left.db"))), QString());
    QCOMPARE(remainsOf(str("left.db")), QStringList { str("left.db") });

    Child([&] { return createError(url(str("left.db.later")), die); }).answer();
    write(path(str("left.db.later")), "made by somebody else meanwhile");
    QVERIFY(!createError(url(str("left.db.later"))).isEmpty());
    QCOMPARE(remainsOf(str("left.db.later")), QStringList { str("left.db.later") });
}

void tst_Store::aCreatorAtWorkIsLeftAlone()
{
    const QString go = path(str("go"));
    const auto wait = [&](size_t, size_t) {
        return QTest::qWaitFor([&] { return QFile::exists(go); }, 60000);
    };
    Child slow([&] { return createError(url(str("slow.db")), wait); });
    QTRY_COMPARE(remainsOf(str("slow.db")).size(), 1);
    QCOMPARE(createError(url(str("slow.db"))), QString());
    QCOMPARE(remainsOf(str("slow.db")).size(), 2);
    write(go, "now");
    QCOMPARE(slow.answer(), path(str("slow.db")) + str(": exists already"));
    QCOMPARE(remainsOf(str("slow.db")), QStringList { str("slow.db") });
    TQCommServer server(url(str("slow.db")).constData());
    QCOMPARE(str(server.errorText()), QString());
}

void tst_Store::linksOfOthersAreNotFollowed()
{
    const QDir shared(m_folder.path());
    QVERIFY(shared.mkdir(str("precious")));
    write(path(str("precious/part")), "precious");
    QVERIFY(QFile::link(str("precious"), path(str(".linked.db.init-abcdef"))));
    QCOMPARE(createError(url(str("linked.db"))), QString());
    QVERIFY(QFile::link(str("missing"), path(str("nowhere.db"))));
    QCOMPARE(createError(url(str("nowhere.db"))), path(str("nowhere.db: exists already")));
    QCOMPARE(contentOf(path(str("precious/part"))), QByteArray("precious"));
    QVERIFY(!QFile::exists(path(str("missing"))));
}

void tst_Store::theLogOfADeletedStoreIsNotTakenOver()
{
    write(path(str("deleted.db-wal")), "what a killed import has written");
    QCOMPARE(createError(url(str("deleted.db"))),
        path(str("deleted.db-wal: exists already, of another store")));
}

void tst_Store::aNewStoreLetsReadersAndAWriterWorkAtATime()
{
    QCOMPARE(sql(sample(str("wal.db")), "PRAGMA journal_mode"), QByteArrayList { "wal" });
    QCOMPARE(remainsOf(str("wal.db")), QStringList { str("wal.db") });
}

void tst_Store::aNameThatBeginsWithAColonIsOne()
{
    const QString before = QDir::currentPath();
    QVERIFY(QDir::setCurrent(m_folder.path()));
    QCOMPARE(createError("sqlite::colon.db"), QString());
    QVERIFY(QDir::setCurrent(before));
    QCOMPARE(remainsOf(str("colon.db")), QStringList { str(":colon.db") });
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
            const bool isRefused =
                sqlError(store, moved).contains(str("check constraint"), Qt::CaseInsensitive);
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
        const QString file = path(str("import %1.icc").arg(i));
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

void tst_Store::aProfileIsReplacedByOneOfItsName()
{
    const QByteArray store = sample(str("replaced.db"));
    const QByteArray gray = "SELECT size FROM tq_icc_profile WHERE name = 'Gray'";
    QCOMPARE(sql(store, gray), QByteArrayList { "420" });
    QVERIFY(QDir(m_folder.path()).mkdir(str("other")));
    QVERIFY(QFile::copy(PROFILES + str("sRGB.icc"), path(str("other/Gray.icc"))));
    QCOMPARE(importError(store, { path(str("other/Gray.icc")) }), QString());
    QCOMPARE(sql(store, gray), QByteArrayList { "6922" });
}

QTEST_GUILESS_MAIN(tst_Store)
#include "tst_store.moc"

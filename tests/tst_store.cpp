#include "postgres.h"
#include "tqstore.h"

#include <QtEndian>

#include <sys/stat.h>

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
    void everySystemProfileIsImported();
    void whatIsNoWholeProfileIsRefused_data();
    void whatIsNoWholeProfileIsRefused();
    void onlyRegularFilesAreProfiles();
    void aFileWithAnythingOfItsOwnIsRefused_data();
    void aFileWithAnythingOfItsOwnIsRefused();
    void aFileThatWasTidiedIsAccepted();
    void aStoreOfAnotherVersionIsToldByIt();

private:
    QString path(const QString &name) const { return m_folder.filePath(name); }
    QByteArray url(const QString &name) const { return "sqlite:" + path(name).toUtf8(); }
    // A new store with the sample; its URL.
    QByteArray sample(const QString &name) const;

    QTemporaryDir m_folder;
};

namespace {

void execute(const QByteArray &url, const QByteArrayList &statements)
{
    const auto name = str("statements");
    {
        auto database = QSqlDatabase::addDatabase(str("QSQLITE"), name);
        database.setDatabaseName(str(url.mid(int(qstrlen("sqlite:")))));
        QVERIFY(database.open());
        for (const QByteArray &statement : statements) {
            QSqlQuery query(database);
            QVERIFY2(query.exec(str(statement)), statement.constData());
        }
    }
    QSqlDatabase::removeDatabase(name);
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

QTEST_GUILESS_MAIN(tst_Store)
#include "tst_store.moc"

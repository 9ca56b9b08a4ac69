// Runs the command as its users do.
//
// Most of this is in tests/command/: transcripts of the shell, which show what is typed and what is
// printed. TQXML_UPDATE_TRANSCRIPTS=1 records them anew. Here is what a transcript cannot show:
// damaged stores, lost connections, and work that is killed at any moment.

#include "postgres.h"

#include <QCryptographicHash>
#include <QDirIterator>
#include <QElapsedTimer>

namespace {

constexpr int DONE = 0;
constexpr int FAILED = 1;
constexpr int PAGE_SIZE = 4096;  // of SQLite

// What the tests work on, in the shell. "scratch" in a name means that a test may leave it behind.
constexpr char PREPARATION[] =
    "tqxml init store.db; for copy in locked newer readonly; do cp store.db $copy.db; done;"
    "head -c 50000 store.db >half.db; head -c -1 store.db >end.db; chmod 444 readonly.db;"
    "cp $ICC/sRGB.icc s.icc; cp $ICC/Gray.icc 'grey é.icc'; cp $ICC/ITULab.icc lab.icc;"
    "head -c 100 s.icc >half.icc; cat s.icc s.icc >more.icc; head -c 5000 lab.icc >text.db;"
    ": >empty.db; mkdir folder; mkfifo fifo;"
    "yes 'SI 15,1 Page 12,6 12,7 2,TI 0' | head -n 40000 | tr , '\\n' >many.packet;"
    "{ echo 'SI 15'; yes '1 a' | head -n 100000; echo 'TI 0'; } >large.packet";

struct Outcome
{
    int code;  // or the signal that ended it
    QByteArray out;
    QByteArray err;
};

// What is asked of a store that opens, but fails in one of the queries.
struct Damage
{
    const char *name;  // of the table whose first page is destroyed, or a statement that spoils one
    const char *arguments;
};
constexpr Damage DAMAGES[] = {
    { "tq_output", "list outputs" },
    { "tq_book", "list books" },
    { "tq_book_owner", "list books" },
    { "tq_job", "list jobs" },
    { "tq_job", "list publications --key $OUTPUT" },
    { "tq_output", "show job $JOB" },
    { "tq_book", "show job $JOB" },
    { "tq_icc_profile", "show job $JOB --references" },
    { "DROP TABLE tq_book", "show job $JOB" },
    { "ALTER TABLE tq_book DROP COLUMN author", "list books" },
    { "ALTER TABLE tq_job RENAME COLUMN page TO leaf", "list jobs --format xml" },
    { "ALTER TABLE tq_publication RENAME TO other", "list publications" },
};

// Work that is killed on the way, and how its store is prepared.
struct Victim
{
    const char *name;
    const char *prepare;
    const char *arguments;
    const char *store;
};
constexpr Victim VICTIMS[] = {
    { "init", "rm -f scratch9.db", "init scratch9.db", "sqlite:scratch9.db" },
    { "import-icc", "cp store.db scratch.db", "import-icc scratch.db s.icc lab.icc",
        "sqlite:scratch.db" },
    { "init on a server", "dropdb -f k; createdb k", "init $PG/k", "$PG/k" },
    { "import-icc on a server", "dropdb -f k; createdb -T locked k",
        "import-icc $PG/k s.icc lab.icc", "$PG/k" },
};

QByteArray read(const QString &file)
{
    QFile source(file);
    return source.open(QIODevice::ReadOnly) ? source.readAll() : QByteArray();
}

// Overwrites a part of a store.
void destroy(const char *store, qint64 offset, const QByteArray &bytes)
{
    QFile file(str(store));
    QVERIFY(file.open(QIODevice::ReadWrite));
    QVERIFY(file.seek(offset));
    QCOMPARE(file.write(bytes), bytes.size());
}

Outcome finish(QProcess &process)
{
    process.waitForFinished(120000);
    return { process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError() };
}

Outcome shell(const QByteArray &line)
{
    QProcess process;
    process.setStandardInputFile(QProcess::nullDevice());
    process.start(str("sh"), { str("-c"), str(line) });
    return finish(process);
}

Outcome tqxml(const QByteArray &arguments) { return shell("tqxml " + arguments); }

void expectFailure(const Outcome &outcome, const QByteArray &message)
{
    QVERIFY2(outcome.err.startsWith("tqxml: " + message), outcome.err.constData());
    QCOMPARE(int(outcome.err.count('\n')), 1);
    QCOMPARE(outcome.out, QByteArray());
    QCOMPARE(outcome.code, FAILED);
}

// A transcript with what its commands print now: lines that are indented are the terminal's.
QString replay(const QString &recorded)
{
    const QString prompt = str("  $ ");
    QStringList lines;
    for (const QString &line : recorded.split(QLatin1Char('\n'))) {
        if (!line.startsWith(str("  "))) {
            lines += line;
        } else if (line.startsWith(prompt)) {
            const Outcome outcome = shell(line.mid(prompt.size()).toUtf8());
            QString output = str(outcome.out + outcome.err);
            output += outcome.code == DONE ? QString() : str("[%1]\n").arg(outcome.code);
            lines += line;
            for (const QString &printed : output.split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
                lines += str("  ") + printed;
            }
        }
    }
    return lines.join(QLatin1Char('\n'));
}

// What is in the folder, with checksums.
QStringList files()
{
    QStringList list;
    QDirIterator all(str("."), QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot);
    while (all.hasNext()) {
        const QString name = all.next();
        // Closing a file that is locked through another descriptor would unlock it.
        const bool isRead = all.fileInfo().isFile() && !name.contains(str("locked"));
        const QByteArray bytes = isRead ? read(name) : QByteArray();
        if (!name.endsWith(str("-wal")) && !name.endsWith(str("-shm"))) {
            list += name + str(QCryptographicHash::hash(bytes, QCryptographicHash::Md5).toHex());
        }
    }
    list.sort();
    return list;
}

}  // namespace

class tst_Command : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();
    void transcripts_data();
    void transcripts();
    void damagedTablesAreErrors_data() { addRows(DAMAGES); }
    void damagedTablesAreErrors();
    void damageInsideATableIsAnError();
    void damageInsideAProfileIsAnError();
    void connectionsThatEndAreErrors();
    void killedWorkIsDoneOrUndone_data() { addRows(VICTIMS); }
    void killedWorkIsDoneOrUndone();

private:
    QTemporaryDir m_folder;
    PostgresServer m_postgres;
    QStringList m_files;  // as they must stay
};

void tst_Command::initTestCase()
{
    QVERIFY(QDir::setCurrent(m_folder.path()));
    QVERIFY(QDir().mkdir(str("bin")));
    QVERIFY(QFile::link(str(TQXML_COMMAND), str("bin/tqxml")));
    qputenv("PATH", m_folder.filePath(str("bin:")).toUtf8() + qgetenv("PATH"));
    qputenv("LC_ALL", "C");
    qputenv("ICC", "/usr/share/color/icc");
    qputenv("TRANSCRIPTS", TQXML_TRANSCRIPTS);
    qputenv("AS_STRANGER", geteuid() == 0 ? "setpriv --bounding-set=-all" : "");
    qunsetenv("QT_HASH_SEED");
    QCOMPARE(shell(PREPARATION).err, QByteArray());
    const auto key = [](const char *query) { return sql("sqlite:store.db", query).value(0); };
    qputenv("JOB", key("SELECT printf('%x:15', id) FROM tq_job WHERE name LIKE 'Candide%96'"));
    qputenv("OWNER", key("SELECT printf('%x:55', id) FROM tq_book_owner WHERE city = 'Edinburgh'"));
    qputenv("OUTPUT", key("SELECT printf('%x:8', id) FROM tq_output WHERE name = 'Proofer 44'"));
    sql("sqlite:newer.db", "UPDATE tq_schema SET version = 99");
    QSqlDatabase lock = QSqlDatabase::addDatabase(str("QSQLITE"));
    lock.setDatabaseName(str("locked.db"));
    QVERIFY(lock.open());
    QSqlQuery(str("PRAGMA locking_mode = EXCLUSIVE"), lock).finish();
    QSqlQuery(str("BEGIN EXCLUSIVE"), lock).finish();
    if (m_postgres.isInstalled()) {
        QVERIFY(m_postgres.start());
        qputenv("PG", m_postgres.url("store").chopped(6));
        QCOMPARE(tqxml("init " + m_postgres.url("locked")).err, QByteArray());
    }
    m_files = files();
}

void tst_Command::init()
{
    const QByteArray row = QTest::currentDataTag();
    const bool needsServer = row.contains("server") ||
        QByteArray(QTest::currentTestFunction()).startsWith("connections");
    if (needsServer && !m_postgres.isInstalled()) {
        QTest::qSkip("PostgreSQL is not installed", __FILE__, __LINE__);
    }
    QVERIFY(QFile::copy(str("store.db"), str("scratch.db")));
}

// No test changes or leaves other files.
void tst_Command::cleanup()
{
    shell("rm -f *scratch*");
    QCOMPARE(files(), m_files);
}

void tst_Command::transcripts_data()
{
    QTest::addColumn<QString>("file");
    for (const QFileInfo &file : QDir(str(TQXML_TRANSCRIPTS)).entryInfoList({ str("*.txt") })) {
        QTest::newRow(qPrintable(file.baseName())) << file.filePath();
    }
}

void tst_Command::transcripts()
{
    QFETCH(QString, file);
#ifdef TQXML_SANITIZED
    if (file.endsWith(str("memory.txt"))) {
        QTest::qSkip("sanitizers need more memory", __FILE__, __LINE__);
        return;
    }
#endif
    const QByteArray replayed = replay(str(read(file))).toUtf8();
    QFile output(str("scratch.txt"));
    QVERIFY(output.open(QIODevice::WriteOnly));
    output.write(replayed);
    output.close();
    if (qEnvironmentVariableIsSet("TQXML_UPDATE_TRANSCRIPTS")) {
        QCOMPARE(shell("cp scratch.txt " + file.toUtf8()).code, DONE);
    }
    const QByteArray difference = shell("diff -u " + file.toUtf8() + " scratch.txt").out;
    QVERIFY2(difference.isEmpty(), difference.constData());
}

void tst_Command::damagedTablesAreErrors()
{
    const auto &row = currentRow<Damage>();
    const QByteArray store = "sqlite:scratch.db";
    const QByteArray table = row.name;
    const int page = sql(store, "SELECT rootpage FROM sqlite_master WHERE name = '" + table + "'")
                         .value(0)
                         .toInt();
    if (page > 0) {
        destroy("scratch.db", (page - 1) * PAGE_SIZE, QByteArray(PAGE_SIZE, '\xff'));
    } else {
        sql(store, row.name);
    }
    expectFailure(tqxml(QByteArray(row.arguments) + " --database scratch.db"), "scratch.db: ");
}

void tst_Command::damageInsideATableIsAnError()
{
    QCOMPARE(tqxml("init scratch2.db --jobs 3000").code, DONE);
    const qint64 pages = QFileInfo(str("scratch2.db")).size() / PAGE_SIZE;
    destroy("scratch2.db", pages * 3 / 4 * PAGE_SIZE, QByteArray(4 * PAGE_SIZE, '\xff'));
    for (const char *listing : { "jobs", "jobs --format xml", "publications" }) {
        const Outcome outcome = tqxml("list --database scratch2.db " + QByteArray(listing));
        expectFailure(outcome, "scratch2.db: database disk image is malformed");
    }
}

// The bytes of a profile take several pages, each of which starts with the number of the next.
void tst_Command::damageInsideAProfileIsAnError()
{
    const QByteArray table = tqxml("import-icc scratch.db lab.icc").out;
    const QByteArray key = table.split('\n').value(2).split(' ').first();
    const auto at =
        read(str("scratch.db")).lastIndexOf(read(str("lab.icc")).mid(3 * PAGE_SIZE, 100));
    QVERIFY(at > 0);
    destroy("scratch.db", at / PAGE_SIZE * PAGE_SIZE, QByteArray(4, '\0'));
    expectFailure(tqxml("show profile --database scratch.db " + key),
        "scratch.db: database disk image is malformed");
}

// A listing whose connection is lost on the way is whole, or an error.
void tst_Command::connectionsThatEndAreErrors()
{
    const QByteArray other = m_postgres.url("large");
    const QByteArray end = "SELECT pg_terminate_backend(pid) FROM pg_stat_activity"
                           " WHERE datname = 'large' AND pid <> pg_backend_pid()";
    const QByteArray list = "list jobs --database $PG/large";
    QCOMPARE(tqxml("init $PG/large --jobs 20000").code, DONE);
    const Outcome whole = tqxml(list);
    int failed = 0;
    for (int delay = 0; delay < 8; ++delay) {
        QProcess listing;
        listing.start(str("sh"), { str("-c"), str("exec tqxml " + list) });
        listing.waitForFinished(1 + 50 * delay);
        while (!listing.waitForFinished(1) && sql(other, end).isEmpty()) {}
        const Outcome outcome = finish(listing);
        QCOMPARE(outcome.out, outcome.code == DONE ? whole.out : QByteArray());
        failed += outcome.code == FAILED;
    }
    QVERIFY(failed > 0);
    sql(other, "UPDATE tq_job SET remark = repeat('x', 200000) WHERE output_id % 64 = 0");
    expectFailure(tqxml(list + "?statement_timeout=5"), "large: canceling statement");
}

void tst_Command::killedWorkIsDoneOrUndone()
{
    const auto &row = currentRow<Victim>();
    const QByteArray store = QByteArray(row.store).replace("$PG", qgetenv("PG"));
    const auto state = [&store] {
        const bool isThere = !store.startsWith("sqlite:") || QFile::exists(str(store.mid(7)));
        const char *const sizes = "SELECT sum(size) FROM tq_icc_profile, tq_job";
        return isThere ? sql(store, sizes).value(0) : QByteArray();
    };
    shell(row.prepare);
    const QByteArray before = state();
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(tqxml(row.arguments).err, QByteArray());
    const auto duration = int(timer.elapsed());
    const QByteArray after = state();
    QVERIFY(before != after);
    for (int part = 1; part <= 20; ++part) {
        const QByteArray seconds = QByteArray::number(duration * part / 20000.0);
        shell(row.prepare);
        shell("timeout -s KILL " + seconds + " tqxml " + row.arguments);
        const QByteArray found = state();
        QVERIFY2(found == before || found == after, found.constData());
    }
    shell(row.prepare);
    QCOMPARE(tqxml(row.arguments).err, QByteArray());
    QCOMPARE(state(), after);
}

QTEST_GUILESS_MAIN(tst_Command)
#include "tst_command.moc"

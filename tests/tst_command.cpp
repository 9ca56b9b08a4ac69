// Runs the command as its users do.
//
// Most of this is in tests/command/: transcripts of the shell, which show what is typed and what is
// printed. TQXML_UPDATE_TRANSCRIPTS=1 records them again. Here is what a transcript cannot show:
// connections that are lost, and work that is killed, at any moment.

#include "postgres.h"

#include <QElapsedTimer>

namespace {

constexpr int DONE = 0;
constexpr int FAILED = 1;

// What the transcripts work on. "scratch" in a name means that a test may leave it behind.
constexpr char PREPARATION[] =
    "tqxml init store.db; cp store.db readonly.db; chmod 444 readonly.db;"
    "head -c 50000 store.db >half.db; head -c -1 store.db >end.db;"
    "cp $ICC/sRGB.icc s.icc; cp $ICC/Gray.icc 'grey é.icc'; cp $ICC/ITULab.icc lab.icc;"
    "head -c 100 s.icc >half.icc; cat s.icc s.icc >more.icc; head -c 5000 lab.icc >text.db;"
    ": >empty.db; mkdir folder; mkfifo fifo;"
    "yes 'SI 15,1 Page 12,6 12,7 2,TI 0' | head -n 40000 | tr , '\\n' >many.packet;"
    "{ echo 'SI 15'; yes '1 a' | head -n 100000; echo 'TI 0'; } >large.packet";

// Everything that work on the store $STORE changes, and what it says when there is none.
constexpr char STATE[] =
    "{ for key in 58000008 58000009; do tqxml show profile $key:30 --database $STORE; done;"
    "tqxml list jobs --include-publications --database $STORE; } 2>&1";

// Work that is killed on the way, and how its store is prepared.
struct Victim
{
    const char *name;
    const char *store;
    const char *prepare;
    const char *work;
};
constexpr Victim VICTIMS[] = {
    { "init", "scratch9.db", "rm -f $STORE", "init $STORE" },
    { "import-icc", "scratch9.db", "cp store.db $STORE", "import-icc $STORE s.icc lab.icc" },
    { "init on a server", "$PG/k", "dropdb -f k; createdb k", "init $STORE" },
    { "import-icc on a server", "$PG/k", "dropdb -f k; createdb -T whole k",
        "import-icc $STORE s.icc lab.icc" },
};

struct Outcome
{
    int code;  // or the signal that ended it
    QByteArray out;
    QByteArray err;
};

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

QByteArray read(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool isInstalled(const char *program)
{
    return !QStandardPaths::findExecutable(str(program)).isEmpty() ||
        qgetenv("CI") == "true";  // where nothing is skipped
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
QByteArray files() { return shell("ls -A; find . -type f | sort | xargs -d '\\n' md5sum").out; }

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
    void aListingThatLosesItsServerPrintsItsBeginningAndAnError();
    void killedWorkIsDoneOrUndone_data() { addRows(VICTIMS); }
    void killedWorkIsDoneOrUndone();

private:
    QTemporaryDir m_folder;
    PostgresServer m_postgres;
    QByteArray m_files;  // as they must stay
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
    qputenv("SCHEMA", TQXML_SCHEMA);
    qputenv("AS_STRANGER", geteuid() == 0 ? "setpriv --bounding-set=-all" : "");
    qputenv("JOB", "b4:15");
    qputenv("OWNER", "48000001:55");
    qputenv("OUTPUT", "40000004:8");
    qunsetenv("QT_HASH_SEED");
    qunsetenv("TQXML_DATABASE");
    QCOMPARE(shell(PREPARATION).err, QByteArray());
    if (m_postgres.isInstalled()) {
        QVERIFY(m_postgres.start());
        qputenv("PG", m_postgres.url("store").chopped(6));
        QCOMPARE(tqxml("init " + m_postgres.url("whole")).err, QByteArray());
    }
    m_files = files();
}

void tst_Command::init()
{
    const QByteArray test = QByteArray(QTest::currentTestFunction()) + QTest::currentDataTag();
    if (test.toLower().contains("server") && !m_postgres.isInstalled()) {
        QTest::qSkip("PostgreSQL is not installed", __FILE__, __LINE__);
    }
    QVERIFY(QFile::copy(str("store.db"), str("scratch.db")));
}

// No test changes or leaves other files.
void tst_Command::cleanup()
{
    shell("rm -rf *scratch*");
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
    const QByteArray recorded = read(file);
#ifdef TQXML_SANITIZED
    if (file.endsWith(str("memory.txt"))) {
        QTest::qSkip("sanitizers need more memory", __FILE__, __LINE__);
        return;
    }
#endif
    for (const QByteArray program : { "sqlite3", "xmllint" }) {
        if (recorded.contains(program + ' ') && !isInstalled(program.constData())) {
            QTest::qSkip("a program is not installed", __FILE__, __LINE__);
            return;
        }
    }
    if (recorded.contains("script -") && shell("script -qec true /dev/null").code != DONE) {
        QTest::qSkip("no pseudo-terminal can be opened", __FILE__, __LINE__);
        return;
    }
    const QByteArray replayed = replay(str(recorded)).toUtf8();
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

void tst_Command::aListingThatLosesItsServerPrintsItsBeginningAndAnError()
{
    const QByteArray end = "psql -t -d large -c 'SELECT pg_terminate_backend(pid) FROM "
                           "pg_stat_activity WHERE pid <> pg_backend_pid() AND datname = "
                           "current_database()' | grep -q t";
    const QByteArray list = "list jobs --format csv --database $PG/large";
    QCOMPARE(shell("createdb large && tqxml init $PG/large --jobs 20000").code, DONE);
    const Outcome whole = tqxml(list);
    QCOMPARE(whole.code, DONE);
    int failed = 0;
    for (int delay = 0; delay < 8; ++delay) {
        QProcess listing;
        listing.start(str("sh"), { str("-c"), str("exec tqxml " + list) });
        listing.waitForFinished(1 + 50 * delay);
        while (!listing.waitForFinished(1) && shell(end).code != DONE) {}
        const Outcome outcome = finish(listing);
        const bool isWhole = outcome.code == DONE;
        QCOMPARE(outcome.out, isWhole ? whole.out : whole.out.left(outcome.out.size()));
        QCOMPARE(outcome.err.isEmpty(), isWhole);
        failed += outcome.code == FAILED;
    }
    QVERIFY(failed > 0);
}

void tst_Command::killedWorkIsDoneOrUndone()
{
    const auto &row = currentRow<Victim>();
    const QByteArray work = "tqxml " + QByteArray(row.work);
    qputenv("STORE", QByteArray(row.store).replace("$PG", qgetenv("PG")));
    shell(row.prepare);
    const QByteArray before = shell(STATE).out;
    QElapsedTimer timer;
    timer.start();
    QCOMPARE(shell(work).err, QByteArray());
    const auto duration = int(timer.elapsed());
    const QByteArray after = shell(STATE).out;
    QVERIFY(before != after);
    for (int part = 1; part <= 20; ++part) {
        const QByteArray seconds = QByteArray::number(duration * part / 20000.0);
        shell(row.prepare);
        shell("timeout -s KILL " + seconds + ' ' + work);
        const QByteArray found = shell(STATE).out;
        QVERIFY2(found == before || found == after, found.constData());
    }
    shell(row.prepare);
    QCOMPARE(shell(work).err, QByteArray());
    QCOMPARE(shell(STATE).out, after);
}

QTEST_GUILESS_MAIN(tst_Command)
#include "tst_command.moc"

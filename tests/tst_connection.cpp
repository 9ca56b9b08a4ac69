// What a connection promises when things go wrong: failures are counted, one transaction sees one
// moment, nothing hangs, and no store answers for another.

#include "stores.h"
#include "tqstorewatch.h"

#include <QElapsedTimer>
#include <QRandomGenerator>

#include <algorithm>
#include <map>
#include <optional>
#include <thread>

#include <sys/stat.h>
#include <sys/un.h>

namespace {

constexpr PACKETDATATYPES PROFILE = PACKETDATATYPE_ICCPROFILE;
constexpr unsigned SRGB = 0x58000000;  // the first profile
constexpr int OUTPUT = 0x40000000;  // the first
constexpr unsigned OWNER = 0x48000000;  // the first owner of books
constexpr int PAGE_SIZE = 4096;  // of SQLite

// What a store holds, and what a connection answers, the obvious way.
struct Model
{
    std::map<int, QByteArray> jobs;  // of one output: names by id
    std::optional<std::map<int, QByteArray>> moment;  // which a transaction sees
    bool isReading = false;  // a transaction has begun
    bool isBroken = false;  // a query failed in the transaction, so all further ones do
    bool isGone = false;  // the tables are renamed
    bool isLost = false;  // the server has ended the connection
    bool isSuspect = false;  // the last query failed; begin() looks for the tables then
    unsigned failures = 0;

    void begin()
    {
        isReading = true;
        note(isLost || (isSuspect && isGone));
    }
    void end()
    {
        isSuspect = isSuspect || isLost;
        isReading = isBroken = isLost = false;
        moment.reset();
    }
    /// Whether a question is answered.
    bool ask()
    {
        note(isBroken || isGone || isLost);
        if (isReading && !isSuspect && !moment) {
            moment = jobs;
        }
        return !isSuspect;
    }
    QByteArrayList answer() const
    {
        QByteArrayList answer;
        for (const auto &job : moment.value_or(jobs)) {
            answer += job.second + " 1 0 ";
        }
        std::sort(answer.begin(), answer.end());
        return answer;
    }

private:
    void note(bool failed)
    {
        failures += failed;
        isSuspect = failed;
        isBroken = isReading && failed;
        isLost = false;
        if (failed) {
            moment.reset();
        }
    }
};

// A connection, what others do to its store, and the model of both.
class Trial
{
public:
    Trial(const QByteArray &url, quint32 seed) : m_store(url), m_client(url), m_random(seed)
    {
        sql(m_store, "DELETE FROM tq_job");
    }
    /// What others do: add, rename and remove jobs, take tables away, end connections.
    void change()
    {
        const int id = m_random.bounded(1, 6);
        const QByteArray number = QByteArray::number(id);
        const int what = m_random.bounded(m_store.startsWith("sqlite:") ? 4 : 5);
        if (what < 2 && !m_model.isGone) {
            const QByteArray name = "job " + QByteArray::number(m_random.bounded(100));
            sql(m_store,
                "INSERT INTO tq_job (id, output_id, name, page, state) VALUES (" + number +
                    ", 1073741824, '" + name + "', 1, 0) ON CONFLICT (id) DO UPDATE SET name = '" +
                    name + '\'');
            m_model.jobs[id] = name;
        } else if (what == 2 && !m_model.isGone) {
            sql(m_store, "DELETE FROM tq_job WHERE id = " + number);
            m_model.jobs.erase(id);
        } else if (what == 3 && !m_model.moment) {
            for (const QByteArray table : { "tq_job", "tq_icc_profile", "tq_schema" }) {
                const QByteArray away = "gone_" + table;
                sql(m_store,
                    "ALTER TABLE " + (m_model.isGone ? away : table) + " RENAME TO " +
                        (m_model.isGone ? table : away));
            }
            m_model.isGone = !m_model.isGone;
        } else if (what == 4) {
            sql(m_store,
                "SELECT pg_terminate_backend(pid, 5000) FROM pg_stat_activity "
                "WHERE datname = 'random' AND pid <> pg_backend_pid()");
            m_model.isLost = !m_model.isSuspect;
        }
    }
    /// Begins a transaction, or ends it.
    void turn()
    {
        if (m_transaction) {
            m_transaction.reset();
            m_model.end();
        } else {
            m_transaction.emplace(m_client.server);
            m_model.begin();
        }
    }
    void ask()
    {
        std::optional<TQReadTransaction> inner;  // belongs to the one that has begun
        if (m_transaction) {
            inner.emplace(m_client.server);
        }
        const QByteArray cause = m_model.isBroken ? m_client.error() : QByteArray();
        const bool isAnswered = m_model.ask();
        if (m_random.bounded(3) > 0) {
            const QByteArrayList expected = isAnswered ? m_model.answer() : QByteArrayList();
            QCOMPARE(m_client.jobsOf(OUTPUT), expected);
            QCOMPARE(m_client.failed(), !isAnswered);
        } else {
            ICCPROFILEDATA_CC profile;
            profile.setName("sRGB");
            QCOMPARE(m_client.loaded(profile).size() > 1000, isAnswered);
        }
        QCOMPARE(m_client.server.failures(), m_model.failures);
        QCOMPARE(m_client.error().isEmpty(), m_model.failures == 0);
        if (!cause.isEmpty()) {
            QCOMPARE(m_client.error(), cause);
        }
    }

private:
    const QByteArray m_store;
    Client m_client;
    std::optional<TQReadTransaction> m_transaction;
    QRandomGenerator m_random;
    Model m_model;
};

/// A socket that listens at a path as PostgreSQL does.
int listenIn(const QByteArray &folder)
{
    sockaddr_un address = { AF_UNIX, {} };
    qstrcpy(address.sun_path, (folder + "/.s.PGSQL.4711").constData());
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    ::bind(listener, reinterpret_cast<sockaddr *>(&address), sizeof(address));
    ::listen(listener, 1);
    return listener;
}

/// Lets one PostgreSQL client in, and answers nothing that it asks then; what it said first.
QByteArray fallSilent(int listener)
{
    // PostgreSQL's messages for: no password is needed, the version, and ready for queries.
    constexpr char WELCOME[] = "R\0\0\0\10\0\0\0\0S\0\0\0\30server_version\00015.0\0Z\0\0\0\5I";
    const int client = ::accept(listener, nullptr, nullptr);
    char text[1000];
    const auto size = ::recv(client, text, sizeof(text), 0);
    const QByteArray startup = QByteArray(text, int(size)).replace('\0', ' ');
    ::send(client, WELCOME, sizeof(WELCOME) - 1, 0);
    while (::recv(client, text, sizeof(text), 0) > 0) {}
    ::close(client);
    return startup;
}

/// All jobs and books and the bytes of a profile, as one transaction sees them.
QByteArrayList everything(Client &client)
{
    const TQReadTransaction transaction(client.server);
    QByteArrayList answers { client.profile(SRGB) };
    for (int id = 0; id < 6; ++id) {
        answers += client.jobsOf(OUTPUT + id);
        answers += client.booksOf({ OWNER + unsigned(id), PACKETDATATYPE_BOOKOWNER });
    }
    return answers;
}

}  // namespace

class tst_Connection : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { Stores::addDatabases(); }
    void initTestCase() { QVERIFY(m_stores.start()); }
    void init();
    void whateverHappensAnswersAreOfOneMomentOrFailures();
    void aReaderThatWaitsHoldsUpNoWriter();
    void anItemThatLacksWhatItRefersToIsAnError();
    void profilesComeFromTheStoreOfTheirItem();
    void aDamagedPageIsAnErrorOrChangesNothing();
    void aFileThatIsReadWithoutLocksMayNotChange();
    void anIdleConnectionIsNotGivenUp();
    void aServerThatFallsSilentAtOnceIsGivenUp();
    void changesOfOthersAreNoticed();
    void aStoreThatWasAwayIsWatchedAgain();
    void badAddressesSayWhyWithoutTheirPassword();

private:
    QByteArray sample(const char *name) const { return m_stores.sample(name, m_isPostgres); }
    void takeAway(const char *name);
    void bringBack(const char *name);

    Stores m_stores;
    bool m_isPostgres = false;
};

void tst_Connection::init()
{
    QFETCH_GLOBAL(bool, isPostgres);
    m_isPostgres = isPostgres;
    Stores::isSkipped(isPostgres);
}

void tst_Connection::whateverHappensAnswersAreOfOneMomentOrFailures()
{
    const quint32 seed = QRandomGenerator::global()->generate();
    Trial trial(sample("random"), seed);
    QRandomGenerator random(seed);
    for (int step = 0; step < 200 && !QTest::currentTestFailed(); ++step) {
        trial.change();
        if (random.bounded(4) == 0) {
            trial.turn();
        }
        trial.ask();
    }
    QVERIFY2(!QTest::currentTestFailed(), ("seed " + QByteArray::number(seed)).constData());
}

// A listing waits like this while the program that reads its output is slow.
void tst_Connection::aReaderThatWaitsHoldsUpNoWriter()
{
    constexpr int WRITES = 20;
    const QByteArray store = sample("waiting");
    Client client(store);
    const TQReadTransaction transaction(client.server);
    const QByteArrayList before = client.jobsOf(OUTPUT);
    QVERIFY(!before.isEmpty());
    qint64 slowest = 0;
    for (int i = 0; i < WRITES; ++i) {
        QElapsedTimer time;
        time.start();
        QString error;
        sql(store, "UPDATE tq_job SET name = 'changed' WHERE page % 20 = " + QByteArray::number(i),
            &error);
        QCOMPARE(error, QString());
        slowest = std::max(slowest, time.elapsed());
    }
    QVERIFY2(slowest < 1000, QByteArray::number(slowest).constData());  // ms, far below any timeout
    QCOMPARE(
        sql(store, "SELECT count(*) FROM tq_job WHERE name <> 'changed'"), QByteArrayList { "0" });
    QCOMPARE(client.jobsOf(OUTPUT), before);
    QCOMPARE(client.server.failures(), 0U);
}

void tst_Connection::anItemThatLacksWhatItRefersToIsAnError()
{
    const QByteArray store = sample("lacking");
    Client client(store);
    sql(store, "ALTER TABLE tq_icc_profile RENAME TO gone");
    QVERIFY(!client.archive(PACKETDATATYPE_JOB, 1));
    QVERIFY(client.failed());
    QCOMPARE(client.server.failures(), 1U);
}

// Two databases of one server have the same host and port; files have numbers for ports.
void tst_Connection::profilesComeFromTheStoreOfTheirItem()
{
    Client one(sample("first"));
    ICCPROFILEDATA_CC named;  // of no store
    named.setName("sRGB");
    {
        const QByteArray second = sample("second");
        sql(second, "UPDATE tq_icc_profile SET data = 'other' WHERE name = 'sRGB'");
        const QByteArray stored = "\n7 5 " + QByteArray("other").toBase64() + '\n';
        Client two(second);
        QVERIFY(two.profile(SRGB).contains(stored));
        QVERIFY(!one.profile(SRGB).contains(stored));
        QVERIFY(one.profile(SRGB).size() > 1000);
        const auto node = two.archive(PROFILE, SRGB);
        ICCPROFILEDATA_CC copy = *dynamic_cast<ICCPROFILEDATA_CC *>(node->packetable);
        QVERIFY(two.loaded(copy).contains(stored));
        QCOMPARE(two.loaded(named).contains(stored), !m_isPostgres);
        if (m_isPostgres) {
            QCOMPARE(packetOf(named), QByteArray("SI 30\nTI 0\n"));
        }
    }
    QVERIFY(one.loaded(named).size() > 1000);  // now there is one only
}

// Overwritten, emptied, or with fewer entries than it had, which SQLite itself does not notice.
void tst_Connection::aDamagedPageIsAnErrorOrChangesNothing()
{
    if (m_isPostgres) {
        return;  // its files are read by the server only
    }
    constexpr int ENTRIES_AT = 3;  // their number, in the header of a page of a tree
    const QByteArray TREES("\x2\x5\xa\xd");  // first bytes of their pages
    const QByteArray store = sample("damaged");
    const QString path = m_stores.path("damaged");
    const QByteArray whole = contentOf(path);
    Client undamaged(store);
    const QByteArrayList expected = everything(undamaged);
    int errors = 0;
    for (int page = PAGE_SIZE; page < int(whole.size()); page += PAGE_SIZE) {
        QByteArrayList damages { QByteArray(PAGE_SIZE, '\xff') };
        if (TREES.contains(whole[page])) {
            damages += QByteArray(PAGE_SIZE, '\0');
            damages += whole.mid(page, ENTRIES_AT) + QByteArray("\0\1", 2);
        }
        for (const QByteArray &damage : std::as_const(damages)) {
            write(path, QByteArray(whole).replace(page, damage.size(), damage));
            Client single(store);
            const QByteArrayList jobs = single.jobsOf(OUTPUT);
            if (single.failed()) {
                QCOMPARE(jobs, QByteArrayList());  // no part of a list
            }
            Client client(store);
            const QByteArrayList answers = everything(client);
            const bool isError = client.server.failures() > 0;
            if (!isError) {
                QVERIFY2(answers == expected, QByteArray::number(page).constData());
            }
            QCOMPARE(isError, !client.error().isEmpty());
            errors += isError;
        }
    }
    QVERIFY(errors > whole.size() / PAGE_SIZE);
}

void tst_Connection::aFileThatIsReadWithoutLocksMayNotChange()
{
    if (m_isPostgres) {
        return;  // it always locks
    }
    QVERIFY(QDir().mkdir(m_stores.path("closed")));
    const QByteArray store = sample("closed/store");
    const auto allow = [this](mode_t folder, mode_t file) {
        ::chmod(m_stores.path("closed").toUtf8().constData(), folder);
        ::chmod(m_stores.path("closed/store").toUtf8().constData(), file);
    };
    ::chmod(m_stores.path("").toUtf8().constData(), 0755);
    allow(0555, 0444);
    // Root may write everywhere, so the file is read as another user. "(void)!" is against a
    // warning.
    (void)!::setresuid(65534, 65534, uid_t(-1));
    Client client(store);
    const QByteArrayList jobs = client.jobsOf(OUTPUT);
    (void)!::setresuid(0, 0, uid_t(-1));
    allow(0755, 0644);
    QVERIFY(!jobs.isEmpty());
    sql(store, "DELETE FROM tq_job WHERE state = 1");
    QCOMPARE(client.jobsOf(OUTPUT), QByteArrayList());
    const QString reason = str(": the store was changed while it was read");
    QCOMPARE(str(client.error()), m_stores.path("closed/store") + reason);
}

void tst_Connection::anIdleConnectionIsNotGivenUp()
{
    Client client(sample("quiet") + (m_isPostgres ? "?response_timeout=1" : ""));
    QTest::qSleep(1500);
    QVERIFY(!client.jobsOf(OUTPUT).isEmpty());
    QCOMPARE(client.server.failures(), 0U);
}

void tst_Connection::aServerThatFallsSilentAtOnceIsGivenUp()
{
    if (!m_isPostgres) {
        return;  // no server
    }
    const QByteArray folder = m_stores.folder.path().toUtf8();
    const int listener = listenIn(folder);
    QByteArray startup;
    std::thread server([&] { startup = fallSilent(listener); });
    QElapsedTimer time;
    time.start();
    Client client("postgresql:///x?host=" + folder +
        "&port=4711&user=visitor&response_timeout=1&options=-c%20geqo%3Doff");
    server.join();
    ::close(listener);
    QVERIFY(time.elapsed() < 5000);
    QCOMPARE(client.server.failures(), 1U);
    QCOMPARE(client.error(), QByteArray("x: no answer from the server for 1 s"));
    QVERIFY2(startup.contains(" user visitor database x options -c client_min_messages=error "
                              "-c statement_timeout=30s -c lock_timeout=10s -c geqo=off "),
        startup.constData());
}

void tst_Connection::changesOfOthersAreNoticed()
{
    const QByteArray store = sample("watched");
    int calls = 0;
    const TQStoreWatch watch(store.constData(), [&calls] { ++calls; });
    Client client(store);
    QVERIFY(!client.jobsOf(OUTPUT).isEmpty());  // reading changes nothing
    QTest::qWait(1500);
    QCOMPARE(calls, 0);
    sql(store, "UPDATE tq_job SET remark = 'first'");
    sql(store, "UPDATE tq_job SET remark = 'second'");
    QTRY_VERIFY(calls > 0);
    QTest::qWait(1500);
    QVERIFY(calls <= 2);  // one, unless the machine was slow
    calls = 0;
    for (const char *table :
        { "tq_job", "tq_book", "tq_book_owner", "tq_output", "tq_icc_profile", "tq_publication" }) {
        QString error;
        sql(store, QByteArray("UPDATE ") + table + " SET name = name || ' 2'", &error);
        QCOMPARE(error, QString());
        QTRY_VERIFY2(calls > 0, table);
        calls = 0;
    }
}

void tst_Connection::takeAway(const char *name)
{
    if (m_isPostgres) {
        m_stores.postgres.stop();
    } else {
        QVERIFY(QFile::remove(m_stores.path(name)));
    }
}

void tst_Connection::bringBack(const char *name)
{
    if (m_isPostgres) {
        QVERIFY(m_stores.postgres.start());
    } else {
        sample(name);
    }
}

void tst_Connection::aStoreThatWasAwayIsWatchedAgain()
{
    const QByteArray store = sample("away");
    int calls = 0;
    const TQStoreWatch watch(store.constData(), [&calls] { ++calls; });
    takeAway("away");
    QTest::qWait(1500);
    QCOMPARE(calls, 0);
    bringBack("away");
    QTRY_COMPARE(calls, 1);  // others may have changed it before it could be watched
    sql(store, "UPDATE tq_job SET remark = 'changed'");
    QTRY_COMPARE(calls, 2);
}

// The file has each address, indented by two blanks, and below it, indented by four, what is said.
void tst_Connection::badAddressesSayWhyWithoutTheirPassword()
{
    const QString recorded = str(contentOf(str(TQXML_ADDRESSES)));
    QStringList said;
    for (const QString &line : recorded.split(QLatin1Char('\n'))) {
        if (!line.startsWith(str("    "))) {
            said += line;
        }
        if (line.startsWith(str("  ")) && !line.startsWith(str("    "))) {
            Client client(line.trimmed().toUtf8());
            QCOMPARE(client.server.failures(), 1U);
            QCOMPARE(client.server.getConnectedPortnum(), 0);
            QCOMPARE(client.jobsOf(OUTPUT), QByteArrayList());
            QVERIFY(client.failed());
            said += str("    ") + str(client.error());
        }
    }
    QVERIFY(said.size() > 20);
    QCOMPARE(said, recorded.split(QLatin1Char('\n')));
}

QTEST_GUILESS_MAIN(tst_Connection)
#include "tst_connection.moc"

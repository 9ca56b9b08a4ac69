// Tests of id ranges and of failing or cancelled imports. Tests of what the command prints are in
// tests/command/stores.txt, profiles.txt and server.txt.

#include "stores.h"

namespace {

constexpr const char *GRAY = "/usr/share/color/icc/Gray.icc";

struct ImportResult
{
    std::string error;  // empty after success
    std::vector<TQKEY_ELEMENT> keys;
};

ImportResult importProfiles(
    const QByteArray &url, const std::vector<std::string> &files, const TQPROGRESS &progress = {})
{
    ImportResult result;
    TQImportProfiles(url.constData(), files, progress, result.error, &result.keys);
    return result;
}

}  // namespace

class tst_Store : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { Stores::addDatabases(); }
    void initTestCase() { QVERIFY(m_stores.start()); }
    void init();
    void idRangesDoNotOverlap();
    void failedAndCancelledImportsChangeNothing();
    void truncatedProfilesAreRefused();

private:
    Stores m_stores;
    QByteArray m_store;  // a new one with the sample
};

void tst_Store::init()
{
    QFETCH_GLOBAL(bool, isPostgres);
    if (!Stores::isSkipped(isPostgres)) {
        const QByteArray name = QByteArray(QTest::currentTestFunction()).toLower();
        m_store = m_stores.sample(name.constData(), isPostgres);
    }
}

// Each table's ids have a range of their own; a CHECK keeps others out.
void tst_Store::idRangesDoNotOverlap()
{
    const QByteArrayList tables { "tq_job", "tq_output", "tq_book_owner", "tq_book",
        "tq_icc_profile", "tq_publication" };
    for (const QByteArray &table : tables) {
        for (const QByteArray &other : tables) {
            for (const char *extreme : { "min", "max" }) {
                if (table == other) {
                    continue;
                }
                const QByteArray moved = "UPDATE " + table + " SET id = (SELECT " + extreme +
                    "(id) FROM " + other + ") WHERE id = (SELECT min(id) FROM " + table + ")";
                QString error;
                sql(m_store, moved, &error);
                const bool isRefused = error.contains(str("check constraint"), Qt::CaseInsensitive);
                QVERIFY2(isRefused, moved.constData());
            }
        }
    }
}

void tst_Store::failedAndCancelledImportsChangeNothing()
{
    const QByteArray profiles = "SELECT id FROM tq_icc_profile ORDER BY id";
    const QByteArrayList before = sql(m_store, profiles);
    QVERIFY(!before.isEmpty());

    const ImportResult failed = importProfiles(m_store, { GRAY, "missing.icc" });
    QCOMPARE(failed.error, std::string("missing.icc: No such file or directory"));
    QCOMPARE(failed.keys.size(), size_t(0));
    QCOMPARE(sql(m_store, profiles), before);

    size_t done = 0;
    size_t total = 0;
    const ImportResult cancelled =
        importProfiles(m_store, { GRAY, GRAY, GRAY }, [&](size_t doneNow, size_t totalNow) {
            done = doneNow;
            total = totalNow;
            return done < 2;
        });
    QCOMPARE(cancelled.error, std::string("interrupted"));
    QCOMPARE(done, size_t(2));
    QCOMPARE(total, size_t(3));
    QCOMPARE(sql(m_store, profiles), before);
}

void tst_Store::truncatedProfilesAreRefused()
{
    const QByteArray whole = contentOf(str(GRAY));
    const QString part = m_stores.path("part.icc");
    for (int size = 0; size < int(whole.size()); size += 7) {  // every 7th length, for speed
        write(part, whole.left(size));
        QVERIFY(!importProfiles(m_store, { part.toStdString() }).error.empty());
    }
}

QTEST_GUILESS_MAIN(tst_Store)
#include "tst_store.moc"

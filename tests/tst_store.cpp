// What makes and changes stores: ids, and imports that fail or are stopped. What users see of it is
// in tests/command/stores.txt, profiles.txt and server.txt.

#include "stores.h"

namespace {

constexpr const char *GRAY = "/usr/share/color/icc/Gray.icc";

struct Import
{
    Import(const QByteArray &url, const std::vector<std::string> &files,
        const TQPROGRESS &progress = {})
    {
        TQImportProfiles(url.constData(), files, progress, error, &keys);
    }
    std::string error;
    std::vector<TQKEY_ELEMENT> keys;
};

}  // namespace

class tst_Store : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data() { Stores::addDatabases(); }
    void initTestCase() { QVERIFY(m_stores.start()); }
    void init();
    void anIdIsOfOneTableOnly();
    void anImportThatFailsOrIsStoppedChangesNothing();
    void aPartOfAProfileIsNoProfile();

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

void tst_Store::anIdIsOfOneTableOnly()
{
    const QByteArrayList tables { "tq_job", "tq_output", "tq_book_owner", "tq_book",
        "tq_icc_profile", "tq_publication" };
    for (const QByteArray &table : tables) {
        for (const QByteArray &other : tables) {
            const QByteArray extreme = table < other ? "min" : "max";
            const QByteArray moved = "UPDATE " + table + " SET id = (SELECT " + extreme +
                "(id) FROM " + other + ") WHERE id = (SELECT min(id) FROM " + table + ")";
            QString error;
            sql(m_store, moved, &error);
            const bool isRefused = error.contains(str("check constraint"), Qt::CaseInsensitive);
            QVERIFY2(isRefused == (table != other), moved.constData());
        }
    }
}

void tst_Store::anImportThatFailsOrIsStoppedChangesNothing()
{
    const Import failed(m_store, { GRAY, "missing.icc" });
    QCOMPARE(failed.error, std::string("missing.icc: No such file or directory"));
    QCOMPARE(failed.keys.size(), size_t(0));
    size_t done = 0;
    const Import stopped(m_store, { GRAY, GRAY, GRAY }, [&done](size_t files, size_t total) {
        done = files;
        return files < 2 && total == 3;
    });
    QCOMPARE(stopped.error, std::string("interrupted"));
    QCOMPARE(done, size_t(2));
    QCOMPARE(sql(m_store, "SELECT count(*) FROM tq_icc_profile"), QByteArrayList({ "8" }));
}

void tst_Store::aPartOfAProfileIsNoProfile()
{
    const QByteArray whole = contentOf(str(GRAY));
    const QString part = m_stores.path("part.icc");
    for (int size = 0; size < int(whole.size()); size += 7) {
        write(part, whole.left(size));
        QVERIFY(!Import(m_store, { part.toStdString() }).error.empty());
    }
}

QTEST_GUILESS_MAIN(tst_Store)
#include "tst_store.moc"

#include "postgres.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "tqregistry.h"
#include "tqstorageclass.h"
#include "tqstore.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

#include <memory>
#include <thread>
#include <tuple>

namespace {

constexpr PACKETDATATYPES JOB = PACKETDATATYPE_JOB;
constexpr PACKETDATATYPES BOOK = PACKETDATATYPE_BOOK;
constexpr PACKETDATATYPES OUTPUT = PACKETDATATYPE_OUTPUT;
constexpr PACKETDATATYPES OWNER = PACKETDATATYPE_BOOKOWNER;
constexpr PACKETDATATYPES PROFILE = PACKETDATATYPE_ICCPROFILE;
constexpr PACKETDATATYPES SPECIMEN = PACKETDATATYPE_SPECIMEN;
constexpr int OUTPUT_ID = 1073741824;  // of the first

// What an item of the specimen type may hold, and what it may not; what is no item at all.
const char *const GOOD[] = { "101 two  words ", "0E04 1F 0", "SL 0\nTL 0", "SL 1\nSI 6\nTI 0\nTL 0",
    "SI 55\n1 Emma\nTI 0", "701 255", "701 -128", "504 -2147483648", "508 18446744073709551615",
    "808 -1.5e-300", "b04 841.89", "e04 1f FF", "1004 0 ", "1004 3 1 -2 4294967295", "f08 2 1.5 -2",
    "1601 0 ", "1601 2 é\"\r &%1 <x>\t😀", "1701 4 AAECAw==" };
// What would not come back from XML.
const char *const LOST[] = { "101  ", "104 \t\xc2\xa0", "1601 3 a\r\rb", "1601 2 \ra",
    "1601 2 a\r ", "1601 1 ", "1701 0 " };
const char *const BAD[] = { "", "101", "101 ", "ffff x", "zz x", "a01 x", "SI 63", "TL 0", "TI 1",
    "TI 0\nTI 0", "SL 0\nSL 0\nTL 0\nTL 0", "SL 0\n101 x\nTL 0", "SL 2\nSI 6\nTI 0\nTL 0",
    "SL 0\nSI 6\nTI 0\nTL 0", "SI 6\n101 x\nTI 0", "SI 6\nSI 6\nTI 0\nTI 0", "SI ff63\nTI 0",
    "701 256", "701 -129", "1d04 12a", "508 18446744073709551616", "808 1,5", "808 inf", "e04 1",
    "e04 1 2 3", "e04  ", "e04 1 100000000", "1004 0", "1004 3 1 2", "1004 1 1 2", "1004 2 1 2 ",
    "1001 2 1 256", "1001 A 1 2 3 4 5 6 7 8 9 0", "1601 3 a\rb", "1601 1 a\rb",
    "1701 5 AAECAw==", "1701 4 AAECAw=", "1701 4 AAE*Aw==", "1701 4 AAECAx==" };
const char *const NO_ITEMS[] = { "", "\n", "SI 63", "SI 63\n", "SI 63\nTI 0", "SL 0\nTL 0\n",
    "SI 15\nTI 0\n", "SI 0x63\nTI 0\n", "101 x\nSI 63\nTI 0\n", "SI 63\nTI 0\n\n" };

using Item = std::unique_ptr<TQPacketable>;

Item makeItem(PACKETDATATYPES type) { return Item(PacketableUtil::getPacketable(type)); }

// Fills from a buffer of just that size, so that the sanitizer sees every read beyond it.
bool fill(TQPacketable &item, const QByteArray &text)
{
    std::vector<char> exact(text.begin(), text.end());
    return item.fromPacket(exact.data(), unsigned(exact.size()), false, true);
}

TQDB_REFERENCE *references(TQPacketable &item)
{
    TQDB_REFERENCE *chain = nullptr;
    item.getReferences(0, &chain, 0);
    return chain;
}

// A connection, and what its listings hold.
struct Client
{
    explicit Client(const QByteArray &url) : server(url.constData()) {}
    TQLISTRECORD *list(PACKETDATATYPES type) { return server.getDBList(command, message, type); }
    QByteArrayList jobs(int output, int queue = TQQUEUE_ALL, int sort = SORTTYPE_NAME,
        SORTORDER order = SORTORDER_ASCENDING)
    {
        const auto jobs =
            server.getJobqueue(command, message, TQQUEUE(queue), SORTTYPE(sort), order, output);
        auto list = reinterpret_cast<TQLISTRECORD *>(jobs);
        QByteArrayList names;
        for (auto record = list; record; record = record->next) {
            names += reinterpret_cast<TQJOB *>(record)->name;
        }
        TQPacketFreeList(&list, JOB);
        return names;
    }
    std::unique_ptr<ArchiveNode> archive(PACKETDATATYPES type, unsigned id)
    {
        return std::unique_ptr<ArchiveNode>(
            server.getArchiveNode(command, message, type, { id, type }));
    }
    // True when the last query failed and says so.
    bool failed() { return server.iserror(command) && *server.errorText(); }

    TQCommServer server;
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
};

// What a request answers with, by the store itself: identifiers and names.
struct Request
{
    int type;
    unsigned owner;  // 0 for all
    PACKETDATATYPES items;
    const char *sql;
};
constexpr Request REQUESTS[] = {
    { XMLCommServer::REQUEST_OUTPUTS, 0, OUTPUT, "id || name FROM tq_output ORDER BY name" },
    { XMLCommServer::REQUEST_BOOKS, 1207959558, BOOK,
        "id || name FROM tq_book WHERE owner_id = 1207959558 ORDER BY name" },
    { XMLCommServer::REQUEST_BOOKS, 0, BOOK,
        "b.id || b.name FROM tq_book b JOIN tq_book_owner w ON w.id = owner_id "
        "ORDER BY w.name, b.name" },
    { XMLCommServer::REQUEST_JOBS, 1073741826, JOB,
        "id || name FROM tq_job WHERE output_id = 1073741826 ORDER BY name, id" },
    { XMLCommServer::REQUEST_JOBS, 0, JOB,
        "j.id || j.name FROM tq_job j JOIN tq_output o ON o.id = output_id "
        "WHERE publication_id IS NULL ORDER BY o.name, j.name, j.id" },
    { XMLCommServer::REQUEST_PUBLICATIONS, 0, JOB,
        "j.id || p.name FROM tq_job j JOIN tq_publication p ON p.id = publication_id WHERE page = "
        "(SELECT min(page) FROM tq_job WHERE publication_id = p.id) ORDER BY p.id" },
};

}  // namespace

class tst_Server : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase_data();
    void initTestCase();
    void init();
    void packetText();
    void registry();
    void records();
    void archiveNodes();
    void content();
    void requests();
    void failures();
    void lostConnection();

private:
    // A store with the sample, of the kind that the row of the whole test names; made when there
    // is none.
    QByteArray sample(const char *name) const;

    QTemporaryDir m_folder;
    PostgresServer m_postgres;
};

void tst_Server::initTestCase_data()
{
    QTest::addColumn<bool>("isPostgres");
    QTest::newRow("SQLite") << false;
    QTest::newRow("PostgreSQL") << true;
}

void tst_Server::initTestCase()
{
    QVERIFY(!m_postgres.isInstalled() || m_postgres.start());
    // No test may make Qt warn: what goes wrong is told through the interface.
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
        std::fputs(qPrintable(text), stderr);
        std::abort();
    });
}

void tst_Server::init()
{
    QFETCH_GLOBAL(bool, isPostgres);
    if (isPostgres && !m_postgres.isInstalled()) {
        QTest::qSkip("PostgreSQL is not installed", __FILE__, __LINE__);
    }
}

QByteArray tst_Server::sample(const char *name) const
{
    QFETCH_GLOBAL(bool, isPostgres);
    const QByteArray url =
        isPostgres ? m_postgres.url(name) : "sqlite:" + m_folder.filePath(str(name)).toUtf8();
    std::string error;
    TQCreateSampleStore(url.constData(), {}, error);
    return url;
}

void tst_Server::packetText()
{
    const Item item = makeItem(SPECIMEN);
    const auto with = [](const QByteArray &line) { return "SI 63\n" + line + "\nTI 0\n"; };
    QByteArrayList lines;
    for (const char *line : GOOD) {
        QVERIFY2(fill(*item, with(line)) && packetOf(*item) == with(line), line);
        lines += line;
    }
    for (const char *line : LOST) {
        QVERIFY2(fill(*item, with(QByteArray(line) + "\n101 x")), line);
        QCOMPARE(packetOf(*item), with("101 x"));
    }
    const QByteArray one = with(lines.join('\n'));
    const QByteArray all = with("SL 2\nSI 6\nTI 0\n" + one + "TL 0\n" + one + "102 x");
    QVERIFY(fill(*item, all));
    QCOMPARE(packetOf(TQPacketable(*item)), all);
    for (int cut = 0; cut < int(all.size()); ++cut) {
        QVERIFY(!fill(*item, all.left(cut)));
    }
    for (const char *line : BAD) {
        QVERIFY2(!fill(*item, with(line)), line);
    }
    for (const char *text : NO_ITEMS) {
        QVERIFY2(!fill(*item, text), text);
    }
    QCOMPARE(packetOf(*item), all);
    const auto nested = [](int levels) {
        return QByteArray("SI 63\n").repeated(levels) + QByteArray("TI 0\n").repeated(levels);
    };
    QVERIFY(fill(*item, nested(256)) && !fill(*item, nested(257)) && !fill(*item, nested(500000)));
    const QByteArray large = with("101 " + QByteArray(3000000, 'x') + "\n104 x") +
        QByteArray("SL 1\nSI 15\n1 x\nTI 0\nTL 0\n").repeated(100000);
    QVERIFY(fill(*item, large) && packetOf(*item) == large);
}

// A data type is a table of fields.
void tst_Server::registry()
{
    constexpr auto TYPE = static_cast<PACKETDATATYPES>(0x4711);
    const TQSTORAGEFIELD fields[] = { { 9, 0x20, 1, nullptr, "Größe", OUTPUT },
        { 14, 0x1, 4, nullptr, nullptr, BOOK } };
    const TQSTORAGEFIELD twice[] = { fields[0], fields[0] };
    QVERIFY(!makeItem(TYPE) && !TQGetSystemStorageClassConv(TYPE));
    QVERIFY(!TQRegisterStorageClass(TYPE, twice, 2));
    QVERIFY(TQRegisterStorageClass(TYPE, fields, 2) && !TQRegisterStorageClass(TYPE, fields, 2));
    const CONVERTSTRUCTELEMENTINFO *table = TQGetSystemStorageClassConv(TYPE);
    QVERIFY(table[0].tag == 0x20 && table[1].width == 4 && table[2].type == 0);
    QVERIFY(TQFieldHeading(TYPE, 0x20) == QByteArray("Größe") && !TQFieldHeading(TYPE, 0x2));
    const Item item = makeItem(TYPE);
    QVERIFY(
        fill(*item, "SI 4711\n1 0 56\n20 by name\n1 a 56\n1 a 56\nSI 15\n3 1 56\nTI 0\nTI 0\n"));
    const TQDB_REFERENCE *chain = references(*item);
    QCOMPARE(chain->name, "by name");
    QVERIFY(!TQKEY_CC::isValid(chain->key) && chain->next->datatype == BOOK);
    QCOMPARE(chain->next->key.key, 10U);
    QVERIFY(
        !chain->next->next);  // neither the null key, nor one twice, nor what lies in a nested item
    QVERIFY(TQUnregisterStorageClass(TYPE) && !TQUnregisterStorageClass(JOB) && !makeItem(TYPE));
    QVERIFY(makeItem(PACKETDATATYPE_UNCONVERTED));
    QVERIFY(!TQGetSystemStorageClassConv(PACKETDATATYPE_UNCONVERTED));
}

// Records leave and enter lists, and belong to the items that load them.
void tst_Server::records()
{
    Client client("sqlite::memory:");
    const auto take = [&client](PACKETDATATYPES type) {
        TQLISTRECORD *list = client.list(type);
        TQLISTRECORD *const taken = list->next;
        RemoveItemFromList(&list, taken);
        RemoveItemFromList(&list, taken);  // not in the list any more
        TQPacketFreeList(&list, type);
        return reinterpret_cast<unsigned char *>(taken);
    };
    const Item output = makeItem(OUTPUT);
    output->setName("stale");
    output->loadRecord(take(PACKETDATATYPE_OUTPUTLIST));
    QVERIFY(!output->name && output->subrecord->name && output->dbkey.hkey == OUTPUT);
    const Item owner = makeItem(OWNER);
    unsigned char *const record = take(OWNER);
    owner->loadRecord(record);
    const TQPacketable copy(*owner);
    owner->setName("mine");
    owner->setData(record);  // the same again
    QCOMPARE(packetOf(*owner), packetOf(copy));
    owner->setData(take(PACKETDATATYPE_OUTPUTLIST));  // an output is no owner of books
    QCOMPARE(QByteArray(owner->name) + packetOf(*owner), QByteArray("mineSI 55\nTI 0\n"));
    owner->loadRecord(nullptr);
    QVERIFY(!owner->name && !TQKEY_CC::isValid(owner->dbkey));
    QVERIFY(packetOf(copy).startsWith("SI 55\n1 " + QByteArray(copy.name)));  // outlives the record

    TQLISTRECORD *list = client.list(OWNER);
    TQLISTRECORD *const first = list;
    TQLISTRECORD *const second = list->next;
    RemoveItemFromList(&list, first);
    QVERIFY(list == second && !first->next);
    AddListList(&list, nullptr);
    TQLISTRECORD *joined = first;
    AddListList(&joined, list);
    QVERIFY(joined == first && first->next == second);
    TQPacketFreeList(&joined, OWNER);
    RemoveItemFromList(nullptr, nullptr);
    AddListList(nullptr, nullptr);
    TQPacketFreeList(nullptr, JOB);
    TQPacketFreeItem(nullptr, JOB);
    TQJOB foreign = {};
    QVERIFY(!joined && TQJOB_CC::pageNumber(&foreign) == 0 && TQJOB_CC::pageNumber(nullptr) == 0);
    TQJOB_CC::trimLists(&foreign);
    TQPacketFreeItem(&foreign.list, JOB);
}

void tst_Server::archiveNodes()
{
    ArchiveNode root;
    for (const PACKETDATATYPES type : { PROFILE, JOB, BOOK }) {
        const auto node = new ArchiveNode(new TQPacketable(type));
        node->packetable->setName("same");
        node->packetable->dbkey = type == BOOK ? TQKEY_ELEMENT { 7, BOOK } : TQKEY_CC::getNullKey();
        root.add(node);
    }
    root.add(nullptr);
    TQDB_REFERENCE reference = { nullptr, JOB, TQKEY_CC::getNullKey(), "same" };
    QCOMPARE(root.findNode(&reference)->packetable->datatype, JOB);
    reference = { nullptr, PACKETDATATYPE_NONE, { 7, BOOK }, "other" };
    QCOMPARE(root.findNode(&reference)->packetable->datatype, BOOK);
    reference.datatype = JOB;
    QVERIFY(!root.findNode(&reference) && !root.findNode(nullptr));
    ArchiveNode *deepest = &root;
    for (int i = 0; i < 200000; ++i) {
        const auto child = new ArchiveNode;
        deepest->add(child);
        deepest = child;
    }
}

// Every item there is, the same in every kind of store.
void tst_Server::content()
{
    Client client(sample("sample"));
    Client memory("sqlite::memory:");
    QByteArrayList all = sql(sample("sample"), "SELECT id FROM tq_publication");
    const std::tuple<PACKETDATATYPES, const char *, int> tables[] = { { OUTPUT, "tq_output", 4 },
        { OWNER, "tq_book_owner", 4 }, { BOOK, "tq_book", 60 }, { JOB, "tq_job", 500 },
        { PROFILE, "tq_icc_profile WHERE size > 0", 6 } };
    for (const auto &[type, rows, minimum] : tables) {
        const QByteArrayList ids = sql(sample("sample"), QByteArray("SELECT id FROM ") + rows);
        QVERIFY(ids.size() >= minimum);
        for (const QByteArray &id : ids) {
            const auto node = client.archive(type, id.toUInt());
            const auto same = memory.archive(type, id.toUInt());
            QVERIFY(node && same && node->packetable->name);
            QCOMPARE(packetOf(*node->packetable), packetOf(*same->packetable));
            QVERIFY(packetOf(*node->packetable).count('\n') > 5);
        }
        all += ids;
    }
    QCOMPARE(QSet<QByteArray>(all.begin(), all.end()).size(), all.size());
    QVERIFY(!client.archive(JOB, 999999) && !client.failed() && !client.archive(SPECIMEN, 1));
    QVERIFY(!client.archive(BOOK, all.last().toUInt()));

    // The bytes of a profile come when they are loaded, from the store that it belongs to.
    std::string host = client.server.getConnectedHostname();
    const auto port = static_cast<unsigned short>(client.server.getConnectedPortnum());
    QVERIFY(port > 0 && memory.server.getConnectedPortnum() != port);
    const QByteArray id =
        sql(sample("sample"), "SELECT id FROM tq_icc_profile WHERE name = 'sRGB'").value(0);
    QVERIFY(!packetOf(*client.archive(PROFILE, id.toUInt())->packetable).contains("\n7 "));
    ICCPROFILEDATA_CC profile;
    profile.dbkey = { id.toUInt(), PROFILE };
    profile.load(host, 65535);
    QCOMPARE(packetOf(profile), QByteArray("SI 30\nTI 0\n"));
    const QByteArray rest = "6 9\nSL 1\nSI 30\n7 1 AQ==\nTI 0\nTL 0\nTI 0\n";
    QVERIFY(fill(profile, "SI 30\n1 sRGB\n7 1 AA==\n" + rest));
    profile.dbkey = TQKEY_CC::getNullKey();  // one that is known by its name
    profile.setName("sRGB");
    profile.load(host, port);
    QFile file(str("/usr/share/color/icc/sRGB.icc"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = QByteArray::number(file.size(), 16) + ' ' + file.readAll().toBase64();
    QCOMPARE(packetOf(profile), "SI 30\n1 sRGB\n7 " + bytes + '\n' + rest);
}

// The whole road: from a request packet to items that are the store's.
void tst_Server::requests()
{
    Client client(sample("sample"));
    for (const Request &row : REQUESTS) {
        XMLAction request(str("list"), row.type, 1);
        TQKEY_ELEMENT key { row.owner, row.items == BOOK ? OWNER : OUTPUT };
        if (row.owner > 0) {
            request.setTQKEYList({ &key });
            request.setExcludePublications(false);
        }
        QStringList log;
        RecordingAgent agent(1, &log);
        XMLRouter router(&client.server, nullptr, "road");
        router.add(&agent);
        XMLPacket *packet = agent.getXMLPacket(router.getXMLCommServerID());
        packet->append(request);
        router.send(packet);
        runEvents();
        std::list<QDomNode> nodes;
        agent.packets.at(0)->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
        QByteArrayList listed;
        for (const QDomNode &node : nodes) {
            XMLPacketable item;
            item.setNode(node.toElement());
            const unsigned id = item.getDBkey().key;
            const QByteArray stored = packetOf(*client.archive(row.items, id)->packetable);
            QCOMPARE(item.toPacket(item.getNodeConst()).toUtf8(), stored);
            QCOMPARE(packetOf(*Item(item.getData())), stored);
            listed += QByteArray::number(id) + item.getName().toUtf8();
        }
        QVERIFY(listed.size() > 2);
        QCOMPARE(listed, sql(sample("sample"), QByteArray("SELECT ") + row.sql));
    }
    const auto asked = [this](const char *rest) {
        return sql(sample("sample"),
            QByteArray("SELECT name FROM tq_job WHERE output_id = 1073741824 ") + rest);
    };
    QVERIFY(client.jobs(OUTPUT_ID).size() > 50);
    QCOMPARE(client.jobs(OUTPUT_ID), asked("ORDER BY name, id"));
    QCOMPARE(client.jobs(OUTPUT_ID, 2), asked("AND state = 2 ORDER BY name, id"));
    QCOMPARE(client.jobs(OUTPUT_ID, TQQUEUE_ALL, SORTTYPE_NAME, SORTORDER_DESCENDING),
        asked("ORDER BY name DESC, id DESC"));
    QCOMPARE(client.jobs(OUTPUT_ID, TQQUEUE_ALL, 0), asked("ORDER BY id"));
    const unsigned last = client.message.id;
    QVERIFY(!client.list(JOB) && !client.failed() && client.message.id > last);
    QVERIFY(client.jobs(0).isEmpty() && !client.failed());
    QCOMPARE(client.server.getidfromtqkey({ 7, 4711 }), 0);
    QCOMPARE(client.server.getidfromtqkey({ 0x80000000, JOB }), 0);
}

// A failed query says so, and the connection recovers; one to what is no store answers every call.
void tst_Server::failures()
{
    Client client(sample("failing"));
    sql(sample("failing"), "ALTER TABLE tq_job RENAME TO gone");
    for (int i = 0; i < 2; ++i) {
        QVERIFY(client.jobs(OUTPUT_ID).isEmpty() && client.failed());
        QVERIFY(QByteArray(client.server.errorText()).contains("tq_job"));
    }
    sql(sample("failing"), "ALTER TABLE gone RENAME TO tq_job");
    QVERIFY(!client.jobs(OUTPUT_ID).isEmpty());
    QVERIFY(!client.server.iserror(client.command));
    const auto stop = [](size_t, size_t) { return false; };
    std::string error;
    QVERIFY(!TQImportProfiles(
        sample("failing").constData(), { "/usr/share/color/icc/CineLogCurve.icc" }, stop, error));
    QCOMPARE(error, std::string("interrupted"));
    const QByteArray imported = "SELECT 1 FROM tq_icc_profile WHERE name = 'CineLogCurve'";
    QVERIFY(sql(sample("failing"), imported).isEmpty());
    for (const char *url : { "", "mysql:x", "sqlite:/no/a.db", "postgresql://me@127.0.0.1:1/x" }) {
        Client none(url);
        QVERIFY(*none.server.errorText() && none.server.getConnectedPortnum() == 0);
        QVERIFY(!none.server.getConnectedHostname());
        QVERIFY(none.jobs(OUTPUT_ID).isEmpty() && none.failed());
        QVERIFY(!none.archive(JOB, 300) && none.failed());
    }
}

// The server dies among the rows of a listing.
void tst_Server::lostConnection()
{
    QFETCH_GLOBAL(bool, isPostgres);
    if (!isPostgres) {
        return;  // no server to lose
    }
    const QByteArray url = sample("lost");
    Client client(url);
    sql(url,
        "INSERT INTO tq_job (id, output_id, name, page, state, remark) "
        "SELECT 9999 + n, 1073741824, n, 1, 0, repeat('x', 20000) FROM generate_series(1, 5000) n");
    std::thread killer([this, &url] {
        const QByteArray sending =
            "SELECT 1 FROM pg_stat_activity WHERE wait_event = 'ClientWrite'";
        for (int i = 0; i < 1000 && sql(url, sending).isEmpty(); ++i) {}
        m_postgres.stop();
    });
    const QByteArrayList cut = client.jobs(OUTPUT_ID);
    killer.join();
    QVERIFY(cut.isEmpty() && client.failed());
    QVERIFY(!client.list(PACKETDATATYPE_OUTPUTLIST) && client.failed());
    QVERIFY(!QByteArray(client.server.errorText()).contains('\n'));
    QVERIFY(m_postgres.start());
    QVERIFY(client.jobs(OUTPUT_ID).size() > 5000 && !client.failed());
}

QTEST_GUILESS_MAIN(tst_Server)
#include "tst_server.moc"

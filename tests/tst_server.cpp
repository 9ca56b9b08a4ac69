// The embedded server library: packet text, items and records, and what a store delivers, which is
// compared with what SQL reads from it.

#include "stores.h"
#include "tqregistry.h"
#include "tqstorageclass.h"

namespace {

constexpr PACKETDATATYPES JOB = PACKETDATATYPE_JOB;
constexpr PACKETDATATYPES BOOK = PACKETDATATYPE_BOOK;
constexpr PACKETDATATYPES OUTPUT = PACKETDATATYPE_OUTPUT;
constexpr PACKETDATATYPES OWNER = PACKETDATATYPE_BOOKOWNER;
constexpr PACKETDATATYPES PROFILE = PACKETDATATYPE_ICCPROFILE;
constexpr PACKETDATATYPES SPECIMEN = PACKETDATATYPE_SPECIMEN;
constexpr PACKETDATATYPES TYPE = static_cast<PACKETDATATYPES>(0x4711);  // of a test's own

// The first ids of the sample.
constexpr int FIRST_OUTPUT = 1073741824;
constexpr unsigned FIRST_OWNER = 1207959552;
constexpr unsigned SRGB = 1476395008;

QByteArray hex(unsigned number) { return QByteArray::number(number, 16); }

using Item = std::unique_ptr<TQPacketable>;

Item makeItem(PACKETDATATYPES type) { return Item(PacketableUtil::getPacketable(type)); }

// Fills from a buffer of just that size, so that the sanitizer sees every read beyond it.
bool fill(TQPacketable &item, const QByteArray &text)
{
    std::vector<char> exact(text.begin(), text.end());
    return item.fromPacket(exact.data(), unsigned(exact.size()), false, true);
}

// What a specimen with these lines says.
QByteArray specimen(const QByteArray &lines) { return "SI 63\n" + lines + "\nTI 0\n"; }

// Everything that an item says: name, key and packet text.
QByteArray described(const TQPacketable &item)
{
    const QByteArray name = item.name ? item.name : "no name";
    return name + ' ' + hex(item.dbkey.key) + ':' + hex(item.dbkey.hkey) + '\n' + packetOf(item);
}

// The types that the references of an item ask for, in order.
QList<unsigned> referredTypes(PACKETDATATYPES type, const QByteArray &text)
{
    const Item item = makeItem(type);
    QList<unsigned> types;
    TQDB_REFERENCE *chain = nullptr;
    fill(*item, text);
    item->getReferences(0, &chain, 0);
    for (; chain; chain = chain->next) {
        types += chain->datatype;
    }
    return types;
}

// What becomes of a line of packet text when an item is filled with it.
constexpr Case LINES[] = {
    { "a tag in capitals", "0E04 1F 0", "kept" },
    { "the largest unsigned byte", "701 255", "kept" },
    { "the smallest signed byte", "701 -128", "kept" },
    { "the largest of 8 bytes", "508 18446744073709551615", "kept" },
    { "no integers", "1004 0 ", "kept" },
    { "a no-break space", "104 \t\xc2\xa0", "dropped" },
    { "an empty text between others", "1601 3 a\r\rb", "dropped" },
    { "a blank last text", "1601 2 a\r ", "dropped" },
    { "no bytes", "1701 0 ", "dropped" },
    { "no value", "101", "refused" },
    { "an empty value", "101 ", "refused" },
    { "a code without text form", "a01 x", "refused" },
    { "a field in a list", "SL 0\n101 x\nTL 0", "refused" },
    { "fewer items than the list says", "SL 2\nSI 6\nTI 0\nTL 0", "refused" },
    { "an item of an unknown type", "SI ff63\nTI 0", "refused" },
    { "more than a byte", "701 256", "refused" },
    { "a hexadecimal integer", "1d04 12a", "refused" },
    { "infinity", "808 inf", "refused" },
    { "three words of a key", "e04 1 2 3", "refused" },
    { "more integers than counted", "1004 1 1 2", "refused" },
    { "a blank after the last integer", "1004 2 1 2 ", "refused" },
    { "fewer bytes than counted", "1701 5 AAECAw==", "refused" },
    { "bits behind the last byte", "1701 4 AAECAx==", "refused" },
};

// Takes the first record off a listing, and frees the others.
unsigned char *firstRecord(Client &client, PACKETDATATYPES type)
{
    TQLISTRECORD *list = client.list(type);
    TQLISTRECORD *const first = list;
    RemoveItemFromList(&list, first);
    TQPacketFreeList(&list, type);
    return reinterpret_cast<unsigned char *>(first);
}

}  // namespace

class tst_Server : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { QVERIFY(m_stores.start()); }
    void init();
    void aLineIsKeptDroppedOrRefused_data() { addRows(LINES); }
    void aLineIsKeptDroppedOrRefused();
    void whatIsNoWholeItemIsRefused();
    void itemsNestUpTo256Levels();
    void typesAreRegisteredOnceAndWithGoodTags();
    void referencesAreOfTheirFieldsTypes();
    void anItemOwnsTheRecordThatItLoads();
    void listsAreTakenApartAndJoined();
    void nodesAreFoundByKeyOrByName();
    void profilesAreLoadedByKeyOrByName();
    void queuesAndOrdersAreThoseAskedFor_data() { Stores::addDatabases(); }
    void queuesAndOrdersAreThoseAskedFor();
    void keysAreListedWithTheirNamesInTheOrderOfListings_data() { Stores::addDatabases(); }
    void keysAreListedWithTheirNamesInTheOrderOfListings();
    void profilesAreListedWithoutTheirBytes_data() { Stores::addDatabases(); }
    void profilesAreListedWithoutTheirBytes();
    void keysOfNothingFindNothing_data() { Stores::addDatabases(); }
    void keysOfNothingFindNothing();

private:
    // The URL of a new store of the current row's kind.
    QByteArray sample(const char *name) const;

    Stores m_stores;
};

void tst_Server::init() { Stores::isSkipped(QByteArray(QTest::currentDataTag()) == "PostgreSQL"); }

QByteArray tst_Server::sample(const char *name) const
{
    QFETCH(bool, isPostgres);
    return m_stores.sample(name, isPostgres);
}

void tst_Server::aLineIsKeptDroppedOrRefused()
{
    const auto &row = currentRow<Case>();
    const QByteArray fate = row.expected;
    const Item item = makeItem(SPECIMEN);
    QVERIFY(fill(*item, specimen("101 before")));
    const QByteArray text = specimen(QByteArray(row.given) + "\n102 after");
    QCOMPARE(fill(*item, text), fate != "refused");
    const QByteArray without = specimen(fate == "dropped" ? "102 after" : "101 before");
    QCOMPARE(packetOf(*item), fate == "kept" ? text : without);
}

void tst_Server::whatIsNoWholeItemIsRefused()
{
    const Item item = makeItem(SPECIMEN);
    for (const char *text : { "SL 0\nTL 0\n", "SI 15\nTI 0\n", "101 x\nSI 63\nTI 0\n" }) {
        QVERIFY2(!fill(*item, text), text);
    }
    const QByteArray whole = specimen("SL 1\nSI 6\nTI 0\nTL 0\n101 x\n1601 2 a\rb");
    for (int cut = 0; cut < int(whole.size()); ++cut) {
        QVERIFY2(!fill(*item, whole.left(cut)), whole.left(cut).constData());
    }
    QCOMPARE(packetOf(*item), QByteArray("SI 63\nTI 0\n"));
}

void tst_Server::itemsNestUpTo256Levels()
{
    const Item item = makeItem(SPECIMEN);
    const auto fillNested = [&item](int levels) {
        const QByteArray starts = QByteArray("SI 63\n").repeated(levels);
        return fill(*item, starts + QByteArray("TI 0\n").repeated(levels));
    };
    QVERIFY(fillNested(256));
    QVERIFY(!fillNested(257));
    QVERIFY(!fillNested(500000));
}

void tst_Server::typesAreRegisteredOnceAndWithGoodTags()
{
    const TQSTORAGEFIELD text { TQELEMENT_TEXT, 0x20, 1, nullptr, "Größe", BOOK };
    const TQSTORAGEFIELD twice[] { text, text };
    const TQSTORAGEFIELD large { TQELEMENT_TEXT, 0x80000000, 1, nullptr, nullptr, BOOK };
    QVERIFY(!TQRegisterStorageClass(TYPE, twice, 2));
    QVERIFY(!TQRegisterStorageClass(TYPE, &large, 1));
    QVERIFY(!TQRegisterStorageClass(JOB, &text, 1));  // the library's own
    QVERIFY(!makeItem(TYPE));
    QVERIFY(TQRegisterStorageClass(TYPE, &text, 1));
    QVERIFY(!TQRegisterStorageClass(TYPE, &text, 1));
    QCOMPARE(TQGetSystemStorageClassConv(TYPE)[0].tag, 0x20U);
    QCOMPARE(TQGetSystemStorageClassConv(TYPE)[1].type, 0U);
    QCOMPARE(TQFieldHeading(TYPE, 0x20), "Größe");
    QCOMPARE(TQFieldHeading(TYPE, 0x2), nullptr);
    QVERIFY(fill(*makeItem(TYPE), "SI 4711\n20 x\nTI 0\n"));
    QVERIFY(TQUnregisterStorageClass(TYPE));
    QVERIFY(!makeItem(TYPE));
    QVERIFY(!TQUnregisterStorageClass(JOB));
}

void tst_Server::referencesAreOfTheirFieldsTypes()
{
    QCOMPARE(referredTypes(BOOK, "SI 56\n3 1 55\nTI 0\n"), QList<unsigned>({ OWNER }));
    QCOMPARE(referredTypes(JOB, "SI 15\n2 output\n3 1 56\n4 1 30\n11 profile\nTI 0\n"),
        QList<unsigned>({ OUTPUT, BOOK, PROFILE, PROFILE }));
    // Each once; no null keys, and nothing of items within.
    const QByteArray within = "SI 56\n3 2 55\nTI 0\n";
    QCOMPARE(
        referredTypes(JOB, "SI 15\n3 1 56\n2 a\n3 0 56\n3 1 56\n2 a\n2 b\n" + within + "TI 0\n"),
        QList<unsigned>({ BOOK, OUTPUT, OUTPUT }));
}

void tst_Server::anItemOwnsTheRecordThatItLoads()
{
    Client client("sqlite::memory:");
    const Item output = makeItem(OUTPUT);
    output->setName("stale");
    output->loadRecord(firstRecord(client, PACKETDATATYPE_OUTPUTLIST));
    QCOMPARE(output->name, nullptr);
    QCOMPARE(output->subrecord->name, "Digital Press Colour");

    const Item owner = makeItem(OWNER);
    unsigned char *const record = firstRecord(client, OWNER);
    const QByteArray olivar =
        "Casa Editora El Olivar 48000006:55\n"
        "SI 55\n1 Casa Editora El Olivar\n2 Sevilla\n3 España\n4 1953\nTI 0\n";
    owner->loadRecord(record);
    owner->setData(record);  // the same again
    QCOMPARE(described(*owner), olivar);
    const TQPacketable copy(*owner);
    owner->setData(firstRecord(client, PACKETDATATYPE_OUTPUTLIST));  // no owner of books
    QCOMPARE(described(*owner), QByteArray("Casa Editora El Olivar 0:0\nSI 55\nTI 0\n"));
    owner->loadRecord(nullptr);
    QCOMPARE(described(*owner), QByteArray("no name 0:0\nSI 55\nTI 0\n"));
    QCOMPARE(described(copy), olivar);
}

void tst_Server::listsAreTakenApartAndJoined()
{
    TQLISTRECORD *list = Client("sqlite::memory:").list(OWNER);
    TQLISTRECORD *const first = list;
    TQLISTRECORD *const second = list->next;
    TQLISTRECORD *const third = second->next;
    RemoveItemFromList(&list, second);
    RemoveItemFromList(&list, second);  // not in the list any more
    QCOMPARE(first->next, third);
    QCOMPARE(second->next, nullptr);
    TQLISTRECORD *joined = second;
    AddListList(&joined, list);
    QCOMPARE(joined->next, first);
    TQPacketFreeList(&joined, OWNER);
    QCOMPARE(joined, nullptr);
}

void tst_Server::nodesAreFoundByKeyOrByName()
{
    ArchiveNode root;
    const auto add = [&root](PACKETDATATYPES type, const TQKEY_ELEMENT &dbkey) {
        const auto node = new ArchiveNode(new TQPacketable(type));
        node->packetable->setName("same");
        node->packetable->dbkey = dbkey;
        root.add(node);
        return node;
    };
    const auto find = [&root](const TQDB_REFERENCE &reference) -> const ArchiveNode * {
        return root.findNode(&reference);
    };
    root.add(nullptr);
    QCOMPARE(root.findNode(nullptr), nullptr);
    add(PROFILE, {});
    const ArchiveNode *job = add(JOB, {});
    const ArchiveNode *book = add(BOOK, { 7, BOOK });
    const ArchiveNode *swapped = add(BOOK, { BOOK, 7 });
    QCOMPARE(find({ nullptr, JOB, {}, "same" }), job);
    QCOMPARE(find({ nullptr, PACKETDATATYPE_NONE, { 7, BOOK }, "other" }), book);
    QCOMPARE(find({ nullptr, BOOK, { BOOK, 7 }, nullptr }), swapped);
    QCOMPARE(find({ nullptr, BOOK, { 7, 0x10000 + BOOK }, nullptr }), nullptr);
    const ArchiveNode *late = add(OWNER, {});
    QCOMPARE(find({ nullptr, OWNER, {}, "same" }), late);
}

void tst_Server::profilesAreLoadedByKeyOrByName()
{
    Client client("sqlite::memory:");
    const QByteArray loaded = client.profile(SRGB);
    const QByteArray bytes = loaded.mid(loaded.indexOf("\n7 ") + 1).chopped(5);  // without the end
    QVERIFY(bytes.size() > 9000);
    const QByteArray rest = "6 9\nSL 1\nSI 30\n7 1 AQ==\nTI 0\nTL 0\nTI 0\n";
    const QByteArray text = "SI 30\n1 mine\n7 1 AA==\n" + rest;
    ICCPROFILEDATA_CC profile;
    QVERIFY(fill(profile, text));
    QCOMPARE(client.loaded(profile), text);  // it has neither
    profile.setName("sRGB");
    profile.dbkey = { SRGB, BOOK };
    QCOMPARE(client.loaded(profile), text);  // the key of a book
    profile.dbkey = {};
    QCOMPARE(client.loaded(profile), "SI 30\n1 mine\n" + bytes + rest);
    QCOMPARE(client.server.failures(), 0U);
}

void tst_Server::queuesAndOrdersAreThoseAskedFor()
{
    constexpr auto AGE = static_cast<SORTTYPE>(0);
    constexpr auto IN_PROGRESS = static_cast<TQQUEUE>(1);
    const QByteArray store = sample("queues");
    sql(store, "UPDATE tq_job SET page = id, name = id % 3");  // the page tells them apart
    const auto stored = [&store](const QByteArray &rest) {
        return sql(store,
            "SELECT j.name || ' ' || page || ' ' || coalesce(p.id, 0) || ' ' || "
            "coalesce(p.name, '') FROM tq_job j LEFT JOIN tq_publication p ON p.id = "
            "publication_id WHERE output_id = 1073741824" +
                rest);
    };
    Client client(store);
    const auto listed = [&client](TQQUEUE queue, SORTTYPE type, SORTORDER order) {
        return client.jobsOf(FIRST_OUTPUT, queue, type, order);
    };
    QVERIFY(stored("").size() > 50);
    QCOMPARE(
        listed(TQQUEUE_ALL, SORTTYPE_NAME, SORTORDER_ASCENDING), stored(" ORDER BY j.name, j.id"));
    QCOMPARE(listed(TQQUEUE_ALL, SORTTYPE_NAME, SORTORDER_DESCENDING),
        stored(" ORDER BY j.name DESC, j.id DESC"));
    QCOMPARE(listed(TQQUEUE_ALL, AGE, SORTORDER_ASCENDING), stored(" ORDER BY j.id"));
    QCOMPARE(listed(TQQUEUE_ALL, AGE, SORTORDER_DESCENDING), stored(" ORDER BY j.id DESC"));
    QCOMPARE(listed(IN_PROGRESS, AGE, SORTORDER_ASCENDING), stored(" AND state = 1 ORDER BY j.id"));
}

void tst_Server::keysAreListedWithTheirNamesInTheOrderOfListings()
{
    const QByteArray store = sample("keys");
    Client client(store);
    const QList<std::pair<PACKETDATATYPES, QByteArray>> tables { { OUTPUT, "tq_output" },
        { OWNER, "tq_book_owner" }, { PROFILE, "tq_icc_profile" }, { SPECIMEN, "" } };
    for (const auto &[type, table] : tables) {
        QByteArrayList expected;
        if (!table.isEmpty()) {
            const QByteArray number = QByteArray::number(type);
            expected = sql(store,
                "SELECT id || ':" + number + " ' || name FROM " + table + " ORDER BY name, id");
            QVERIFY(expected.size() > 1);
        }
        std::vector<TQNAMEDKEY> keys { { { 7, 7 }, "stale" } };
        QVERIFY(TQListKeys(client.server, type, keys));
        QByteArrayList listed;
        for (const TQNAMEDKEY &item : keys) {
            const QByteArray key =
                QByteArray::number(item.key.key) + ':' + QByteArray::number(item.key.hkey);
            listed += key + ' ' + item.name.c_str();
        }
        QCOMPARE(listed, expected);
    }
    sql(store, "ALTER TABLE tq_output RENAME TO gone");
    std::vector<TQNAMEDKEY> keys;
    QVERIFY(!TQListKeys(client.server, OUTPUT, keys));
    QCOMPARE(client.server.failures(), 1U);
}

void tst_Server::profilesAreListedWithoutTheirBytes()
{
    const QByteArray store = sample("profiles");
    Client client(store);
    const Item profile = makeItem(PROFILE);
    profile->loadRecord(firstRecord(client, PROFILE));
    const QByteArray name =
        sql(store, "SELECT name FROM tq_icc_profile ORDER BY name LIMIT 1").value(0);
    QCOMPARE(QByteArray(profile->name), name);
    const QByteArray text = packetOf(*profile);
    QVERIFY2(text.startsWith("SI 30\n1 " + name + '\n'), text.constData());
    QVERIFY2(!text.contains("\n7 "), text.constData());
}

void tst_Server::keysOfNothingFindNothing()
{
    Client client(sample("nothing"));
    QVERIFY(!client.archive(JOB, 999999));
    QVERIFY(!client.archive(BOOK, 1));
    QVERIFY(!client.archive(SPECIMEN, 1));
    QVERIFY(!client.list(JOB));
    QCOMPARE(client.jobsOf(0), QByteArrayList());
    QCOMPARE(client.booksOf({ FIRST_OWNER, JOB }), QByteArrayList());
    QCOMPARE(client.server.getidfromtqkey({ 7, 4711 }), 0);
    QCOMPARE(client.server.getidfromtqkey({ 0x80000000, JOB }), 0);
    QCOMPARE(client.server.failures(), 0U);
}

QTEST_GUILESS_MAIN(tst_Server)
#include "tst_server.moc"

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
constexpr unsigned FIRST_OUTPUT = 1073741824;
constexpr unsigned FIRST_OWNER = 1207959552;
constexpr unsigned MIDDLEMARCH = 1342177280;
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

// A stored value in the form of packet text.
using Form = QByteArray (*)(const QByteArray &stored);
QByteArray plain(const QByteArray &stored) { return stored; }
QByteArray texts(const QByteArray &stored)
{
    return hex(unsigned(stored.count('\n')) + 1) + ' ' + QByteArray(stored).replace('\n', '\r');
}
QByteArray numbers(const QByteArray &stored)
{
    return hex(unsigned(stored.count(' ')) + 1) + ' ' + stored;
}
template<PACKETDATATYPES type>
QByteArray key(const QByteArray &stored)
{
    return hex(stored.toUInt()) + ' ' + hex(type);
}

// The fields of a type: heading, and the stored value by SQL. The tags count from 1.
struct Field
{
    const char *heading;
    const char *sql;
    Form form = plain;
};
struct Type
{
    const char *name;
    PACKETDATATYPES type;
    const char *table;
    std::vector<Field> fields;
};
const Type TYPES[] = {
    { "outputs", OUTPUT, "tq_output",
        { { "Name", "name" }, { "Technology", "technology" }, { "Resolution (dpi)", "resolution" },
            { "Width (pt)", "width" }, { "Height (pt)", "height" }, { "Colours", "colours", texts },
            { "Rulings (lpi)", "rulings", numbers }, { "Location", "location" },
            { "Installed", "installed" } } },
    { "owners of books", OWNER, "tq_book_owner",
        { { "Name", "name" }, { "City", "city" }, { "Country", "country" },
            { "Founded", "founded" } } },
    { "books", BOOK, "tq_book",
        { { "Title", "name" }, { "Author", "author" }, { "Owner", "owner_id", key<OWNER> },
            { "Pages", "pages" }, { "First published", "year" }, { "Language", "language" },
            { "Page size (mm)", "page_size", numbers }, { "Subjects", "subjects", texts } } },
    { "ICC profiles", PROFILE, "tq_icc_profile",
        { { "Name", "name" }, { "File", "file" }, { "Device class", "device_class" },
            { "Colour space", "colour_space" }, { "Version", "version" },
            { "Size (bytes)", "size" } } },
    { "jobs", JOB, "tq_job",
        { { "Name", "name" }, { "Output", "(SELECT name FROM tq_output WHERE id = output_id)" },
            { "Book", "book_id", key<BOOK> }, { "ICC profile", "profile_id", key<PROFILE> },
            { "Publication", "(SELECT name FROM tq_publication WHERE id = publication_id)" },
            { "Page", "page" }, { "State", "state" }, { "Priority", "priority" },
            { "Copies", "copies" }, { "Trim box (pt)", "trim_box", numbers },
            { "Bleed (mm)", "bleed" }, { "Colours", "colours", texts },
            { "Coverage (%)", "coverage", numbers }, { "Options", "options" },
            { "Created", "created" }, { "Remark", "remark" },
            { "Proofing profile", "proof_profile" } } },
};

// Which line the first book or output has when its stored value is not as it should be; without a
// value when there is no line.
constexpr Case STORED_VALUES[] = {
    { "a line feed", "tq_book SET author = ' Jane\nAusten\t'", "2 Jane Austen" },
    { "a blank text", "tq_book SET author = ' \t'", "2" },
    { "the largest number", "tq_book SET pages = 65535", "4 65535" },
    { "a number that is too large", "tq_book SET pages = 65536", "4" },
    { "empty entries of a list", "tq_book SET subjects = '\nNovel\n\n Sea \n'", "8 2 Novel\rSea" },
    { "blanks in a list of numbers", "tq_book SET page_size = ' 129.5  198 '", "7 2 129.5 198" },
    { "nine digits", "tq_output SET width = 1234.56789", "4 1234.56789" },
};

const ArchiveNode *find(const ArchiveNode &node, const TQDB_REFERENCE &reference)
{
    return node.findNode(&reference);
}

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
    void initTestCase_data() { Stores::addDatabases(); }
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
    void deepArchivesAreDestroyed();
    void itemsHoldWhatSqlReads_data() { addRows(TYPES); }
    void itemsHoldWhatSqlReads();
    void storedValuesAreMadeToFit_data() { addRows(STORED_VALUES); }
    void storedValuesAreMadeToFit();
    void archivesHoldWhatIsReferredTo();
    void profilesAreLoadedByKeyOrByName();
    void queuesAndOrdersAreThoseAskedFor();
    void namesAreOrderedByCodePoint();
    void keysOfNothingFindNothing();

private:
    Stores m_stores;
    QMap<bool, QByteArray> m_samples;
    QByteArray m_sample;  // the current kind's; no test changes it
};

void tst_Server::init()
{
    QFETCH_GLOBAL(bool, isPostgres);
    QByteArray &made = m_samples[isPostgres];
    if (!Stores::isSkipped(isPostgres) && made.isEmpty()) {
        made = m_stores.sample("sample", isPostgres);
    }
    m_sample = made;
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
    const TQSTORAGEFIELD fields[] { { TQELEMENT_TEXT, 0x20, 1, nullptr, "Größe", BOOK },
        { TQELEMENT_TEXT, 0x20, 1, nullptr, nullptr, BOOK },
        { TQELEMENT_TEXT, 0x80000000, 1, nullptr, nullptr, BOOK } };
    QVERIFY(!TQRegisterStorageClass(TYPE, fields, 2));  // twice the same tag
    QVERIFY(!TQRegisterStorageClass(TYPE, fields + 1, 2));  // a tag of 32 bits
    QVERIFY(!TQRegisterStorageClass(JOB, fields, 1));
    QVERIFY(!makeItem(TYPE));
    QVERIFY(TQRegisterStorageClass(TYPE, fields, 1));
    QVERIFY(!TQRegisterStorageClass(TYPE, fields, 1));
    QCOMPARE(TQGetSystemStorageClassConv(TYPE)[0].tag, 0x20U);
    QCOMPARE(TQGetSystemStorageClassConv(TYPE)[1].type, 0U);
    QCOMPARE(TQFieldHeading(TYPE, 0x20), "Größe");
    QCOMPARE(TQFieldHeading(TYPE, 0x2), nullptr);
    QVERIFY(fill(*makeItem(TYPE), "SI 4711\n20 x\nTI 0\n"));
    QVERIFY(TQUnregisterStorageClass(TYPE));
    QVERIFY(!makeItem(TYPE));
    QVERIFY(!TQUnregisterStorageClass(JOB));
    QVERIFY(makeItem(PACKETDATATYPE_UNCONVERTED));
    QCOMPARE(TQGetSystemStorageClassConv(PACKETDATATYPE_UNCONVERTED), nullptr);
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
    QCOMPARE(first->next, third);
    QCOMPARE(second->next, nullptr);
    RemoveItemFromList(&list, second);  // not in the list any more
    RemoveItemFromList(&list, first);
    QCOMPARE(list, third);
    TQLISTRECORD *joined = nullptr;
    for (TQLISTRECORD *part : { first, second, list }) {
        AddListList(&joined, part);
    }
    QCOMPARE(joined, first);
    QCOMPARE(first->next, second);
    QCOMPARE(second->next, third);
    TQPacketFreeList(&joined, OWNER);
    QCOMPARE(joined, nullptr);
    TQJOB foreign = {};
    TQPacketFreeItem(&foreign.list, JOB);
    QCOMPARE(TQJOB_CC::pageNumber(&foreign), 0);
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
    root.add(nullptr);
    QCOMPARE(root.findNode(nullptr), nullptr);
    add(PROFILE, {});
    const ArchiveNode *job = add(JOB, {});
    const ArchiveNode *book = add(BOOK, { 7, BOOK });
    const ArchiveNode *swapped = add(BOOK, { BOOK, 7 });
    const ArchiveNode *large = add(BOOK, { 7, 0x10000 + BOOK });
    QCOMPARE(find(root, { nullptr, JOB, {}, "same" }), job);
    QCOMPARE(find(root, { nullptr, PACKETDATATYPE_NONE, { 7, BOOK }, "other" }), book);
    QCOMPARE(find(root, { nullptr, BOOK, { BOOK, 7 }, nullptr }), swapped);
    QCOMPARE(find(root, { nullptr, BOOK, { 7, 0x10000 + BOOK }, nullptr }), large);
    QCOMPARE(find(root, { nullptr, JOB, { 7, BOOK }, nullptr }), nullptr);
    const ArchiveNode *late = add(OWNER, {});
    QCOMPARE(find(root, { nullptr, OWNER, {}, "same" }), late);
}

void tst_Server::deepArchivesAreDestroyed()
{
    ArchiveNode root;
    ArchiveNode *deepest = &root;
    for (int i = 0; i < 200000; ++i) {
        const auto child = new ArchiveNode;
        deepest->add(child);
        deepest = child;
    }
}

void tst_Server::itemsHoldWhatSqlReads()
{
    const auto &row = currentRow<Type>();
    const auto column = [&](const char *value) {
        const QByteArray query = QByteArray("SELECT ") + value + " FROM " + row.table;
        return sql(m_sample, query + " ORDER BY id");
    };
    const QByteArrayList ids = column("id");
    QByteArrayList stored = column("name");
    for (int i = 0; i < int(ids.size()); ++i) {
        const QByteArray type = hex(row.type);
        stored[i] += ' ' + hex(ids[i].toUInt()) + ':' + type + "\nSI " + type + '\n';
    }
    for (unsigned tag = 1; tag <= row.fields.size(); ++tag) {
        const Field &field = row.fields[tag - 1];
        const QByteArrayList values = column(field.sql);
        for (int i = 0; i < int(values.size()); ++i) {
            const bool isNull = values[i].isEmpty();
            stored[i] += isNull ? QByteArray() : hex(tag) + ' ' + field.form(values[i]) + '\n';
        }
        QCOMPARE(TQFieldHeading(row.type, tag), field.heading);
    }
    Client client(m_sample);
    QVERIFY(ids.size() > 4);
    for (int i = 0; i < int(ids.size()); ++i) {
        const auto node = client.archive(row.type, ids[i].toUInt());
        QCOMPARE(described(*node->packetable), stored[i] + "TI 0\n");
    }
}

void tst_Server::storedValuesAreMadeToFit()
{
    QFETCH_GLOBAL(bool, isPostgres);
    const auto &row = currentRow<Case>();
    const QByteArray store = m_stores.sample("values", isPostgres);
    sql(store, QByteArray("UPDATE ") + row.given);
    Client client(store);
    const bool isBook = QByteArray(row.given).startsWith("tq_book");
    const QByteArray text =
        isBook ? client.item(BOOK, MIDDLEMARCH) : client.item(OUTPUT, FIRST_OUTPUT);
    const QByteArray tag = QByteArray(row.expected).split(' ').first();
    const int at = int(text.indexOf('\n' + tag + ' ')) + 1;
    QVERIFY(text.startsWith("SI "));
    QCOMPARE(at == 0 ? tag : text.mid(at).split('\n').first(), QByteArray(row.expected));
}

void tst_Server::archivesHoldWhatIsReferredTo()
{
    const QByteArray job =
        sql(m_sample, "SELECT id FROM tq_job WHERE name = 'Middlemarch p. 12'").value(0);
    const auto archive = Client(m_sample).archive(JOB, job.toUInt());
    const ArchiveNode *book = find(*archive, { nullptr, BOOK, { MIDDLEMARCH, BOOK }, nullptr });
    QVERIFY(book);
    QVERIFY(find(*book, { nullptr, OWNER, { FIRST_OWNER, OWNER }, nullptr }));
    const ArchiveNode *output = find(*archive, { nullptr, OUTPUT, {}, "Digital Press Colour" });
    QVERIFY(output);
    QCOMPARE(output->packetable->dbkey.key, 0U);  // it is known by its name alone
}

void tst_Server::profilesAreLoadedByKeyOrByName()
{
    Client client(m_sample);
    QFile file(str("/usr/share/color/icc/sRGB.icc"));
    QVERIFY(file.open(QIODevice::ReadOnly));
    const QByteArray bytes = "\n7 1b0a " + file.readAll().toBase64() + '\n';
    QVERIFY(client.profile(SRGB).contains(bytes));
    QVERIFY(!client.item(PROFILE, SRGB).contains("\n7 "));  // until they are asked for
    const QByteArray rest = "6 9\nSL 1\nSI 30\n7 1 AQ==\nTI 0\nTL 0\nTI 0\n";
    ICCPROFILEDATA_CC profile;
    QVERIFY(fill(profile, "SI 30\n1 mine\n7 1 AA==\n" + rest));
    QVERIFY(!client.loaded(profile).contains(bytes));
    profile.setName("sRGB");
    profile.dbkey = { SRGB, BOOK };
    QVERIFY(!client.loaded(profile).contains(bytes));
    profile.dbkey = {};
    QCOMPARE(client.loaded(profile), "SI 30\n1 mine" + bytes + rest);
    QCOMPARE(client.server.failures(), 0U);
}

void tst_Server::queuesAndOrdersAreThoseAskedFor()
{
    QFETCH_GLOBAL(bool, isPostgres);
    constexpr int AGE = 0;
    const QByteArray store = m_stores.sample("queues", isPostgres);
    sql(store, "UPDATE tq_job SET page = id, name = id % 3");  // the page tells them apart
    const auto stored = [&store](const QByteArray &rest) {
        return sql(store,
            "SELECT page || ' ' || coalesce(p.id, 0) || ' ' || coalesce(p.name, 'none') FROM "
            "tq_job j "
            "LEFT JOIN tq_publication p ON p.id = publication_id WHERE output_id = 1073741824" +
                rest);
    };
    Client client(store);
    const auto listed = [&client](int queue, int sort, SORTORDER order) {
        return client.pagesOf("1073741824", queue, sort, order);
    };
    QVERIFY(stored("").size() > 50);
    QCOMPARE(
        listed(TQQUEUE_ALL, SORTTYPE_NAME, SORTORDER_ASCENDING), stored(" ORDER BY j.name, j.id"));
    QCOMPARE(listed(TQQUEUE_ALL, SORTTYPE_NAME, SORTORDER_DESCENDING),
        stored(" ORDER BY j.name DESC, j.id DESC"));
    QCOMPARE(listed(TQQUEUE_ALL, AGE, SORTORDER_ASCENDING), stored(" ORDER BY j.id"));
    QCOMPARE(listed(TQQUEUE_ALL, AGE, SORTORDER_DESCENDING), stored(" ORDER BY j.id DESC"));
    QCOMPARE(listed(1, AGE, SORTORDER_ASCENDING), stored(" AND state = 1 ORDER BY j.id"));
}

// Whatever order the database has by default.
void tst_Server::namesAreOrderedByCodePoint()
{
    QFETCH_GLOBAL(bool, isPostgres);
    if (isPostgres) {
        sql(m_stores.url("postgres", true),
            "CREATE DATABASE dictionary TEMPLATE template0 LOCALE_PROVIDER icu ICU_LOCALE 'en'");
    }
    const QByteArray store = m_stores.sample("dictionary", isPostgres);
    sql(store, "INSERT INTO tq_book_owner (id, name) VALUES (1300000000, 'x')");
    for (const char *book : { "(1400000000, 1300000000, 'b')", "(1400000001, 1300000000, 'ä')",
             "(1400000002, 1300000000, 'C')" }) {
        sql(store, QByteArray("INSERT INTO tq_book (id, owner_id, name) VALUES ") + book);
    }
    QCOMPARE(Client(store).booksOf({ 1300000000, OWNER }), QByteArrayList({ "C", "b", "ä" }));
}

void tst_Server::keysOfNothingFindNothing()
{
    Client client(m_sample);
    QVERIFY(!client.archive(JOB, 999999));
    QVERIFY(!client.archive(BOOK, 1));
    QVERIFY(!client.archive(SPECIMEN, 1));
    QVERIFY(!client.list(JOB));
    QCOMPARE(client.jobsOf("0"), QByteArrayList());
    QCOMPARE(client.booksOf({ FIRST_OWNER, JOB }), QByteArrayList());
    QCOMPARE(client.server.getidfromtqkey({ 7, 4711 }), 0);
    QCOMPARE(client.server.getidfromtqkey({ 0x80000000, JOB }), 0);
    QCOMPARE(client.server.failures(), 0U);
}

QTEST_GUILESS_MAIN(tst_Server)
#include "tst_server.moc"

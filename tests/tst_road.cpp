#include "tqcommserver.h"
#include "tqitems.h"
#include "tqregistry.h"
#include "tqstorageclass.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"
#include "xpkreference.h"

#include <QSet>

#include <memory>

namespace {

using Item = std::unique_ptr<TQPacketable>;
using Items = std::vector<Item>;

constexpr auto SPECIMEN = PACKETDATATYPE_SPECIMEN;
constexpr int PROFILE_FILE = 2;  // fields of a profile
constexpr int PROFILE_DATA = 7;

QByteArray packetOf(const TQPacketable &item)
{
    unsigned int length = 0;
    char *text = item.toPacket(length);
    const QByteArray copy(text, int(length));
    TQ_free(text);
    return copy;
}

// Everything that an item says, as one text.
QByteArray describe(const TQPacketable &item)
{
    const char *name = item.name ? item.name : item.subrecord ? item.subrecord->name : "";
    return QByteArray::number(item.datatype) + ' ' + QByteArray::number(item.dbkey.key) + ':' +
        QByteArray::number(item.dbkey.hkey) + ' ' + name + '\n' + packetOf(item);
}

QByteArray describe(const XMLPacketable &item)
{
    const TQKEY_ELEMENT key = item.getDBkey();
    return QByteArray::number(item.getType()) + ' ' + QByteArray::number(key.key) + ':' +
        QByteArray::number(key.hkey) + ' ' + item.getName().toUtf8() + '\n' +
        item.toPacket(item.getNodeConst()).toUtf8();
}

// Asks a store without the library in between.
class Store
{
public:
    explicit Store(TQCommServer &server) : m_server(server) {}

    QList<TQKEY_ELEMENT> owners(PACKETDATATYPES type)
    {
        QList<TQKEY_ELEMENT> keys;
        TQLISTRECORD *list = m_server.getDBList(m_command, m_message, type);
        for (TQLISTRECORD *record = list; record; record = record->next) {
            const auto owner = reinterpret_cast<TQOWNER *>(record);
            keys.append({ owner->key, owner->hkey });
        }
        TQPacketFreeList(&list, PACKETDATATYPE_OUTPUT);
        return keys;
    }
    Items outputs()
    {
        Items items;
        each(m_server.getDBList(m_command, m_message, PACKETDATATYPE_OUTPUTLIST),
            [&](TQLISTRECORD *record) { add(items, PACKETDATATYPE_OUTPUT, record); });
        return items;
    }
    Items books(const QList<TQKEY_ELEMENT> &keys)
    {
        Items items;
        for (const TQKEY_ELEMENT &key : keys) {
            each(m_server.getBooks(m_command, m_message, SORTTYPE_NAME, SORTORDER_ASCENDING, key),
                [&](TQLISTRECORD *record) { add(items, PACKETDATATYPE_BOOK, record); });
        }
        return items;
    }
    Items jobs(const QList<TQKEY_ELEMENT> &keys, bool withPublications)
    {
        Items items;
        eachJob(keys, [&](TQLISTRECORD *record) {
            if (withPublications || !reinterpret_cast<TQJOB *>(record)->publicationName) {
                add(items, PACKETDATATYPE_JOB, record);
            } else {
                TQPacketFreeItem(record, PACKETDATATYPE_JOB);
            }
        });
        return items;
    }
    // The job with the lowest page for each publication, under the publication's name.
    Items publications(const QList<TQKEY_ELEMENT> &keys)
    {
        struct Page
        {
            int number;
            Item item;
        };
        std::map<unsigned, Page> chosen;
        eachJob(keys, [&](TQLISTRECORD *record) {
            const auto job = reinterpret_cast<TQJOB *>(record);
            const unsigned id = job->publicationId;
            const QByteArray name(job->publicationName);
            const int number = TQJOB_CC::pageNumber(job);
            Items items;
            add(items, PACKETDATATYPE_JOB, record);
            items.front()->setName(name.constData());
            if (!name.isEmpty() && (chosen.count(id) == 0 || number < chosen[id].number)) {
                m_replaced += chosen.count(id) > 0;
                chosen[id] = { number, std::move(items.front()) };
            }
        });
        Items items;
        for (auto &entry : chosen) {
            items.push_back(std::move(entry.second.item));
        }
        return items;
    }
    // How often a publication's first job was not that with its lowest page.
    int replaced() const { return m_replaced; }

    std::unique_ptr<ArchiveNode> archive(const TQPacketable &item)
    {
        return std::unique_ptr<ArchiveNode>(
            m_server.getArchiveNode(m_command, m_message, item.datatype, item.dbkey));
    }

private:
    template<typename Record, typename Use>
    static void each(Record *list, Use use)
    {
        for (auto record = reinterpret_cast<TQLISTRECORD *>(list); record;) {
            TQLISTRECORD *const next = record->next;
            record->next = nullptr;
            use(record);
            record = next;
        }
    }
    template<typename Use>
    void eachJob(const QList<TQKEY_ELEMENT> &keys, Use use)
    {
        for (const TQKEY_ELEMENT &key : keys) {
            each(m_server.getJobqueue(m_command, m_message, TQQUEUE_ALL, SORTTYPE_NAME,
                     SORTORDER_ASCENDING, m_server.getidfromtqkey(key)),
                use);
        }
    }
    static void add(Items &items, PACKETDATATYPES type, TQLISTRECORD *record)
    {
        items.emplace_back(PacketableUtil::getPacketable(type));
        items.back()->loadRecord(reinterpret_cast<unsigned char *>(record));
    }

    TQCommServer &m_server;
    TQLPCOMMANDS m_command;
    ZQ_MESSAGE_ID m_message;
    int m_replaced = 0;
};

// A value that packet text can hold for a field of that element type code; empty for the codes
// that have no text form.
QByteArray valueFor(unsigned int code)
{
    static const char *const VALUES[] = { "", "Tom & \"Jerry\" <100%>", "id-0042", "offset",
        "2024-02-29", "-9", "17", "7", "-0.5", "Heidelberg <1>", "", "841.89", "en-GB", "12",
        "1f ff", "3 1.5 -2 0", "2 1 2", "2 -3 4", "1 5", "0 ", "3", "65", "2 a b\rc",
        "4 AAECAw==", "2024-02-29T12:00:00Z", "see  below", "", "2 595.276 841.89", "/srv/a b.pdf",
        "99", "1 8", "a 1 2 3 4 5 6 7 8 9 10" };
    return VALUES[code];
}

// Every field of the specimen, or one value for its first text field.
QByteArray specimenText(const QByteArray &value = QByteArray())
{
    QByteArray lines = value.isNull() ? QByteArray() : "101 " + value + '\n';
    const CONVERTSTRUCTELEMENTINFO *field = TQGetSystemStorageClassConv(SPECIMEN);
    for (; value.isNull() && field->type != 0; ++field) {
        const QByteArray text = valueFor(field->type);
        if (!text.isEmpty()) {
            lines += QByteArray::number(field->tag, 16) + ' ' + text + '\n';
        }
    }
    return "SI 63\n" + lines + "TI 0\n";
}

QByteArray megabyte()
{
    QByteArray text;
    while (text.size() < 1024 * 1024) {
        text += "Grüße an alle, 100 %1 🖨️ – ";
    }
    return text + "& \"mehr\".";  // few of these: QtXml's writer takes its time for each
}

struct Request
{
    const char *name;
    XMLCommServer::REQUEST type;
    bool withPublications;
    bool withKeys;
};
constexpr Request REQUESTS[] = {
    { "outputs", XMLCommServer::REQUEST_OUTPUTS, false, false },
    { "publications", XMLCommServer::REQUEST_PUBLICATIONS, true, false },
    { "publications of keys", XMLCommServer::REQUEST_PUBLICATIONS, true, true },
    { "books", XMLCommServer::REQUEST_BOOKS, false, false },
    { "books of keys", XMLCommServer::REQUEST_BOOKS, false, true },
    { "jobs", XMLCommServer::REQUEST_JOBS, false, false },
    { "all jobs", XMLCommServer::REQUEST_JOBS, true, false },
    { "all jobs of keys", XMLCommServer::REQUEST_JOBS, true, true },
};

}  // namespace

class tst_Road : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void requests_data() { addRows(REQUESTS); }
    void requests();
    void sizes();
    void roundTrip_data();
    void roundTrip();
    void archives();

private:
    // The items of the one reply to a request; none and false without one.
    bool ask(XMLAction &request, std::vector<std::unique_ptr<XMLPacketable>> &items);

    TQCommServer m_server { "sqlite::memory:" };
    Store m_store { m_server };
};

bool tst_Road::ask(XMLAction &request, std::vector<std::unique_ptr<XMLPacketable>> &items)
{
    QStringList log;
    RecordingAgent agent(1, &log);
    XMLRouter router(&m_server, nullptr, "road");  // dies first
    router.add(&agent);
    XMLPacket *packet = agent.getXMLPacket(-1);
    packet->append(request);
    router.send(packet);
    runEvents();
    if (agent.packets.size() != 1) {
        return false;
    }
    std::list<QDomNode> nodes;
    agent.packets.first()->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
    for (const QDomNode &node : nodes) {
        items.push_back(std::make_unique<XMLPacketable>());
        items.back()->setNode(node.toElement());
    }
    return true;
}

void tst_Road::requests()
{
    const auto &row = currentRow<Request>();
    XMLAction request;
    request.setType(row.type);
    if (row.withPublications) {
        request.setExcludePublications(false);
    }
    const bool isBooks = row.type == XMLCommServer::REQUEST_BOOKS;
    QList<TQKEY_ELEMENT> keys =
        m_store.owners(isBooks ? PACKETDATATYPE_BOOKOWNER : PACKETDATATYPE_OUTPUTLIST);
    QVERIFY(keys.size() >= 3);
    if (row.withKeys) {
        keys = { keys.at(2), keys.at(0) };
        request.setTQKEYList({ &keys[0], &keys[1] });
    }
    const Items expected = row.type == XMLCommServer::REQUEST_OUTPUTS ? m_store.outputs()
        : row.type == XMLCommServer::REQUEST_PUBLICATIONS             ? m_store.publications(keys)
        : isBooks                                                     ? m_store.books(keys)
                  : m_store.jobs(keys, row.withPublications);
    std::vector<std::unique_ptr<XMLPacketable>> items;
    QVERIFY(ask(request, items));
    QCOMPARE(items.size(), expected.size());
    for (size_t i = 0; i < items.size(); ++i) {
        const QByteArray text = describe(*expected[i]);
        QCOMPARE(describe(*items[i]), text);
        const Item back(items[i]->getData());
        QVERIFY(back);
        QCOMPARE(describe(*back), text);
    }
}

void tst_Road::sizes()
{
    const QList<TQKEY_ELEMENT> outputs = m_store.owners(PACKETDATATYPE_OUTPUTLIST);
    QVERIFY(m_store.outputs().size() >= 4);
    QCOMPARE(m_store.books(m_store.owners(PACKETDATATYPE_BOOKOWNER)).size(), size_t(60));
    QVERIFY(m_store.jobs(outputs, true).size() >= 500);
    QVERIFY(m_store.jobs(outputs, false).size() >= 120);
    QVERIFY(m_store.publications(outputs).size() >= 36);
    QVERIFY(m_store.replaced() > 0);
}

void tst_Road::roundTrip_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::newRow("every element type code at every width") << specimenText();
    const auto value = [](const char *name, const QByteArray &text) {
        QTest::newRow(name) << specimenText(text);
    };
    value("per cents", "%1 %2 %99 %%1 %L1");
    value("blanks", "  two  and   three");
    value("tabs", "\ta\tb");
    value("quotes", "\"double\" 'single' `back`");
    value("ampersands", "a & b &amp; <c> ]]> &#10; -->");
    value("accents", "Čeština, Ελληνικά, ÿ, e\u0301");
    value("emoji", "🖨️ 👩‍👩‍👧 𝄞");
    value("markers", "SI 63");
    value("hexadecimal", "0x1F");
    value("1 MiB", megabyte());
    QTest::newRow("texts in an array")
        << QByteArray("SI 63\n1601 4 %1 %2\r <a> & \"b\"\r🖨️\r") + megabyte() + "\nTI 0\n";
    const QByteArray bytes = megabyte();
    QTest::newRow("bytes") << "SI 63\n1701 " + QByteArray::number(bytes.size(), 16) + ' ' +
            bytes.toBase64() + "\nTI 0\n";
    QTest::newRow("lists and items")
        << QByteArray("SI 63\n101 a\nSL 2\nSI 63\n101 b\nSL 0\nTL 0\nTI 0\nSI 6\nTI 0\nTL 0\n"
                      "102 c\nSI 56\n1 d\nTI 0\nTI 0\nSI 63\n101 second\nTI 0\nSL 0\nTL 0\n");
    QTest::newRow("no fields") << QByteArray("SI 63\nTI 0\n");
}

void tst_Road::roundTrip()
{
    QFETCH(QByteArray, text);
    const Item item(PacketableUtil::getPacketable(SPECIMEN));
    QVERIFY(item->fromPacket(text.data(), unsigned(text.size()), false, true));
    item->dbkey = { 0xffffffffU, 1 };
    item->setName("%1 & Söhne");
    XMLPacketable xml;
    xml.setData(*item);
    QCOMPARE(describe(xml), describe(*item));
    const Item back(xml.getData());
    QVERIFY(back);
    QCOMPARE(describe(*back), describe(*item));

    // The same over the text of a packet, as another process would read it.
    XMLPacket packet;
    const QDomDocument document = packet.append(*item, true).ownerDocument();
    const Xml read(XMLObject::toString(document));
    xml.setData(read.root.firstChildElement(XMLPacket::BODY).firstChild());
    QVERIFY(xml.isCurrent());
    QCOMPARE(describe(xml), describe(*item));
}

// Every job with all that it refers to; the profiles have the bytes of the files that they are.
void tst_Road::archives()
{
    const QString folder = str("/usr/share/color/icc/");
    if (!QFile::exists(folder + str("sRGB.icc"))) {
        return QTest::qSkip("icc-profiles-free is not installed", __FILE__, __LINE__);
    }
    QSet<QString> profiles;
    QSet<unsigned> types;
    for (const Item &job : m_store.jobs(m_store.owners(PACKETDATATYPE_OUTPUTLIST), true)) {
        const std::unique_ptr<ArchiveNode> node = m_store.archive(*job);
        QVERIFY(node);
        const std::unique_ptr<XMLPacketable> item(
            XMLPacketable::fromArchiveNode(m_server, node.get()));
        QCOMPARE(describe(*item), describe(*job));  // what is inlined is no part of its text
        QList<XPKReference *> references;
        QVERIFY(item->getXPKReferences(references));
        for (XPKReference *each : references) {
            const std::unique_ptr<XPKReference> reference(each);
            const Item referred(reference->packetable->getData());
            QVERIFY(referred);
            QCOMPARE(QByteArray(referred->name), reference->packetable->getName().toUtf8());
            types.insert(referred->datatype);
            if (referred->datatype != PACKETDATATYPE_ICCPROFILE) {
                continue;
            }
            const QDomElement e = reference->packetable->getNodeConst();
            QFile file(
                folder + XMLPacketable::getTagAttribute(e, PROFILE_FILE, XMLPacketable::VALUE));
            QVERIFY(profiles.contains(file.fileName()) || file.open(QIODevice::ReadOnly));
            if (file.isOpen()) {
                const QByteArray bytes = file.readAll();
                const QDomElement data = XMLPacketable::getTagNode(e, PROFILE_DATA).toElement();
                QVERIFY(bytes.size() > 128);
                QVERIFY(QByteArray::fromBase64(data.text().toLatin1()) == bytes);
                QCOMPARE(data.attribute(XMLPacketable::SIZE), QString::number(bytes.size(), 16));
                QVERIFY(packetOf(*referred).contains(bytes.toBase64()));
                profiles.insert(file.fileName());
            }
        }
    }
    QVERIFY(profiles.size() >= 2);
    QVERIFY(types.contains(PACKETDATATYPE_OUTPUT) && types.contains(PACKETDATATYPE_BOOK));
}

QTEST_GUILESS_MAIN(tst_Road)
#include "tst_road.moc"

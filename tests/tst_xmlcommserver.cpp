#include "script.h"
#include "tqcommserver.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

#include <QFileInfo>

#include <dlfcn.h>
#include <link.h>

#include <memory>

namespace {

enum { OUTPUTS = 1000, PUBLICATIONS, BOOKS, JOBS };

// Two outputs with two jobs each, two owners with three books.
Script sample()
{
    const Script::Table name = { { 1, 1, 0, 1, {} } };
    Script s;
    s.tables = { { 8, name }, { 21, name }, { 86, name } };
    s.owners[15] = { { { 1, 8 }, "A" }, { { 2, 8 }, "B" } };
    s.owners[85] = { { { 5, 85 }, "C" }, { { 6, 85 }, "D" } };
    s.jobs[1001] = { { { 11, 21 }, "J1" }, { { 12, 21 }, "J2", 5, "Daily", 7 } };
    s.jobs[1002] = { { { 13, 21 }, "J3", 1, "Weekly", 3 }, { { 14, 21 }, "J4", 2, "Daily", 7 } };
    s.books[5] = { { { 51, 86 }, "B1" }, { { 52, 86 }, "B2" } };
    s.books[6] = { { { 53, 86 }, "B3" } };
    return s;
}

// How an item comes about from its record, and what is asked of and given back to the server.
const char *const QUERIES = "getDBList iserror getidfromtqkey getJobqueue getBooks "
                            "TQPacketFreeList TQPacketFreeItem";
const char *const MAKING = "getPacketable RemoveItemFromList loadRecord setName trimLists setData "
                           "toPacket TQ_free fromPacket";

// The calls that start with one of the words.
QString calls(const char *words)
{
    const QStringList list = str(words).split(QLatin1Char(' '));
    QStringList result;
    for (const std::string &call : script().calls) {
        const QString text = QString::fromStdString(call);
        if (list.contains(text.section(QLatin1Char(' '), 0, 0))) {
            result += text;
        }
    }
    return result.join(str(", "));
}

// Every item of a reply: the item's name and, where that is another, the record's.
QString describe(const XMLPacket &packet)
{
    std::list<QDomNode> nodes;
    packet.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
    QStringList items;
    for (const QDomNode &node : nodes) {
        const QDomElement e = node.toElement();
        const QString name = XMLPacketable::getName(e);
        const QString field = XMLPacketable::getTagAttribute(e, 1, XMLPacketable::VALUE);
        items += field == name ? name : name + QLatin1Char('=') + field;
    }
    return items.join(QLatin1Char(' '));
}

struct Bridge
{
    explicit Bridge(bool connected = true)
        : agent(1, &log, false), server(""), router(connected ? &server : nullptr, nullptr, "hub")
    {
        router.add(&agent);
    }

    // Sends a request; the replies, "none" without any. Keys are words such as "5:85".
    QString ask(int type, const QString &keys, char exclude)
    {
        XMLAction request;
        request.setType(type);
        QList<TQKEY_ELEMENT> list;
        for (const QString &key : keys.split(QLatin1Char(' '))) {
            list.append({ key.section(QLatin1Char(':'), 0, 0).toUInt(),
                key.section(QLatin1Char(':'), 1).toUInt() });
        }
        QList<TQKEY_ELEMENT *> pointers;
        for (TQKEY_ELEMENT &key : list) {
            pointers.append(&key);
        }
        if (!keys.isEmpty()) {
            request.setTQKEYList(pointers);
        }
        if (exclude != '-') {
            request.setExcludePublications(exclude == '1');
        }
        return ask(request);
    }
    QString ask(int type) { return ask(type, QString(), '0'); }
    QString ask(XMLAction &request)
    {
        XMLPacket *packet = agent.getXMLPacket(-1);
        packet->append(request);
        return send(packet);
    }
    QString send(XMLPacket *packet)
    {
        const QPointer<XMLPacket> sent(packet);
        router.send(packet);
        runEvents();
        QStringList replies(sent ? str("request left") : QString());
        replies.removeAll(QString());
        for (const XMLPacket *reply : agent.packets) {
            replies += describe(*reply);
        }
        return agent.packets.isEmpty() ? str("none") : replies.join(str(" / "));
    }

    QStringList log;
    RecordingAgent agent;
    TQCommServer server;
    XMLRouter router;
};

#define ALL_JOBS                                                                                   \
    "getDBList 15, iserror, getidfromtqkey 1:8, getJobqueue 3 4 0 1001, getidfromtqkey 2:8, "      \
    "getJobqueue 3 4 0 1002, TQPacketFreeList 8 A B"
#define EXCLUDED ", TQPacketFreeItem 21 J2, TQPacketFreeItem 21 J3, TQPacketFreeItem 21 J4"

struct Request
{
    const char *name;
    int type;
    const char *keys;
    char exclude;  // '-': not said
    const char *reply;
    const char *queries;
};
constexpr Request REQUESTS[] = {
    { "outputs", OUTPUTS, "", '-', "A B", "getDBList 15, iserror" },
    { "outputs know no keys", OUTPUTS, "1:8", '-', "A B", "getDBList 15, iserror" },
    { "books", BOOKS, "", '-', "B1 B2 B3",
        "getDBList 85, iserror, getBooks 4 0 5:85, getBooks 4 0 6:85, TQPacketFreeList 8 C D, "
        "TQPacketFreeList 86" },
    { "books of keys", BOOKS, "6:1 9:9 5:2", '-', "B3 B1 B2",
        "getBooks 4 0 6:1, getBooks 4 0 9:9, getBooks 4 0 5:2, TQPacketFreeList 86" },
    { "a key twice", BOOKS, "6:1 6:1", '-', "B3 B3",
        "getBooks 4 0 6:1, getBooks 4 0 6:1, TQPacketFreeList 86" },
    { "no books", BOOKS, "9:9", '-', "none", "getBooks 4 0 9:9" },
    { "jobs", JOBS, "", '-', "J1", ALL_JOBS EXCLUDED },
    { "jobs without publications", JOBS, "", '1', "J1", ALL_JOBS EXCLUDED },
    { "jobs with publications", JOBS, "", '0', "J1 J2 J3 J4", ALL_JOBS },
    { "jobs of keys", JOBS, "2:8 1:8", '0', "J3 J4 J1 J2",
        "getidfromtqkey 2:8, getJobqueue 3 4 0 1002, getidfromtqkey 1:8, getJobqueue 3 4 0 1001" },
    { "no jobs", JOBS, "9:9", '-', "", "getidfromtqkey 9:9, getJobqueue 3 4 0 1009" },
    { "publications", PUBLICATIONS, "", '-', "Weekly=J3 Daily=J4",
        ALL_JOBS ", TQPacketFreeList 21 J1 J2" },
    { "publications of a key", PUBLICATIONS, "1:8", '1', "Daily=J2",
        "getidfromtqkey 1:8, getJobqueue 3 4 0 1001, TQPacketFreeList 21 J1" },
    { "no publications", PUBLICATIONS, "9:9", '-', "none",
        "getidfromtqkey 9:9, getJobqueue 3 4 0 1009" },
    { "a type that is not known", 1004, "", '-', "none", "" },
    { "no type", 0, "", '-', "none", "" },
};

// How a request's one record becomes an item, call by call.
struct Making
{
    const char *name;
    int type;
    const char *calls;
};
#define CONVERSION(type) ", toPacket " type ", TQ_free, getPacketable " type ", fromPacket 0 1"
constexpr Making MAKINGS[] = {
    { "outputs", OUTPUTS,
        "getPacketable 8, RemoveItemFromList A, loadRecord A" CONVERSION("8") ", setName A" },
    { "books", BOOKS,
        "RemoveItemFromList B3, setName B3, setData B3" CONVERSION("86") ", setName B3" },
    { "jobs", JOBS,
        "RemoveItemFromList J4, setName J4, trimLists J4, setData J4" CONVERSION(
            "21") ", setName J4" },
    { "publications", PUBLICATIONS,
        "RemoveItemFromList J4, setName Daily, trimLists J4, setData J4" CONVERSION(
            "21") ", setName Daily" },
};

// The jobs of one output, and the publications that they give.
struct Choice
{
    const char *name;
    const char *jobs;  // name, publication's identifier and name, page
    const char *reply;
};
constexpr Choice CHOICES[] = {
    { "by identifier, then by page", "a,7,P7,5 b,3,P3,1 c,7,P7,2", "P3=b P7=c" },
    { "equal pages keep the first", "a,7,P7,2 b,7,P7,2", "P7=a" },
    { "pages below zero", "a,7,P7,0 b,7,P7,-1", "P7=b" },
    { "identifiers are unsigned", "a,2147483648,P,1 b,1,P1,1 c,0,P0,1", "P0=c P1=b P=a" },
    { "jobs outside publications", "a,7,,1 b,7,P7,2 c,0,,3", "P7=b" },
    { "only jobs outside publications", "a,7,,1", "" },
    { "the chosen job's publication name", "a,7,P7,2 b,7,Q7,1", "Q7=b" },
};

// Each call failing in each way, and the replies to the four types of requests then; null as if
// nothing had failed.
struct Fault
{
    const char *name;
    const char *replies[4];
};
constexpr Fault FAULTS[] = {
    { "none of them", { "A B", "Weekly=J3 Daily=J4", "B1 B2 B3", "J1 J2 J3 J4" } },
    { "getDBList null", { "none", "none", "none", "" } },
    { "getDBList error", { "none", "none", "none", "" } },
    { "getDBList cycle 0", {} },
    { "getDBList cycle 1", {} },
    { "getidfromtqkey null", { nullptr, "none", nullptr, "" } },
    { "getJobqueue null", { nullptr, "none", nullptr, "" } },
    { "getJobqueue error", {} },
    { "getJobqueue null name", { nullptr, nullptr, nullptr, "=J1 J2 =J3 J4" } },
    { "getJobqueue cycle 0", {} },
    { "getJobqueue cycle 1", {} },
    { "getBooks null", { nullptr, nullptr, "none" } },
    { "getBooks error", {} },
    { "getBooks null name", { nullptr, nullptr, "=B1 B2 =B3" } },
    { "getBooks cycle 0", {} },
    { "getBooks cycle 1", {} },
    { "getPacketable null", { "none" } },
    { "toPacket null", { "A= B=", "Weekly= Daily=", "B1= B2= B3=", "J1= J2= J3= J4=" } },
    { "toPacket empty", { "A= B=", "Weekly= Daily=", "B1= B2= B3=", "J1= J2= J3= J4=" } },
    { "fromPacket null", {} },
    { "TQGetSystemStorageClassConv null",
        { "A= B=", "Weekly= Daily=", "B1= B2= B3=", "J1= J2= J3= J4=" } },
};

}  // namespace

class tst_XMLCommServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { script() = sample(); }
    void cleanup();

    void seam();
    void replies_data() { addRows(REQUESTS); }
    void replies();
    void making_data() { addRows(MAKINGS); }
    void making();
    void publications_data() { addRows(CHOICES); }
    void publications();
    void faults_data() { addRows(FAULTS); }
    void faults();
    void requests();
    void packets();
    void withoutServer();
    void operations();
    void growth();
};

// Whatever a test did: nothing is left, nothing was freed twice.
void tst_XMLCommServer::cleanup()
{
    QCOMPARE(script().wrongFrees, 0);
    QCOMPARE(script().records.size() + script().items.size() + script().buffers.size(), size_t(0));
}

// The library is the one that was built, and runs over this server library alone.
void tst_XMLCommServer::seam()
{
    QStringList loaded;
    const auto collect = [](dl_phdr_info *info, size_t, void *list) {
        const QFileInfo file(QFile::decodeName(info->dlpi_name));
        if (file.fileName().startsWith(str("libtq"))) {
            *static_cast<QStringList *>(list) += file.canonicalFilePath();
        }
        return 0;
    };
    dl_iterate_phdr(collect, &loaded);
    const QString scripted = QFileInfo(str(TQXML_SCRIPTED)).canonicalFilePath();
    QStringList expected = { QFileInfo(str(TQXML_LIBRARY)).canonicalFilePath(), scripted };
    loaded.sort();
    expected.sort();
    QCOMPARE(loaded, expected);
    Dl_info info;  // of what the library calls
    QVERIFY(dladdr(dlsym(RTLD_DEFAULT, "_Z7TQ_freePv"), &info) != 0);
    QCOMPARE(QFileInfo(QFile::decodeName(info.dli_fname)).canonicalFilePath(), scripted);
}

void tst_XMLCommServer::replies()
{
    const auto &row = currentRow<Request>();
    QCOMPARE(Bridge().ask(row.type, str(row.keys), row.exclude), str(row.reply));
    QCOMPARE(calls(QUERIES), str(row.queries));
}

void tst_XMLCommServer::making()
{
    const auto &row = currentRow<Making>();
    script().owners[15].resize(1);
    script().jobs[1001] = { script().jobs[1002][1] };
    script().owners[85].erase(script().owners[85].begin());
    Bridge().ask(row.type);
    QCOMPARE(calls(MAKING), str(row.calls));
}

void tst_XMLCommServer::publications()
{
    const auto &row = currentRow<Choice>();
    script().jobs.clear();
    for (const QString &job : str(row.jobs).split(QLatin1Char(' '))) {
        const QStringList parts = job.split(QLatin1Char(','));
        script().jobs[1001].push_back({ { 1, 21 }, parts[0].toStdString(), parts[3].toInt(),
            parts[2].toStdString(), parts[1].toUInt() });
    }
    QCOMPARE(Bridge().ask(PUBLICATIONS), str(row.reply));
}

void tst_XMLCommServer::faults()
{
    const auto &row = currentRow<Fault>();
    script().faults = { row.name };
    for (int type = OUTPUTS; type <= JOBS; ++type) {
        const int i = type - OUTPUTS;
        QCOMPARE(Bridge().ask(type), str(row.replies[i] ? row.replies[i] : FAULTS->replies[i]));
    }
}

// Requests that take more than a type, keys and the exclusion; and what a reply's header says.
void tst_XMLCommServer::requests()
{
    Bridge bridge;
    RecordingAgent second(1, &bridge.log);
    bridge.router.add(&second);
    XMLAction request;
    request.setType(BOOKS);
    QDomElement e = request.getNodeConst();
    XMLObject::setProperty(e, str("tqkey_key_list"), str("5 6"));  // the shorter list counts
    XMLObject::setProperty(e, str("tqkey_hkey_list"), str("55 55 55"));
    request.setSortType(9);  // these are not looked at
    request.setSortAscending(false);
    request.setPageNumber(3);
    request.setChannelID(4);
    request.setShowNewestPage(true);
    XMLAction ignored;
    ignored.setType(JOBS);
    XMLPacket *packet = bridge.agent.getXMLPacket(-1);
    packet->append(request);
    packet->append(ignored);  // the first action only
    QCOMPARE(bridge.send(packet), str("B1 B2 B3"));
    QCOMPARE(calls(QUERIES), str("getBooks 4 0 5:85, getBooks 4 0 6:85, TQPacketFreeList 86"));
    bridge.ask(OUTPUTS);
    for (const XMLPacket *reply : bridge.agent.packets) {
        QCOMPARE(reply->getSourceAgentID(), -1);
        QCOMPARE(reply->getDestinationAgentID(), 1);
    }
    std::list<QDomNode> nodes;
    bridge.agent.packets.last()->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
    XMLPacketable item;
    item.setNode(nodes.back().toElement());
    QCOMPARE(item.getType(), PACKETDATATYPE_OUTPUT);
    QCOMPARE(item.getName(), str("B"));  // the sub-record's: the item has no name of its own
    QVERIFY(item.getDBkey().key == 2 && item.getDBkey().hkey == 8 && !item.isCurrent());
    bridge.router.remove(&second);
}

// Packets that are no requests: gone when control is back at the event loop, an empty one at once.
void tst_XMLCommServer::packets()
{
    TQCommServer server("");
    XMLCommServer bridge(&server);
    QCOMPARE(bridge.getAgentType(), 0);
    XMLPacketable item;
    XMLAction unknown;
    unknown.setType(77);
    QList<QPointer<XMLPacket>> sent;
    for (int i = 0; i < 4; ++i) {
        sent.append(i == 0 ? makePacket(1, -1, str("message")) : new XMLPacket);
    }
    sent[1]->append(item);
    sent[2]->append(unknown);
    QDomNode body = sent[3]->append(item).parentNode();  // an instruction by an action's name
    body.appendChild(body.ownerDocument().createProcessingInstruction(str("action"), str("x")));
    sent.append(new XMLPacket);
    bridge.receive(nullptr);
    for (const QPointer<XMLPacket> &packet : sent) {
        bridge.receive(packet);
    }
    QVERIFY(sent.count(nullptr) == 1 && !sent.last());
    runEvents();
    QCOMPARE(sent.count(nullptr), 5);
    QVERIFY(script().calls.empty());
}

// No connection, no router, no request.
void tst_XMLCommServer::withoutServer()
{
    for (int type = OUTPUTS; type <= JOBS; ++type) {
        const QString reply = type == JOBS ? QString() : str("none");
        QCOMPARE(Bridge(false).ask(type), reply);
        QCOMPARE(Bridge(false).ask(type, str("5:85"), '-'), reply);
    }
    QCOMPARE(calls(QUERIES), str("TQPacketFreeList 8"));  // books do so for an empty list, too
    const XMLCommServer alone(nullptr);
    QVERIFY(!alone.getDBList(PACKETDATATYPE_OUTPUTLIST));
    QVERIFY(!alone.getTQJOBs({ 1, 8 }) && !alone.getBooks({ 5, 85 }));
    TQCommServer server("");
    const XMLCommServer bridge(&server);
    XMLAction request;
    for (XMLAction *action : { &request, static_cast<XMLAction *>(nullptr) }) {
        bridge.sendOUTPUTs(1);
        bridge.sendBooks(1, action);
        bridge.sendTQJOBs(1, action);
        bridge.sendPublications(1, action);
    }
}

// The queries, as an application calls them itself.
void tst_XMLCommServer::operations()
{
    TQCommServer server("");
    const XMLCommServer bridge(&server);
    TQKEY_ELEMENT first = { 5, 85 };
    TQKEY_ELEMENT second = { 6, 85 };
    const auto names = [](auto *records, PACKETDATATYPES type) {
        QByteArrayList result;
        auto list = reinterpret_cast<TQLISTRECORD *>(records);
        for (const TQLISTRECORD *record = list; record; record = record->next) {
            result += reinterpret_cast<const TQBOOK *>(record)->name;
        }
        TQPacketFreeList(&list, type);
        return result.join(' ');
    };
    const auto books = PACKETDATATYPE_BOOK;
    QCOMPARE(names(bridge.getBooks(first), books), QByteArray("B1 B2"));
    QCOMPARE(names(bridge.getBooks({ &second, nullptr, &first }), books), QByteArray("B3 B1 B2"));
    QVERIFY(!bridge.getBooks(QList<TQKEY_ELEMENT *>()));
    first = { 1, 8 };
    second = { 2, 8 };
    const auto jobs = PACKETDATATYPE_JOB;
    QCOMPARE(names(bridge.getTQJOBs(second), jobs), QByteArray("J3 J4"));
    QCOMPARE(names(bridge.getTQJOBs({ &first, &second }), jobs), QByteArray("J1 J2 J3 J4"));
    QVERIFY(!bridge.getTQJOBs({ nullptr }) && !bridge.getDBList(PACKETDATATYPE_JOB));
}

// Lists are walked a fixed number of times, however many there are.
void tst_XMLCommServer::growth()
{
    constexpr unsigned OWNERS = 2000;
    for (unsigned i = 0; i < OWNERS; ++i) {
        script().owners[15].push_back({ { 100 + i, 8 }, "o" });
        for (int page = 0; page < 3; ++page) {
            script().jobs[int(1100 + i)].push_back({ { i, 21 }, "j", page, "p", i % 500 + 1 });
        }
    }
    script().isRecording = false;
    QCOMPARE(Bridge().ask(PUBLICATIONS).count(QLatin1Char('=')), 500);
    QCOMPARE(Bridge().ask(JOBS).count(QLatin1Char('j')), 3 * int(OWNERS));
    const size_t steps = script().steps;
    QVERIFY2(steps < 20 * OWNERS, QByteArray::number(qulonglong(steps)).constData());
}

QTEST_GUILESS_MAIN(tst_XMLCommServer)
#include "tst_xmlcommserver.moc"

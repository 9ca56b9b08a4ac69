#include "script.h"
#include "tqcommserver.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

#include <QFileInfo>
#include <QSet>

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
    s.jobs[1001] = { { { 11, 21 }, "J1", 0, "", 7 }, { { 12, 21 }, "J2", 5, "Daily", 7 } };
    s.jobs[1002] = { { { 13, 21 }, "J3", 1, "Weekly", 3 }, { { 14, 21 }, "J4", 2, "Daily", 7 } };
    s.books[5] = { { { 51, 86 }, "B1" }, { { 52, 86 }, "B2" } };
    s.books[6] = { { { 53, 86 }, "B3" } };
    return s;
}

QString takeCalls()
{
    QStringList calls;
    for (const std::string &call : std::exchange(script().calls, {})) {
        calls += QString::fromStdString(call);
    }
    return calls.join(str(", "));
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
        : agent(1, &log, false), server(""),
          router(new XMLRouter(connected ? &server : nullptr, nullptr, "hub"))
    {
        router->add(&agent);
    }
    ~Bridge() { delete router; }

    // Sends a request; the reply, "none" without one. The keys are two lists of words.
    QString ask(int type, const char *keys = "", const char *hkeys = "", char exclude = '0')
    {
        XMLAction request;
        request.setType(type);
        QDomElement e = request.getNodeConst();
        XMLObject::setProperty(e, *keys ? str("tqkey_key_list") : QString(), str(keys));
        XMLObject::setProperty(e, *keys ? str("tqkey_hkey_list") : QString(), str(hkeys));
        if (exclude != '-') {
            request.setExcludePublications(exclude == '1');
        }
        XMLPacket *packet = agent.getXMLPacket(-1);
        const QPointer<XMLPacket> sent(packet);
        const QDomElement first = packet->append(request);
        request.setType(OUTPUTS);
        packet->append(request);  // the first action only, which an instruction of its name is not
        const QDomNode instruction =
            first.ownerDocument().createProcessingInstruction(str("action"), str("x"));
        first.parentNode().insertBefore(instruction, first);
        router->send(packet);
        runEvents();
        const XMLPacket *reply = agent.packets.value(0);
        if (sent || agent.packets.size() > 1 || (reply && reply->getSourceAgentID() != -1)) {
            return str("request left, or another reply");
        }
        return reply ? describe(*reply) : str("none");
    }

    QStringList log;
    RecordingAgent agent;
    TQCommServer server;
    QPointer<XMLRouter> router;
};

struct Request
{
    const char *name;
    int type;
    const char *keys[2];
    char exclude;  // '-': not said
    const char *reply;
};
constexpr Request REQUESTS[] = {
    { "outputs", OUTPUTS, { "", "" }, '-', "A B" },
    { "outputs know no keys", OUTPUTS, { "1", "8" }, '-', "A B" },
    { "books", BOOKS, { "", "" }, '-', "B1 B2 B3" },
    { "books of keys", BOOKS, { "6 9 5", "1 9 2" }, '-', "B3 B1 B2" },
    { "a key twice", BOOKS, { "6 6", "1 1" }, '-', "B3 B3" },
    { "the shorter list of keys counts", BOOKS, { "5 6", "1" }, '-', "B1 B2" },
    { "no books", BOOKS, { "9", "9" }, '-', "none" },
    { "jobs", JOBS, { "", "" }, '-', "J1" },
    { "jobs without publications", JOBS, { "", "" }, '1', "J1" },
    { "jobs of keys", JOBS, { "2 1", "8 8" }, '0', "J3 J4 J1 J2" },
    { "no jobs", JOBS, { "9", "9" }, '-', "" },
    { "publications", PUBLICATIONS, { "", "" }, '-', "Weekly=J3 Daily=J4" },
    { "publications of a key", PUBLICATIONS, { "1", "8" }, '1', "Daily=J2" },
    { "no publications", PUBLICATIONS, { "9", "9" }, '-', "none" },
    { "a type that is not known", 1004, { "", "" }, '-', "none" },
};

// The jobs of one output, as name, publication's identifier and name, page; and the publications
// that they give.
constexpr Case CHOICES[] = {
    { "by identifier, then by page", "a,7,P7,5 b,3,P3,1 c,7,P7,2", "P3=b P7=c" },
    { "equal pages keep the first", "a,7,P7,2 b,7,P7,2", "P7=a" },
    { "pages below zero", "a,7,P7,0 b,7,P7,-1", "P7=b" },
    { "identifiers are unsigned", "a,2147483648,P,1 b,1,P1,1 c,0,P0,1", "P0=c P1=b P=a" },
    { "jobs outside publications", "a,7,,1 b,7,P7,2 c,0,,3", "P7=b" },
    { "only jobs outside publications", "a,7,,1", "" },
    { "the chosen job's publication name", "a,7,P7,2 b,7,Q7,1", "Q7=b" },
};

// Calls that fail, and the replies to the four types of requests then.
struct Fault
{
    const char *names;
    const char *replies[4];
};
#define NOTHING_FAILED                                                                             \
    {                                                                                              \
        "A B", "Weekly=J3 Daily=J4", "B1 B2 B3", "J1 J2 J3 J4"                                     \
    }
constexpr Fault FAULTS[] = {
    { "getDBList cycle 0,getDBList cycle 1,getJobqueue error,getJobqueue cycle 0,"
      "getJobqueue cycle 1,getBooks error,getBooks cycle 0,getBooks cycle 1,fromPacket null",
        NOTHING_FAILED },
    { "getDBList null,getDBList error", { "none", "none", "none", "" } },
    { "getidfromtqkey null,getJobqueue null", { "A B", "none", "B1 B2 B3", "" } },
    { "getJobqueue null name", { "A B", "Weekly=J3 Daily=J4", "B1 B2 B3", "=J1 J2 =J3 J4" } },
    { "getBooks null", { "A B", "Weekly=J3 Daily=J4", "none", "J1 J2 J3 J4" } },
    { "getBooks null name", { "A B", "Weekly=J3 Daily=J4", "=B1 B2 =B3", "J1 J2 J3 J4" } },
    { "getPacketable null", { "none", "Weekly=J3 Daily=J4", "B1 B2 B3", "J1 J2 J3 J4" } },
    { "loadRecord null,loadRecord null name",
        { "=A =B", "Weekly=J3 Daily=J4", "B1 B2 B3", "J1 J2 J3 J4" } },
    { "toPacket null,toPacket empty,TQGetSystemStorageClassConv null",
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
    void calls();
    void publications_data() { addRows(CHOICES); }
    void publications();
    void faults();
    void theRouterMayBeDeletedInsideAnyCall();
    void packets();
    void operations();
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
    QFile maps(str("/proc/self/maps"));
    QVERIFY(maps.open(QIODevice::ReadOnly));
    QSet<QString> loaded;
    for (const QByteArray &line : maps.readAll().split('\n')) {
        const QFileInfo file(QFile::decodeName(line.mid(line.indexOf('/'))));
        if (file.fileName().startsWith(str("libtq"))) {
            loaded += file.filePath();
        }
    }
    QCOMPARE(loaded,
        (QSet<QString> { QFileInfo(str(TQXML_LIBRARY)).canonicalFilePath(),
            QFileInfo(str(TQXML_SCRIPTED)).canonicalFilePath() }));
}

void tst_XMLCommServer::replies()
{
    const auto &row = currentRow<Request>();
    QCOMPARE(Bridge().ask(row.type, row.keys[0], row.keys[1], row.exclude), str(row.reply));
}

void tst_XMLCommServer::calls()
{
    for (int type = OUTPUTS; type <= JOBS; ++type) {
        QCOMPARE(Bridge(false).ask(type), str(type == JOBS ? "" : "none"));
        QCOMPARE(Bridge(false).ask(type, "5", "85"), str(type == JOBS ? "" : "none"));
    }
    QCOMPARE(takeCalls(), str("TQPacketFreeList 8"));  // books' owners, though there are none
}

void tst_XMLCommServer::publications()
{
    const auto &row = currentRow<Case>();
    script().jobs.clear();
    for (const QString &job : str(row.given).split(QLatin1Char(' '))) {
        const QStringList parts = job.split(QLatin1Char(','));
        script().jobs[1001].push_back({ { 1, 21 }, parts[0].toStdString(), parts[3].toInt(),
            parts[2].toStdString(), parts[1].toUInt() });
    }
    QCOMPARE(Bridge().ask(PUBLICATIONS), str(row.expected));
}

void tst_XMLCommServer::faults()
{
    for (const Fault &row : FAULTS) {
        for (const QString &fault : str(row.names).split(QLatin1Char(','))) {
            script().faults = { fault.toStdString() };
            for (int type = OUTPUTS; type <= JOBS; ++type) {
                QCOMPARE(fault + Bridge().ask(type), fault + str(row.replies[type - OUTPUTS]));
                cleanup();
            }
        }
    }
}

// As by an event loop that the server library runs. The listing ends without a reply, gives back
// all records (see cleanup()) and asks for nothing more.
void tst_XMLCommServer::theRouterMayBeDeletedInsideAnyCall()
{
    for (int type = OUTPUTS; type <= JOBS; ++type) {
        int calls = 0;
        QString reply = str("none");
        for (int last = 0; reply == str("none"); ++last) {
            script() = sample();
            Bridge bridge;
            calls = 0;
            script().onCall = [&] {
                const QString call = QString::fromStdString(script().calls.back());
                QVERIFY2(bridge.router || !call.startsWith(str("get")), qPrintable(call));
                // Lists are freed when the reply is queued: a router that dies then leaves it.
                if (!call.startsWith(str("TQPacketFree")) && calls++ == last) {
                    delete bridge.router;
                }
            };
            reply = bridge.ask(type);
            QCOMPARE(bridge.router.isNull(), reply == str("none"));
            cleanup();
        }
        QVERIFY(calls > 5);
    }
}

// Packets that are no requests: gone when control is back at the event loop, an empty one at once.
void tst_XMLCommServer::packets()
{
    TQCommServer server("");
    XMLCommServer bridge(&server);
    XMLPacketable item;
    XMLAction unknown;
    unknown.setType(77);
    QList<QPointer<XMLPacket>> sent { new XMLPacket, makePacket(1, -1, str("message")),
        new XMLPacket, new XMLPacket };
    sent[2]->append(unknown);
    QDomNode body = sent[3]->append(item).parentNode();  // an instruction by an action's name
    body.appendChild(body.ownerDocument().createProcessingInstruction(str("action"), str("x")));
    bridge.receive(nullptr);
    for (const QPointer<XMLPacket> &packet : sent) {
        bridge.receive(packet);
    }
    QVERIFY(bridge.getAgentType() == 0);
    QVERIFY(sent.count(nullptr) == 1);
    QVERIFY(!sent.first());
    runEvents();
    QVERIFY(sent.count(nullptr) == 4);
    QVERIFY(script().calls.empty());
}

// What an application calls itself. Without a router a reply goes nowhere.
void tst_XMLCommServer::operations()
{
    TQCommServer server("");
    const XMLCommServer bridge(&server);
    TQKEY_ELEMENT first { 5, 85 };
    TQKEY_ELEMENT second { 6, 85 };
    auto books = reinterpret_cast<TQLISTRECORD *>(bridge.getBooks({ &second, nullptr, &first }));
    QVERIFY(Record::of(books)->data.name == "B3");
    QVERIFY(script().records.size() == 3);
    TQPacketFreeList(&books, PACKETDATATYPE_BOOK);
    QVERIFY(!bridge.getBooks(QList<TQKEY_ELEMENT *>()));
    QVERIFY(!bridge.getTQJOBs({ nullptr, &first }));
    // The router is not needed to ask, and an event loop may end the bridge itself.
    auto own = std::make_unique<XMLCommServer>(&server);
    XMLRouter(&server, nullptr, "gone").add(own.get());
    script().onCall = [&own] { own.reset(); };
    books = reinterpret_cast<TQLISTRECORD *>(own->getBooks({ &first, &second }));
    QCOMPARE(script().records.size(), size_t(3));
    TQPacketFreeList(&books, PACKETDATATYPE_BOOK);
    XMLAction request;
    for (XMLAction *action : { &request, static_cast<XMLAction *>(nullptr) }) {
        bridge.sendOUTPUTs(1);
        bridge.sendBooks(1, action);
        bridge.sendTQJOBs(1, action);
        bridge.sendPublications(1, action);
    }
}

QTEST_GUILESS_MAIN(tst_XMLCommServer)
#include "tst_xmlcommserver.moc"

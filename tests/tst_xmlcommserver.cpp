#include "script.h"
#include "tqcommserver.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

namespace {

constexpr int OUTPUTS = XMLCommServer::REQUEST_OUTPUTS;
constexpr int PUBLICATIONS = XMLCommServer::REQUEST_PUBLICATIONS;
constexpr int BOOKS = XMLCommServer::REQUEST_BOOKS;
constexpr int JOBS = XMLCommServer::REQUEST_JOBS;

// Two outputs with two jobs each, two owners with three books.
Script sample()
{
    const Script::Table name = { { TQELEMENT_TEXT, 1, 0, 1, {} } };
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

// Every item of a reply: the item's name and, where that is another, the record's.
QString itemsOf(const XMLPacket &packet)
{
    std::list<QDomNode> nodes;
    packet.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
    QStringList items;
    for (const QDomNode &node : nodes) {
        const QString name = XMLPacketable::getName(node.toElement());
        const QString field =
            XMLPacketable::getTagAttribute(node.toElement(), 1, XMLPacketable::VALUE);
        items += field == name ? name : name + QLatin1Char('=') + field;
    }
    return items.join(QLatin1Char(' '));
}

enum Exclude { Unsaid, No, Yes };

struct Bridge
{
    explicit Bridge(bool connected = true)
        : agent(1, &log, false), server(""),
          router(new XMLRouter(connected ? &server : nullptr, nullptr, "hub"))
    {
        router->add(&agent);
    }
    ~Bridge() { delete router; }

    // Sends a request; the items of the reply, "none" without one.
    QString ask(int type, const QList<TQKEY_ELEMENT> &keys = {}, Exclude exclude = No)
    {
        XMLAction request(str("list"), type, agent.getAgentID());
        QList<TQKEY_ELEMENT *> list;
        for (const TQKEY_ELEMENT &key : keys) {
            list += const_cast<TQKEY_ELEMENT *>(&key);
        }
        request.setTQKEYList(list);
        if (exclude != Unsaid) {
            request.setExcludePublications(exclude == Yes);
        }
        XMLPacket *packet = agent.getXMLPacket(-1);
        packet->append(request);
        return ask(packet);
    }
    QString ask(XMLPacket *packet)
    {
        router->send(packet);
        runEvents();
        return agent.packets.isEmpty() ? str("none") : itemsOf(*agent.packets.last());
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
    QList<TQKEY_ELEMENT> keys;
    Exclude exclude;
    const char *reply;
};
const Request REQUESTS[] = {
    { "outputs", OUTPUTS, {}, Unsaid, "A B" },
    { "books", BOOKS, {}, Unsaid, "B1 B2 B3" },
    { "books of keys, in their order", BOOKS, { { 6, 85 }, { 9, 9 }, { 5, 85 } }, Unsaid,
        "B3 B1 B2" },
    { "no books: no reply", BOOKS, { { 9, 9 } }, Unsaid, "none" },
    { "jobs, unless they say otherwise without publications", JOBS, {}, Unsaid, "J1" },
    { "jobs of keys", JOBS, { { 2, 8 }, { 1, 8 } }, No, "J3 J4 J1 J2" },
    { "no jobs: an empty reply", JOBS, { { 9, 9 } }, Unsaid, "" },
    { "publications", PUBLICATIONS, {}, Unsaid, "Weekly=J3 Daily=J4" },
    { "publications of a key", PUBLICATIONS, { { 1, 8 } }, Yes, "Daily=J2" },
    { "no publications: no reply", PUBLICATIONS, { { 9, 9 } }, Unsaid, "none" },
    { "a type that is not known", 1004, {}, Unsaid, "none" },
};

// The replies to the four requests while a call fails.
QStringList repliesWith(const char *fault)
{
    QStringList replies;
    script().faults = { fault };
    for (const int type : { OUTPUTS, PUBLICATIONS, BOOKS, JOBS }) {
        replies += Bridge().ask(type);
    }
    return replies;
}

}  // namespace

class tst_XMLCommServer : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { script() = sample(); }
    void cleanup();

    void requestsAreAnswered_data() { addRows(REQUESTS); }
    void requestsAreAnswered();
    void theServerIsAskedByNameAscending();
    void withoutAConnectionNothingIsFound();
    void aPublicationIsItsFirstPage();
    void aFailedQueryGivesNothing();
    void whatIsNullReadsAsEmpty();
    void listsThatLinkBackAreCutOpen();
    void theRouterMayBeDeletedInsideAnyCall();
    void theFirstActionOfAPacketCounts();
    void whatIsNoRequestIsDeleted();
    void theBridgeMayBeAskedDirectly();
};

// Whatever a test did: nothing is left, nothing was freed twice.
void tst_XMLCommServer::cleanup()
{
    QCOMPARE(script().wrongFrees, 0);
    QCOMPARE(script().records.size(), size_t(0));
    QCOMPARE(script().items.size(), size_t(0));
    QCOMPARE(script().buffers.size(), size_t(0));
    QCOMPARE(script().untrimmedJobs, 0);
}

void tst_XMLCommServer::requestsAreAnswered()
{
    const auto &row = currentRow<Request>();
    QCOMPARE(Bridge().ask(row.type, row.keys, row.exclude), str(row.reply));
}

void tst_XMLCommServer::theServerIsAskedByNameAscending()
{
    Bridge().ask(JOBS, { { 1, 8 } });
    std::ostringstream jobs;
    jobs << "getJobqueue " << TQQUEUE_ALL << ' ' << SORTTYPE_NAME << ' ' << SORTORDER_ASCENDING
         << " 1001";
    QCOMPARE(std::count(script().calls.begin(), script().calls.end(), jobs.str()), 1);
}

void tst_XMLCommServer::withoutAConnectionNothingIsFound()
{
    for (const int type : { OUTPUTS, PUBLICATIONS, BOOKS, JOBS }) {
        QCOMPARE(Bridge(false).ask(type), str(type == JOBS ? "" : "none"));
    }
}

// The first of its jobs with the lowest page; publications come by their identifiers.
void tst_XMLCommServer::aPublicationIsItsFirstPage()
{
    script().jobs = { { 1001,
        { { { 1, 21 }, "J1", 2, "Weekly", 7 }, { { 2, 21 }, "J2", 1, "Weekly", 7 },
            { { 3, 21 }, "J3", 1, "Weekly", 7 }, { { 4, 21 }, "J4", 0, "", 1 },
            { { 5, 21 }, "J5", 0, "Yearly", 0x80000000 }, { { 6, 21 }, "J6", -1, "Daily", 0 },
            { { 7, 21 }, "J7", 0, "Daily", 0 } } } };
    QCOMPARE(Bridge().ask(PUBLICATIONS), str("Daily=J6 Weekly=J2 Yearly=J5"));
}

void tst_XMLCommServer::aFailedQueryGivesNothing()
{
    const QStringList whole = repliesWith("none");
    const QStringList nothing { str("none"), str("none"), str("none"), str("") };
    QCOMPARE(repliesWith("getDBList null"), nothing);
    QCOMPARE(repliesWith("getDBList error"), nothing);
    QCOMPARE(repliesWith("getBooks null").at(2), str("none"));
    QCOMPARE(repliesWith("getidfromtqkey null").at(1), str("none"));
    QCOMPARE(repliesWith("getPacketable null").at(0), str("none"));
    QCOMPARE(repliesWith("getBooks error"), whole);  // records count, also of a failed query
    QCOMPARE(repliesWith("getJobqueue error"), whole);
}

void tst_XMLCommServer::whatIsNullReadsAsEmpty()
{
    QCOMPARE(repliesWith("getJobqueue null name").last(), str("=J1 J2 =J3 J4"));
    QCOMPARE(repliesWith("getBooks null name").at(2), str("=B1 B2 =B3"));
    QCOMPARE(repliesWith("loadRecord null").first(), str("=A =B"));
    QCOMPARE(repliesWith("toPacket null"),
        QStringList(
            { str("A= B="), str("Weekly= Daily="), str("B1= B2= B3="), str("J1= J2= J3= J4=") }));
}

void tst_XMLCommServer::listsThatLinkBackAreCutOpen()
{
    const QStringList whole = repliesWith("none");
    for (const char *fault : { "getDBList cycle 0", "getDBList cycle 1", "getJobqueue cycle 0",
             "getJobqueue cycle 1", "getBooks cycle 0", "getBooks cycle 1" }) {
        QCOMPARE(repliesWith(fault), whole);
    }
}

// As by an event loop that the server library runs. The listing ends without a reply, gives back
// all records (see cleanup()) and asks for nothing more.
void tst_XMLCommServer::theRouterMayBeDeletedInsideAnyCall()
{
    for (const int type : { OUTPUTS, PUBLICATIONS, BOOKS, JOBS }) {
        bool isOver = true;
        for (int last = 0; isOver; ++last) {
            Bridge bridge;
            int calls = 0;
            script().onCall = [&] {
                const std::string &call = script().calls.back();
                if (!bridge.router) {
                    QVERIFY2(call.rfind("get", 0) != 0, call.c_str());
                }
                // Lists are freed when the reply is queued: a router that dies then leaves it.
                if (call.rfind("TQPacketFree", 0) != 0 && calls++ == last) {
                    delete bridge.router;
                }
            };
            const QString reply = bridge.ask(type);
            isOver = bridge.router.isNull();
            QCOMPARE(reply == str("none"), isOver);
            if (!isOver) {
                QVERIFY(last > 5);  // so many calls were tried
            }
            script().onCall = nullptr;
        }
    }
}

void tst_XMLCommServer::theFirstActionOfAPacketCounts()
{
    Bridge bridge;
    XMLPacket *packet = bridge.agent.getXMLPacket(-1);
    XMLAction request(str("list"), BOOKS, 1);
    packet->append(request);
    request.setType(OUTPUTS);
    packet->append(request);
    QCOMPARE(bridge.ask(packet), str("B1 B2 B3"));
    QCOMPARE(bridge.agent.packets.last()->getSourceAgentID(), -1);
}

// When control is back at the event loop, an empty packet at once.
void tst_XMLCommServer::whatIsNoRequestIsDeleted()
{
    TQCommServer server("");
    XMLCommServer bridge(&server);
    const QPointer<XMLPacket> empty = new XMLPacket;
    const QPointer<XMLPacket> message = makePacket(1, -1, str("message"));
    bridge.receive(nullptr);
    bridge.receive(empty);
    bridge.receive(message);
    QVERIFY(!empty);
    QVERIFY(message);
    runEvents();
    QVERIFY(!message);
    QVERIFY(script().calls.empty());
}

void tst_XMLCommServer::theBridgeMayBeAskedDirectly()
{
    TQCommServer server("");
    auto bridge = std::make_unique<XMLCommServer>(&server);
    TQKEY_ELEMENT first { 5, 85 };
    TQKEY_ELEMENT second { 6, 85 };
    XMLAction request(str("list"), BOOKS, 1);
    bridge->sendOUTPUTs(1);  // without a router a reply goes nowhere
    bridge->sendBooks(1, &request);
    bridge->sendTQJOBs(1, nullptr);
    bridge->sendPublications(1, nullptr);
    QVERIFY(!bridge->getBooks(QList<TQKEY_ELEMENT *>()));
    // The server library may run an event loop, which ends the bridge.
    script().onCall = [&bridge] { bridge.reset(); };
    TQBOOK *const books = bridge->getBooks({ &second, nullptr, &first });
    auto list = reinterpret_cast<TQLISTRECORD *>(books);
    QCOMPARE(Record::of(list)->data.name, std::string("B3"));
    QCOMPARE(script().records.size(), size_t(3));
    TQPacketFreeList(&list, PACKETDATATYPE_BOOK);
}

QTEST_GUILESS_MAIN(tst_XMLCommServer)
#include "tst_xmlcommserver.moc"

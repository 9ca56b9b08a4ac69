// One connection in each thread: threads that open, ask and close connections of their own get what
// one alone gets, and the application's message handler is left in place. ./dev test --tsan looks
// for data races in it.

#include "postgres.h"
#include "tqcommserver.h"
#include "tqitems.h"
#include "tqstore.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

#include <QEventLoop>
#include <QTimer>

#include <atomic>
#include <memory>
#include <thread>
#include <vector>

namespace {

constexpr int THREADS = 4;
constexpr int ROUNDS = 6;

std::atomic<int> failures { 0 };
std::atomic<int> warnings { 0 };

void check(bool holds, const QByteArray &promise)
{
    if (!holds) {
        ++failures;
        std::fprintf(stderr, "broken: %s\n", promise.constData());
    }
}

// Asks the bridge for all jobs, from an event loop of this thread.
void askForJobs(XMLRouter &router, RecordingAgent &agent)
{
    QEventLoop loop;
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    agent.onReceive = [&loop](XMLPacket *) { loop.quit(); };
    XMLAction request(str("list"), XMLCommServer::REQUEST_JOBS, agent.getAgentID());
    XMLPacket *packet = agent.getXMLPacket(router.getXMLCommServerID());
    packet->appendV(request);
    router.send(packet);
    loop.exec();
}

// Packet text of all jobs, after a way through XML.
QByteArrayList jobs(TQCommServer &server)
{
    QStringList log;
    RecordingAgent agent(1, &log);
    XMLRouter router(&server, nullptr, "thread");
    router.add(&agent);
    askForJobs(router, agent);
    QByteArrayList texts;
    for (const XMLPacket *packet : std::as_const(agent.packets)) {
        std::list<QDomNode> nodes;
        packet->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
        for (const QDomNode &node : nodes) {
            XMLPacketable item;
            item.setNode(node.toElement());
            texts += packetOf(*std::unique_ptr<TQPacketable>(item.getData()));
        }
    }
    return texts;
}

// Names of all books of one owner.
QByteArrayList books(TQCommServer &server)
{
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    const TQKEY_ELEMENT owner { 0x48000000, PACKETDATATYPE_BOOKOWNER };  // the first
    TQBOOK *first = server.getBooks(command, message, SORTTYPE_NAME, SORTORDER_ASCENDING, owner);
    auto list = reinterpret_cast<TQLISTRECORD *>(first);
    QByteArrayList names;
    for (TQLISTRECORD *record = list; record; record = record->next) {
        names += reinterpret_cast<TQBOOK *>(record)->name;
    }
    TQPacketFreeList(&list, PACKETDATATYPE_BOOK);
    return names;
}

// Packet text of a profile with its bytes.
QByteArray profile(TQCommServer &server)
{
    const char *connected = server.getConnectedHostname();
    std::string host = connected ? connected : "";
    ICCPROFILEDATA_CC item;
    item.setName("sRGB");
    item.load(host, static_cast<unsigned short>(server.getConnectedPortnum()));
    return packetOf(item);
}

// What a connection of the thread's own answers.
struct Answers
{
    explicit Answers(const QByteArray &url)
    {
        TQCommServer server(url.constData());
        allJobs = jobs(server);
        someBooks = books(server);
        oneProfile = profile(server);
        error = server.errorText();
    }
    QByteArrayList allJobs;
    QByteArrayList someBooks;
    QByteArray oneProfile;
    QByteArray error;
};

struct Store
{
    QByteArray url;
    Answers alone;  // what it answers while nothing else runs
};

void askAll(const std::vector<Store> &stores, int thread)
{
    for (int round = 0; round < ROUNDS; ++round) {
        const Store &store = stores[size_t(thread + round) % stores.size()];
        const Answers answers(store.url);
        const QByteArray where =
            " of " + store.url + " are the same in thread " + QByteArray::number(thread);
        check(answers.allJobs == store.alone.allJobs, "jobs" + where);
        check(answers.someBooks == store.alone.someBooks, "books" + where);
        check(answers.oneProfile == store.alone.oneProfile, "bytes of a profile" + where);
        check(answers.error.isEmpty(), "no error " + answers.error);
    }
}

// Stores of all kinds that this machine has a database for.
std::vector<Store> sampleStores(const QTemporaryDir &folder, PostgresServer &postgres)
{
    QByteArrayList urls { "sqlite:" + folder.filePath(str("store.db")).toUtf8() };
    if (postgres.isInstalled()) {
        check(postgres.start(), "PostgreSQL starts");
        urls += postgres.url("threads");
    }
    std::string error;
    for (const QByteArray &url : urls) {
        check(TQCreateSampleStore(url.constData(), {}, error), "a sample store " + url);
    }
    urls += "sqlite::memory:";
    std::vector<Store> stores;
    for (const QByteArray &url : urls) {
        stores.push_back({ url, Answers(url) });
        const Answers &alone = stores.back().alone;
        check(alone.allJobs.size() > 200,
            QByteArray::number(alone.allJobs.size()) + " jobs of " + url);
        check(alone.someBooks.size() > 2, "books of " + url);
        check(alone.oneProfile.size() > 1000, "bytes of a profile of " + url);
    }
    return stores;
}

}  // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
        ++warnings;
        std::fprintf(stderr, "message: %s\n", qPrintable(text));
    });
    const QTemporaryDir folder;
    PostgresServer postgres;
    const std::vector<Store> stores = sampleStores(folder, postgres);

    std::vector<std::thread> threads;
    for (int i = 0; i < THREADS; ++i) {
        threads.emplace_back(askAll, std::cref(stores), i);
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    check(warnings == 0, "the library prints nothing");
    qWarning("the application's own");
    check(warnings == 1, "the application's handler hears its warning");
    return failures == 0 ? 0 : 1;
}

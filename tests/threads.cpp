// One connection in each thread: threads that open, ask and close connections of their own get what
// one alone gets, and the application's message handler is left in place. ./dev test --tsan looks
// for data races in it.

#include "stores.h"
#include "xmlaction.h"
#include "xmlcommserver.h"
#include "xmlpacketable.h"
#include "xmlrouter.h"

#include <QEventLoop>
#include <QTimer>

#include <atomic>
#include <thread>
#include <vector>

namespace {

constexpr int THREADS = 4;
constexpr int ROUNDS = 6;

// Of the sample store: the first of each kind.
constexpr int OUTPUT = 0x40000000;
constexpr unsigned OWNER = 0x48000000;
constexpr unsigned PROFILE = 0x58000000;

std::atomic<int> failures { 0 };
std::atomic<int> warnings { 0 };

void check(bool holds, const QByteArray &promise)
{
    if (!holds) {
        ++failures;
        std::fprintf(stderr, "broken: %s\n", promise.constData());
    }
}

// Packet text of all jobs that the bridge sends to an agent in an event loop of this thread.
QByteArrayList jobsByBridge(TQCommServer &server)
{
    QStringList log;
    QEventLoop loop;
    QTimer::singleShot(60000, &loop, &QEventLoop::quit);
    RecordingAgent agent(1, &log);
    agent.onReceive = [&loop](XMLPacket *) { loop.quit(); };
    XMLRouter router(&server, nullptr, "thread");
    router.add(&agent);
    XMLAction request(str("list"), XMLCommServer::REQUEST_JOBS, agent.getAgentID());
    XMLPacket *packet = agent.getXMLPacket(router.getXMLCommServerID());
    packet->appendV(request);
    router.send(packet);
    loop.exec();
    QByteArrayList texts;
    std::list<QDomNode> nodes;
    if (!agent.packets.isEmpty()) {
        agent.packets.at(0)->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
    }
    for (const QDomNode &node : nodes) {
        XMLPacketable item;
        item.setNode(node.toElement());
        texts += packetOf(*std::unique_ptr<TQPacketable>(item.getData()));
    }
    return texts;
}

// What a new connection answers: jobs, books, a profile and its last error.
QByteArrayList answersOf(const QByteArray &url)
{
    Client client(url);
    const QByteArrayList answers = jobsByBridge(client.server) +
        client.booksOf({ OWNER, PACKETDATATYPE_BOOKOWNER }) + client.jobsOf(OUTPUT);
    return answers + QByteArrayList { client.profile(PROFILE), client.error() };
}

using Answers = std::vector<std::pair<QByteArray, QByteArrayList>>;  // by URL

void askAll(const Answers &stores, int thread)
{
    for (int round = 0; round < ROUNDS; ++round) {
        const auto &[url, alone] = stores[size_t(thread + round) % stores.size()];
        check(answersOf(url) == alone,
            "a thread gets the same from " + url + " as one that is alone");
    }
}

}  // namespace

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    Stores samples;
    check(samples.start(), "PostgreSQL starts");
    qInstallMessageHandler([](QtMsgType, const QMessageLogContext &, const QString &text) {
        ++warnings;
        std::fprintf(stderr, "message: %s\n", qPrintable(text));
    });
    QByteArrayList urls { samples.sample("threads"), "sqlite::memory:" };
    if (PostgresServer::isInstalled()) {
        urls += samples.sample("threads", true);
    }
    Answers stores;
    for (const QByteArray &url : urls) {
        stores.emplace_back(url, answersOf(url));
        check(stores.back().second.size() > 300, "all jobs and books of " + url);
        check(stores.back().second.constLast().isEmpty(), "no error of " + url);
    }
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

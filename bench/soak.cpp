#include "tqcommserver.h"
#include "xmlaction.h"
#include "xmlagent.h"
#include "xmlcommserver.h"
#include "xmlmessage.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QElapsedTimer>
#include <QVector>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iterator>
#include <map>
#include <utility>

#include <malloc.h>
#include <unistd.h>

// Months of service in minutes: packets, requests and a long queue. Checks that memory stays flat,
// that order is kept and that nothing is left.

namespace {

constexpr qint64 MIB = 1024 * 1024;
constexpr int TENTHS = 10;
constexpr int BATCH = 500;  // packets between two rounds of the event loop
constexpr int OWN_ID = 1;

// Resident memory may grow by two per cent and this much after the first tenth.
constexpr qint64 MEMORY_SLACK = 4 * MIB;

bool allHeld = true;

void require(bool holds, const char *property)
{
    if (!holds) {
        std::fprintf(stderr, "does not hold: %s\n", property);
        allHeld = false;
    }
}

qint64 residentBytes()
{
    std::ifstream statm("/proc/self/statm");
    qint64 all = 0;
    qint64 resident = 0;
    statm >> all >> resident;
    return resident * sysconf(_SC_PAGESIZE);
}

// Resident memory at the end of each tenth of a job.
class Memory
{
public:
    void sample()
    {
        malloc_trim(0);
        m_samples.append(residentBytes());
    }
    qint64 first() const { return m_samples.isEmpty() ? 0 : m_samples.first(); }
    qint64 most() const
    {
        return m_samples.isEmpty() ? 0 : *std::max_element(m_samples.begin(), m_samples.end());
    }
    bool isFlat() const { return most() <= first() + first() / 50 + MEMORY_SLACK; }

private:
    QVector<qint64> m_samples;
};

void report(const char *job, qint64 count, qint64 milliseconds, const Memory &memory)
{
    std::printf("%-10s %10lld %10.1f %12.0f %12.1f %12.1f\n", job, static_cast<long long>(count),
        double(milliseconds) / 1000,
        double(count) * 1000 / double(std::max<qint64>(milliseconds, 1)),
        double(memory.first()) / MIB, double(memory.most()) / MIB);
    std::fflush(stdout);
}

// A packet that is counted as long as it lives.
class CountedPacket : public XMLPacket
{
public:
    CountedPacket() { ++living; }
    ~CountedPacket() override { --living; }
    using XMLPacket::operator=;
    static qint64 living;
};
qint64 CountedPacket::living = 0;

// Sends itself numbered packets, and checks that they come back in order.
class Counter : public XMLAgent
{
public:
    Counter() : XMLAgent(1) {}

    void sendOne()
    {
        auto *const packet = new CountedPacket;
        packet->setSourceAgentID(OWN_ID);
        packet->setDestinationAgentID(getAgentID());
        XMLMessage message(QString::number(m_sent++));
        packet->appendV(message);
        router->send(packet);
    }
    void receive(XMLPacket *packet) override
    {
        std::list<QDomNode> nodes;
        packet->getNodesOfType(XMLObject::XMLOBJECT_MSG, nodes);
        XMLMessage message;
        message.setNode(nodes.empty() ? QDomElement() : nodes.front().toElement());
        m_inOrder = m_inOrder && message.getMessage() == QString::number(m_received);
        if (++m_received % 2 == 0) {
            packet->deleteLater();
        } else {
            delete packet;
        }
    }
    bool isComplete() const { return m_inOrder && m_received == m_sent; }

private:
    qint64 m_sent = 0;
    qint64 m_received = 0;
    bool m_inOrder = true;
};

void runEvents()
{
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

// Calls work with the numbers from 0 on, and samples memory after each tenth of them.
template<typename Work>
Memory inTenths(qint64 count, Work work)
{
    Memory memory;
    qint64 done = 0;
    for (qint64 tenth = 1; tenth <= TENTHS; ++tenth) {
        for (; done < count * tenth / TENTHS; ++done) {
            work(done);
        }
        runEvents();
        memory.sample();
    }
    return memory;
}

void soakPackets(qint64 count)
{
    Counter counter;
    XMLRouter router(nullptr, nullptr, "soak");
    router.add(&counter);
    QElapsedTimer timer;
    timer.start();
    const Memory memory = inTenths(count, [&counter](qint64 number) {
        counter.sendOne();
        if (number % BATCH == BATCH - 1) {
            runEvents();
        }
    });
    report("packets", count, timer.elapsed(), memory);
    require(memory.isFlat(), "packets leave no memory behind");
    require(counter.isComplete(), "all packets are delivered in order");
    require(CountedPacket::living == 0, "no packet is left");
}

void soakQueue(qint64 count)
{
    // Delivery builds documents, and so takes more memory than waiting. From the second round on,
    // each has to do with the memory of the one before.
    constexpr int ROUNDS = 3;
    Memory memory;
    QElapsedTimer timer;
    timer.start();
    for (int round = 0; round < ROUNDS; ++round) {
        Counter counter;
        XMLRouter router(nullptr, nullptr, "soak");
        router.add(&counter);
        for (qint64 i = 0; i < count; ++i) {
            counter.sendOne();
        }
        require(CountedPacket::living == count, "all packets are waiting");
        if (round > 0) {
            memory.sample();
        }
        runEvents();
        require(counter.isComplete(), "the whole queue is delivered in order");
        require(CountedPacket::living == 0, "nothing of the queue is left");
    }
    report("queued", count * ROUNDS, timer.elapsed(), memory);
    require(memory.isFlat(), "the queue gives memory back");
}

// Asks the bridge, and checks that each kind of request is always answered alike.
class Requester : public XMLAgent
{
public:
    Requester() : XMLAgent(1) {}

    void ask(int request)
    {
        auto *const packet = new CountedPacket;
        packet->setSourceAgentID(getAgentID());
        packet->setDestinationAgentID(router->getXMLCommServerID());
        XMLAction action(QStringLiteral("soak"), request, 0);
        packet->appendV(action);
        m_asked = request;
        router->send(packet);
        router->send();
        ++m_sent;
    }
    void receive(XMLPacket *packet) override
    {
        std::list<QDomNode> nodes;
        const int items = packet->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, nodes);
        const auto first = m_items.emplace(m_asked, items).first;
        m_isAlike = m_isAlike && items > 0 && first->second == items;
        ++m_received;
        delete packet;
    }
    bool isComplete() const { return m_isAlike && m_received == m_sent; }

private:
    std::map<int, int> m_items;  // in the first reply, by request
    int m_asked = 0;
    qint64 m_sent = 0;
    qint64 m_received = 0;
    bool m_isAlike = true;
};

void soakRequests(qint64 count)
{
    constexpr int REQUESTS[] = { XMLCommServer::REQUEST_OUTPUTS,
        XMLCommServer::REQUEST_PUBLICATIONS, XMLCommServer::REQUEST_BOOKS,
        XMLCommServer::REQUEST_JOBS };
    TQCommServer server("sqlite::memory:");
    Requester requester;
    XMLRouter router(&server, nullptr, "soak");
    router.add(&requester);
    QElapsedTimer timer;
    timer.start();
    const Memory memory = inTenths(count, [&](qint64) {
        for (const int request : REQUESTS) {
            requester.ask(request);
        }
        runEvents();
    });
    report("requests", count * qint64(std::size(REQUESTS)), timer.elapsed(), memory);
    require(memory.isFlat(), "requests leave no memory behind");
    require(requester.isComplete(), "each request has its reply");
    require(CountedPacket::living == 0, "no request is left");
}

struct Job
{
    const char *option;
    const char *help;
    const char *count;
    void (*run)(qint64 count);
};
constexpr Job JOBS[] = {
    { "packets", "Packets that are sent and delivered.", "10000000", soakPackets },
    { "requests", "Requests of each type.", "20000", soakRequests },
    { "queued", "Packets that wait at once.", "1000000", soakQueue },
};

}  // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QCommandLineParser parser;
    parser.addHelpOption();
    for (const Job &job : JOBS) {
        parser.addOption({ QString::fromLatin1(job.option), QString::fromLatin1(job.help),
            QStringLiteral("N"), QString::fromLatin1(job.count) });
    }
    parser.process(application);

    std::printf("%-10s %10s %10s %12s %12s %12s\n", "", "count", "seconds", "per second",
        "MiB at first", "MiB at most");
    for (const Job &job : JOBS) {
        bool isNumber = false;
        const qint64 count = parser.value(QString::fromLatin1(job.option)).toLongLong(&isNumber);
        if (!isNumber || count < 0) {
            std::fprintf(stderr, "--%s needs a number\n", job.option);
            return 2;
        }
        if (count > 0) {
            job.run(count);
        }
    }
    return allHeld ? 0 : 1;
}

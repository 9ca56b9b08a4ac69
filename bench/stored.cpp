// usage: tqxml_stored STORE records ROUNDS | again
//
// What a program costs that lists a store in one process again and again.
//
// records: reads all jobs from the store ROUNDS times, an output at a time, without the bridge.
// again: prints how many nanoseconds a listing of all jobs through the bridge takes, of one process
// that has listed nothing before, and of the same process after it has listed all outputs, looked
// at their nodes, and freed them.

#include "xmlaction.h"
#include "xmlagent.h"
#include "xmlcommserver.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <ctime>
#include <limits>
#include <list>
#include <memory>

namespace {

constexpr int TIMES = 7;

void readRecords(TQCommServer &server)
{
    std::vector<TQNAMEDKEY> outputs;
    TQListKeys(server, PACKETDATATYPE_OUTPUT, outputs);
    for (const TQNAMEDKEY &output : outputs) {
        TQLPCOMMANDS command;
        ZQ_MESSAGE_ID message;
        auto *jobs = reinterpret_cast<TQLISTRECORD *>(server.getJobqueue(command, message,
            TQQUEUE_ALL, SORTTYPE_NAME, SORTORDER_ASCENDING, server.getidfromtqkey(output.key)));
        TQPacketFreeList(&jobs, PACKETDATATYPE_JOB);
    }
}

// Looks at the nodes of each reply, and deletes it.
class Reader : public XMLAgent
{
public:
    explicit Reader(XMLRouter &hub) : XMLAgent(1), m_hub(hub) { m_hub.add(this); }
    ~Reader() override { m_hub.remove(this); }
    Reader(const Reader &) = delete;
    Reader &operator=(const Reader &) = delete;

    void list(XMLCommServer::REQUEST request)
    {
        XMLPacket *packet = getXMLPacket(m_hub.getXMLCommServerID());
        XMLAction action(QStringLiteral("list"), request, getAgentID());
        packet->appendV(action);
        m_hub.send(packet);
        QCoreApplication::exec();
    }

    void receive(XMLPacket *packet) override
    {
        const std::unique_ptr<XMLPacket> reply(packet);
        std::list<QDomNode> items;
        reply->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, items);
        QCoreApplication::quit();
    }

private:
    XMLRouter &m_hub;
};

long long processTime()
{
    timespec time = {};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return time.tv_sec * 1000000000LL + time.tv_nsec;
}

long long bestTime(Reader &reader)
{
    long long best = std::numeric_limits<long long>::max();
    for (int i = 0; i < TIMES; ++i) {
        const long long started = processTime();
        reader.list(XMLCommServer::REQUEST_JOBS);
        best = std::min(best, processTime() - started);
    }
    return best;
}

void listAgain(TQCommServer &server)
{
    XMLRouter router(&server, nullptr, nullptr);
    Reader reader(router);
    const long long first = bestTime(reader);
    reader.list(XMLCommServer::REQUEST_OUTPUTS);
    std::printf("%lld %lld\n", first, bestTime(reader));
}

}  // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    if (argc < 3) {
        return 2;
    }
    TQCommServer server((std::string("sqlite:") + argv[1]).c_str());
    const int rounds = argc > 3 ? std::atoi(argv[3]) : 0;
    for (int i = 0; i < rounds; ++i) {
        readRecords(server);
    }
    if (std::strcmp(argv[2], "again") == 0) {
        listAgain(server);
    }
    return server.failures() == 0 ? 0 : 1;
}

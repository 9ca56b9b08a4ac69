// Sends as many empty packets through a router as its argument says, and delivers them.

#include "xmlagent.h"
#include "xmlpacket.h"
#include "xmlrouter.h"

#include <QCoreApplication>

#include <cstdlib>
#include <memory>

namespace {

// Leaves what it receives to whoever made it.
class Sink : public XMLAgent
{
public:
    Sink() : XMLAgent(1) {}
    void receive(XMLPacket *) override {}
};

}  // namespace

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    XMLRouter router(nullptr, nullptr, nullptr);
    Sink sinks[2];
    std::unique_ptr<XMLPacket> packets[2];
    for (int i = 0; i < 2; ++i) {
        router.add(&sinks[i]);
        packets[i].reset(sinks[0].getXMLPacket(sinks[i].getAgentID()));
    }
    const int pairs = argc > 1 ? std::atoi(argv[1]) / 2 : 0;
    for (int i = 0; i < pairs; ++i) {
        router.send(packets[0].get());
        router.send(packets[1].get());
        router.send();
    }
    return 0;
}

// A broker that creates an agent when it is first needed.

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <xmlagent.h>
#include <xmlagentbroker.h>
#include <xmlpacket.h>
#include <xmlrouter.h>

constexpr int PREVIEWER = 7;  // this application's type number for agents that show pages

class Previewer : public XMLAgent
{
public:
    Previewer() : XMLAgent(PREVIEWER) {}
    void receive(XMLPacket *packet) override
    {
        const std::unique_ptr<XMLPacket> order(packet);
        std::printf("agent %d shows page 12\n", getAgentID());
        QCoreApplication::quit();
    }
};

class Broker : public XMLAgentBroker
{
public:
    int supplyAgent(int agentType) override
    {
        if (agentType != PREVIEWER) {
            return 0;  // this broker knows no other type
        }
        std::puts("making a previewer");
        m_previewer = std::make_unique<Previewer>();
        router->add(m_previewer.get());
        return m_previewer->getAgentID();
    }

private:
    std::unique_ptr<Previewer> m_previewer;  // deleted with the broker
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    XMLRouter router(nullptr, nullptr, "router");  // no server connection
    router.setAgentBroker(new Broker);  // the router owns it now
    const int previewer = router.supplyAgentOfType(PREVIEWER);
    std::printf("asked again: %s\n",
        router.supplyAgentOfType(PREVIEWER) == previewer ? "the same" : "another");
    auto *packet = new XMLPacket;
    packet->setSourceAgentID(previewer);
    packet->setDestinationAgentID(previewer);
    router.send(packet);
    return application.exec();
}

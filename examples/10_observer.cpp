// An observer that prints a line for each packet.

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <xmlagent.h>
#include <xmlmessage.h>
#include <xmlpacket.h>
#include <xmlrouter.h>
#include <xmlrouterobserver.h>

class PacketPrinter : public XMLRouterObserver
{
public:
    void packetSent(const XMLPacket &packet) override { print("sent", packet); }
    void packetDropped(const XMLPacket &packet, DROP reason) override
    {
        print(reason == DROP_EQUALS_LAST ? "dropped, like the last one" : "dropped", packet);
    }
    void packetDelivered(const XMLPacket &packet, const XMLAgent &) override
    {
        print("delivered", packet);
    }
    void packetLost(const XMLPacket &packet) override { print("lost", packet); }

private:
    static void print(const char *what, const XMLPacket &packet)
    {
        std::printf(
            "%d -> %d: %s\n", packet.getSourceAgentID(), packet.getDestinationAgentID(), what);
    }
};

class Press : public XMLAgent
{
public:
    Press() : XMLAgent(1) {}
    void receive(XMLPacket *packet) override { delete packet; }
    void say(int agentID, const char *text)
    {
        XMLMessage message(QString::fromUtf8(text));
        XMLPacket *packet = getXMLPacket(agentID);
        packet->appendV(message);
        router->send(packet);
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    PacketPrinter printer;
    XMLRouter router(nullptr, nullptr, "router");  // no server connection
    router.setObserver(&printer);  // not owned; it outlives the router here
    Press first;
    Press second;
    router.add(&first);
    router.add(&second);
    first.say(second.getAgentID(), "plate 12 is ready");
    first.say(second.getAgentID(), "plate 12 is ready");
    second.say(99, "is anybody there?");
    router.send();
    router.remove(&second);
    router.remove(&first);
    return 0;
}

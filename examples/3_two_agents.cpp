// Two agents: a planner asks a press for its ink level, and the press answers.

#include <QCoreApplication>
#include <memory>
#include <xmlaction.h>
#include <xmlagent.h>
#include <xmlmessage.h>
#include <xmlpacket.h>
#include <xmlrouter.h>

constexpr int PRESS = 1, PLANNER = 2;  // this application's agent types
constexpr int INK_LEVEL = 2000;  // a request type; the bridge has those of XMLCommServer

class Press : public XMLAgent
{
public:
    Press() : XMLAgent(PRESS) {}
    void receive(XMLPacket *packet) override
    {
        const std::unique_ptr<XMLPacket> request(packet);
        std::list<QDomNode> actions;
        request->getNodesOfType(XMLObject::XMLOBJECT_ACTION, actions);
        XMLAction action;
        action.setNode(actions.empty() ? QDomElement() : actions.front().toElement());
        if (action.getType() == INK_LEVEL) {
            XMLPacket *answer = getXMLPacket(request->getSourceAgentID());
            XMLMessage level(action.getName() + QStringLiteral(": 63 %"));
            answer->appendV(level);
            router->send(answer);
        }
    }
};

class Planner : public XMLAgent
{
public:
    Planner() : XMLAgent(PLANNER) {}
    void receive(XMLPacket *packet) override
    {
        packet->print();
        delete packet;
    }
};

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    Press press;
    Planner planner;
    XMLRouter router(nullptr, nullptr, "router");  // declared last: is deleted before its agents
    router.add(&press);
    router.add(&planner);
    XMLAction question(QStringLiteral("Cyan"), INK_LEVEL, planner.getAgentID());
    XMLPacket *packet = planner.getXMLPacket(press.getAgentID());
    packet->appendV(question);
    router.send(packet);
    router.send();  // delivers all packets now, the answer too; normally the event loop does this
    return 0;
}

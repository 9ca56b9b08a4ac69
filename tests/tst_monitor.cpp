#include "packetfile.h"
#include "packetlog.h"
#include "packetmodel.h"
#include "util.h"
#include "xmlaction.h"
#include "xmlmonitor.h"
#include "xmlrouter.h"
#include "xmlview.h"

#include <QtWidgets>

using namespace TQXmlInternal;

namespace {

// Replies to each action with a message.
class Answerer : public XMLAgent
{
public:
    Answerer() : XMLAgent(9) {}
    void receive(XMLPacket *packet) override
    {
        const std::unique_ptr<XMLPacket> received(packet);
        if (packet->hasNodesOfType(XMLObject::XMLOBJECT_ACTION)) {
            XMLPacket *reply = getXMLPacket(packet->getSourceAgentID());
            XMLMessage message(str("ready"));
            reply->append(message);
            router->send(reply);
        }
    }
};

// A router with the agents 1, which asks, and 2, which answers.
struct Site
{
    Site()
    {
        for (Answerer &agent : agents) {
            router.add(&agent);
        }
    }
    ~Site()
    {
        for (Answerer &agent : agents) {
            router.remove(&agent);
        }
    }
    void ask(const char *name, int destination = 2)
    {
        XMLAction action(str(name), 1, 1);
        XMLPacket *packet = agents[0].getXMLPacket(destination);
        packet->append(action);
        router.send(packet);
    }
    void say(int source, int destination, const char *text)
    {
        router.send(makePacket(source, destination, str(text)));
    }

    XMLRouter router { nullptr, nullptr, "site" };
    Answerer agents[2];
};

// The model's rows, without times.
QStringList rowsOf(const QAbstractItemModel &model)
{
    QStringList rows;
    for (int y = 0; y < model.rowCount(); ++y) {
        QStringList row;
        for (int x = PacketModel::From; x < PacketModel::ColumnCount; ++x) {
            row += model.index(y, x).data().toString();
        }
        static const QRegularExpression time(str("[0-9.,]+ ms"));
        rows += row.join(str(" | ")).replace(time, str("a while"));
    }
    return rows;
}

}  // namespace

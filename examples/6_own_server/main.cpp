// A program over whatever server library is there: what a shop has, by way of the server bridge,
// and one job with all that it refers to.

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <tqcommserver.h>
#include <tqitems.h>
#include <xmlaction.h>
#include <xmlagent.h>
#include <xmlcommserver.h>
#include <xmlpacket.h>
#include <xmlpacketable.h>
#include <xmlrouter.h>
#include <xpkreference.h>

class Lister : public XMLAgent
{
public:
    Lister() : XMLAgent(1) {}

    void ask(XMLCommServer::REQUEST what)
    {
        XMLAction request(QStringLiteral("list"), what, getAgentID());
        XMLPacket *packet = getXMLPacket(router->getXMLCommServerID());
        packet->appendV(request);
        router->send(packet);
    }

    void askForEverything()
    {
        ask(XMLCommServer::REQUEST_OUTPUTS);
        ask(XMLCommServer::REQUEST_BOOKS);
        ask(XMLCommServer::REQUEST_JOBS);
        ask(XMLCommServer::REQUEST_PUBLICATIONS);
        router->send(getXMLPacket(getAgentID()));  // arrives when the bridge is done
    }

    void receive(XMLPacket *packet) override
    {
        const std::unique_ptr<XMLPacket> received(packet);
        if (received->getSourceAgentID() == getAgentID()) {
            QCoreApplication::quit();  // after this delivery, which the replies are part of
        }
        std::list<QDomNode> items;
        received->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, items);
        for (const QDomNode &item : items) {
            std::puts(qPrintable(XMLPacketable::getName(item.toElement())));
        }
    }
};

// Prints the items that a job refers to. Their text is there, the bytes of a profile, too.
void showJob(TQCommServer &server, const TQKEY_ELEMENT &key)
{
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    const std::unique_ptr<ArchiveNode> node(
        server.getArchiveNode(command, message, PACKETDATATYPE_JOB, key));
    const std::unique_ptr<XMLPacketable> job(XMLPacketable::fromArchiveNode(server, node.get()));
    QList<XPKReference *> references;
    if (job) {
        std::printf("%s refers to\n", qPrintable(job->getName()));
        job->getXPKReferences(references);
    }
    for (const XPKReference *reference : references) {
        const QString size = XMLPacketable::getTagAttribute(
            reference->packetable->getNodeConst(), 2, XMLPacketable::SIZE);
        std::printf("  %s", qPrintable(reference->packetable->getName()));
        std::puts(size.isNull() ? "" : qPrintable(QStringLiteral(", bytes: 0x") + size));
    }
    qDeleteAll(references);
}

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    TQCommServer server(argc > 1 ? argv[1] : nullptr);
    const unsigned int failures = server.failures();
    XMLRouter router(&server, nullptr, "router");
    Lister lister;
    router.add(&lister);
    lister.askForEverything();
    application.exec();
    router.remove(&lister);
    showJob(server, { 1, PACKETDATATYPE_JOB });
    if (server.failures() != failures) {
        std::fprintf(stderr, "This may not be all: %s\n", server.errorText());
        return 1;
    }
    return 0;
}

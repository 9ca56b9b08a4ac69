// An agent that asks the server bridge for all books and prints their names.

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <tqcommserver.h>
#include <xmlaction.h>
#include <xmlagent.h>
#include <xmlcommserver.h>
#include <xmlpacket.h>
#include <xmlpacketable.h>
#include <xmlrouter.h>

class BookReader : public XMLAgent
{
public:
    BookReader() : XMLAgent(1) {}  // this application's type number for readers

    void askForBooks()
    {
        XMLAction request(QStringLiteral("list"), XMLCommServer::REQUEST_BOOKS, getAgentID());
        XMLPacket *packet = getXMLPacket(router->getXMLCommServerID());
        packet->appendV(request);
        router->send(packet);  // the router owns it now
        router->send(getXMLPacket(getAgentID()));  // arrives once the bridge is done
    }

    void receive(XMLPacket *packet) override
    {
        const std::unique_ptr<XMLPacket> received(packet);  // receivers own packets
        if (received->getSourceAgentID() == getAgentID()) {
            QCoreApplication::quit();  // the reply is already queued and still delivered
        }
        std::list<QDomNode> books;
        received->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, books);
        for (const QDomNode &book : books) {
            std::puts(qPrintable(XMLPacketable::getName(book.toElement())));
        }
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    TQCommServer server("sqlite::memory:");  // the sample content
    XMLRouter router(&server, nullptr, "router");
    BookReader reader;
    router.add(&reader);
    const unsigned int failures = server.failures();
    reader.askForBooks();
    application.exec();
    router.remove(&reader);
    if (server.failures() != failures) {  // a query failed, the list may be short
        std::fprintf(stderr, "There may be more books: %s\n", server.errorText());
        return 1;
    }
    return 0;
}

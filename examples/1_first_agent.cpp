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
    BookReader() : XMLAgent(1) {}  // 1 is this application's number for readers

    void askForBooks()
    {
        XMLAction request(QStringLiteral("list"), XMLCommServer::REQUEST_BOOKS, getAgentID());
        XMLPacket *packet = getXMLPacket(router->getXMLCommServerID());
        packet->appendV(request);
        router->send(packet);  // the router's from here on
    }

    void receive(XMLPacket *packet) override
    {
        const std::unique_ptr<XMLPacket> reply(packet);  // ours from here on
        std::list<QDomNode> books;
        reply->getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, books);
        for (const QDomNode &book : books) {
            std::puts(qPrintable(XMLPacketable::getName(book.toElement())));
        }
        QCoreApplication::quit();
    }
};

int main(int argc, char *argv[])
{
    QCoreApplication application(argc, argv);
    TQCommServer server("sqlite::memory:");  // the sample content
    XMLRouter router(&server, nullptr, "router");
    BookReader reader;
    router.add(&reader);
    reader.askForBooks();
    const int result = application.exec();
    router.remove(&reader);
    return result;
}

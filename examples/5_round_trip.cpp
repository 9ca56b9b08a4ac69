// Converts a server item to XML and back.

#include <QCoreApplication>
#include <cstdio>
#include <cstring>
#include <memory>
#include <string>
#include <tqpacketable.h>
#include <xmlpacketable.h>

std::string packetText(const TQPacketable &item)
{
    unsigned int length = 0;
    char *text = item.toPacket(length);
    const std::string copy(text ? text : "", length);
    TQ_free(text);
    return copy;
}

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    char text[] = "SI 56\n1 Effi Briest\n4 163\n7 2 129 198\nTI 0\n";

    const std::unique_ptr<TQPacketable> book(PacketableUtil::getPacketable(PACKETDATATYPE_BOOK));
    if (!book || !book->fromPacket(text, unsigned(std::strlen(text)), false, true)) {
        return 1;
    }
    book->setName("Effi Briest");
    book->dbkey = { 0x10f, 0x56 };

    XMLPacketable xml;
    xml.setData(*book);  // from packet text to elements
    const std::unique_ptr<TQPacketable> again(xml.getData());  // and back

    std::puts(qPrintable(XMLObject::toString(XMLPacketable::getPacketableItemNode(xml.getNode()))));
    std::printf("title: %s\n",
        qPrintable(XMLPacketable::getTagAttribute(xml.getNode(), 1, XMLPacketable::VALUE)));
    std::puts(again && packetText(*again) == packetText(*book) ? "the same text" : "another text");
    std::printf("%s, key %x:%x\n", again->name, again->dbkey.key, again->dbkey.hkey);
    return 0;
}

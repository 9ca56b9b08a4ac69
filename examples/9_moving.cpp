// Code that has to change in the move from the older Qt and the 32-bit platform.

#include <QCoreApplication>
#include <cstdio>
#include <tqcommserver.h>
#include <xmlaction.h>
#include <xmlpacket.h>

// Prints the first book of each owner. Copies members of records; a pointer or reference to one
// could be misaligned.
void printBooks(TQCommServer &server)
{
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    TQLISTRECORD *owners = server.getDBList(command, message, PACKETDATATYPE_BOOKOWNER);
    for (const TQLISTRECORD *record = owners; record; record = record->next) {
        const auto *owner = reinterpret_cast<const TQOWNER *>(record);
        const TQKEY_ELEMENT key = { owner->key, owner->hkey };
        TQBOOK *book = server.getBooks(command, message, SORTTYPE_NAME, SORTORDER_ASCENDING, key);
        const char *name = book ? book->name : "none";  // not auto &name
        std::puts(name);
        auto *books = reinterpret_cast<TQLISTRECORD *>(book);
        TQPacketFreeList(&books, PACKETDATATYPE_BOOK);
    }
    TQPacketFreeList(&owners, PACKETDATATYPE_OUTPUT);  // owners are always freed as outputs
}

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    TQCommServer server("sqlite::memory:");  // the sample content
    printBooks(server);

    XMLAction action(QStringLiteral("move"), 1, 0);
    QDomElement element = action.getNodeConst();
    XMLObject::setProperty(element, QStringLiteral("unit"), "mm");  // was stored as true
    const QString unit = XMLObject::getProperty(element, QStringLiteral("unit"));  // "mm"

    XMLObject::setProperty(element, QStringLiteral("x"), "4294967296");  // needs 33 bits
    const int x = action.getX();  // 0, although action.hasX() is true

    const QString offsets = XMLObject::toString(QList<int> { -0x1f, 0x2c }, 16);  // "-1f 2c"
    bool ok = false;
    const QList<int> read = XMLObject::toLongList(offsets, &ok, 16);  // -31 and 44; ok is true
    std::printf("%s, %d, ", qPrintable(unit), x);
    std::printf("%s: %d %d, %s\n", qPrintable(offsets), read[0], read[1], ok ? "ok" : "unreadable");

    XMLPacket sent, received;
    sent.append(action);
    received = sent;
    const bool same = sent == received;  // true; their texts may order attributes differently
    std::puts(same ? "the same" : "another");
    return 0;
}

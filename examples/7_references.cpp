// A job of the store with all that it refers to.

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <tqcommserver.h>
#include <xmlpacketable.h>
#include <xpkreference.h>

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    TQCommServer server("sqlite::memory:");  // the sample content

    //! [load]
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    const std::unique_ptr<ArchiveNode> node(
        server.getArchiveNode(command, message, PACKETDATATYPE_JOB, { 0xb3, 0x15 }));
    const std::unique_ptr<XMLPacketable> job(XMLPacketable::fromArchiveNode(server, node.get()));
    if (!job) {
        return 1;  // no such job
    }
    //! [load]
    std::printf("%s\n", qPrintable(job->getName()));

    //! [list]
    QList<XPKReference *> references;  // ours, with the items
    job->getXPKReferences(references);
    for (const XPKReference *reference : references) {
        const bool isByKey = TQKEY_CC::isValid(reference->key);
        std::printf(
            "by %s: %s\n", isByKey ? "key" : "name", qPrintable(reference->packetable->getName()));
    }
    qDeleteAll(references);
    //! [list]
    return 0;
}

// Loads a job together with everything that it refers to.

#include <QCoreApplication>
#include <cstdio>
#include <memory>
#include <tqstore.h>
#include <xmlpacketable.h>
#include <xpkreference.h>

// Null when there is no such job or the query failed.
std::unique_ptr<XMLPacketable> loadJob(TQCommServer &server, const TQKEY_ELEMENT &key)
{
    const TQReadTransaction moment(server);  // all queries see the same state of the store
    TQLPCOMMANDS command;
    ZQ_MESSAGE_ID message;
    const std::unique_ptr<ArchiveNode> node(
        server.getArchiveNode(command, message, PACKETDATATYPE_JOB, key));
    return std::unique_ptr<XMLPacketable>(XMLPacketable::fromArchiveNode(server, node.get()));
}

void printReferences(const XMLPacketable &job)
{
    QList<XPKReference *> references;  // the caller deletes them
    job.getXPKReferences(references);
    for (const XPKReference *reference : references) {
        const bool isByKey = TQKEY_CC::isValid(reference->key);
        std::printf(
            "by %s: %s\n", isByKey ? "key" : "name", qPrintable(reference->packetable->getName()));
    }
    qDeleteAll(references);
}

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    TQCommServer server("sqlite::memory:");  // the sample content
    const unsigned int failures = server.failures();
    const auto job = loadJob(server, { 0xb3, PACKETDATATYPE_JOB });
    if (!job || server.failures() != failures) {
        std::fprintf(stderr, "The job is missing or incomplete: %s\n", server.errorText());
        return 1;
    }
    std::printf("%s\n", qPrintable(job->getName()));
    printReferences(*job);
    return 0;
}

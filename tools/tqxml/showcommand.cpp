#include "command.h"
#include "streams.h"
#include "texttable.h"
#include "values.h"
#include "xmlwriter.h"

#include "xmlpacketable.h"
#include "xpkreference.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <QCommandLineParser>

#include <memory>

namespace {

const QString REFERENCES_OPTION = QStringLiteral("references");
const QString DATABASE_OPTION = QStringLiteral("database");

// Loads an item and everything that it refers to. Null, with an error, if there is no such item or
// a query failed.
std::unique_ptr<XMLPacketable> load(
    const QByteArray &url, PACKETDATATYPES type, const TQKEY_ELEMENT &key, QString &error)
{
    TQCommServer server(url.constData());
    std::unique_ptr<XMLPacketable> item;
    if (server.failures() == 0) {
        const TQReadTransaction oneMoment(server);
        TQLPCOMMANDS command;
        ZQ_MESSAGE_ID message;
        const std::unique_ptr<ArchiveNode> node(server.getArchiveNode(command, message, type, key));
        item.reset(XMLPacketable::fromArchiveNode(server, node.get()));
    }
    if (server.failures() != 0) {
        item.reset();  // a part of it may be missing
        error = QString::fromUtf8(server.errorText());
    } else if (!item) {
        error = QStringLiteral("there is no item %1 of type %2").arg(keyText(key), typeText(type));
    }
    return item;
}

int printReferences(const XMLPacketable &item)
{
    QList<XPKReference *> references;
    if (!item.getXPKReferences(references)) {
        note(QStringLiteral("no references found"));
        return DONE;
    }
    TextTable table({ QStringLiteral("Key"), QStringLiteral("Type"), QStringLiteral("Name"),
        QStringLiteral("Referred to by") });
    for (const XPKReference *reference : references) {
        const XMLPacketable &referred = *reference->packetable;
        const bool isByName = !reference->name.isNull();
        table.addRow({ isByName ? QString() : keyText(reference->key), typeText(referred.getType()),
            referred.getName(), isByName ? QStringLiteral("name") : QStringLiteral("key") });
    }
    qDeleteAll(references);
    return writeOutput(table.text());
}

void declareOptions(QCommandLineParser &parser)
{
    parser.addOption({ REFERENCES_OPTION, QString() });
    parser.addOption({ DATABASE_OPTION, QString(), DATABASE_OPTION });
}

int run(const Command &command, const QCommandLineParser &parser)
{
    const QStringList arguments = parser.positionalArguments();
    if (arguments.size() != 2) {
        return misuse(command, QStringLiteral("give a type and a key"));
    }
    const std::optional<PACKETDATATYPES> type = readType(arguments.at(0));
    if (!type) {
        return misuse(command, QStringLiteral("there is no type \"%1\"").arg(arguments.at(0)));
    }
    const std::optional<TQKEY_ELEMENT> key = readKey(arguments.at(1));
    if (!key) {
        return misuse(command, noKey(arguments.at(1)));
    }
    const QString wrong = wrongKey(*key, *type);
    if (!wrong.isEmpty()) {
        return misuse(command, wrong);
    }
    QString error;
    const std::unique_ptr<XMLPacketable> item = load(
        parser.isSet(DATABASE_OPTION) ? databaseUrl(parser.value(DATABASE_OPTION)) : sampleUrl(),
        *type, *key, error);
    if (!item) {
        return fail(error);
    }
    return parser.isSet(REFERENCES_OPTION) ? printReferences(*item)
                                           : printXml(item->getNodeConst());
}

}  // namespace

const Command SHOW_COMMAND = {
    "show",
    "TYPE KEY:HKEY [--references] [--database DATABASE]",
    "Prints an item as XML, with everything that it refers to inside. TYPE is job, book, owner,\n"
    "output, profile or the hexadecimal number of a data type.\n\n"
    "  --references           Only list what the item itself refers to.\n"
    "  --database DATABASE    The store; by default the sample that comes with tqxml.\n",
    declareOptions,
    run,
};

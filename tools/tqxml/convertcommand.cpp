#include "command.h"
#include "conversion.h"
#include "streams.h"

#include "xmlpacketable.h"

#include <QCommandLineParser>

namespace {

const QString TO_OPTION = QStringLiteral("to");
const QString RAW_OPTION = QStringLiteral("raw");
const QString FIELDS_ONLY_OPTION = QStringLiteral("fields-only");
const QString NO_LIMIT_OPTION = QStringLiteral("no-limit");
const QString TO_XML = QStringLiteral("xml");
const QString TO_PACKET = QStringLiteral("packet");
const QString STANDARD_INPUT = QStringLiteral("-");

void declareOptions(QCommandLineParser &parser)
{
    parser.addOption({ TO_OPTION, QString(), TO_OPTION });
    parser.addOption({ RAW_OPTION, QString() });
    parser.addOption({ FIELDS_ONLY_OPTION, QString() });
    parser.addOption({ NO_LIMIT_OPTION, QString() });
}

int run(const Command &command, const QCommandLineParser &parser)
{
    const QString to = parser.value(TO_OPTION);
    if (to != TO_XML && to != TO_PACKET) {
        return misuse(command, QStringLiteral("say --to xml or --to packet"));
    }
    const QStringList files = parser.positionalArguments();
    if (files.size() > 1) {
        return misuse(command, QStringLiteral("give one file, or none for standard input"));
    }
    Input input(files.value(0, STANDARD_INPUT));
    const Conversion conversion { input, parser.isSet(RAW_OPTION), parser.isSet(FIELDS_ONLY_OPTION),
        !parser.isSet(NO_LIMIT_OPTION) };
    if (!input.openFile()) {
        return conversion.fail(input.errorString());
    }
    return to == TO_XML ? convertToXml(conversion) : convertToPacket(conversion);
}

}  // namespace

int Conversion::fail(const QString &message) const
{
    return ::fail(QStringLiteral("%1: %2").arg(input.label(), message));
}

QString lineMessage(qint64 line, const QString &reason)
{
    return QStringLiteral("line %1: %2").arg(QString::number(line), reason);
}

CONVERTSTRUCTELEMENTINFO *fieldsOfType(PACKETDATATYPES type)
{
    return type == PACKETDATATYPE_UNCONVERTED ? nullptr : TQGetSystemStorageClassConv(type);
}

QDomElement readItems(XMLPacketable &all, QStringList lines)
{
    QDomElement root = all.getNodeConst();
    const auto count = unsigned(lines.size());
    for (unsigned index = 0; index < count; ++index) {
        index = all.toDom(root, lines, index);
    }
    return root;
}

const Command CONVERT_COMMAND = {
    "convert",
    "--to xml|packet [--raw] [--fields-only] [--no-limit] [FILE]",
    "Turns packet text into a packet document and back, from FILE or standard input. Back from\n"
    "XML, a packet document, a packetable or an item will do. What would not come back the same "
    "is\n"
    "refused, with the line and the reason.\n\n"
    "  --to xml|packet        What to make.\n"
    "  --raw                  Convert what can be converted, and leave out the rest.\n"
    "  --fields-only          To packet text, convert the fields of items and leave out what "
    "packet\n"
    "                         text has no place for: the names, keys and flags of items, items\n"
    "                         inside of fields, and the rest of the packet.\n"
    "  --no-limit             Convert items of more than 16 MiB or 200,000 values, too, which may\n"
    "                         take gigabytes of memory.\n",
    declareOptions,
    run,
};

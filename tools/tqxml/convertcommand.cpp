#include "command.h"
#include "commandline.h"
#include "conversion.h"
#include "streams.h"

#include "xmlpacketable.h"

namespace {

const QString TO_XML = QStringLiteral("xml");
const QString TO_PACKET = QStringLiteral("packet");
const QString STANDARD_INPUT = QStringLiteral("-");

}  // namespace

int runConvert(const CommandLine &line)
{
    const QString to = line.value("to");
    if (to != TO_XML && to != TO_PACKET) {
        return misuse(line, QStringLiteral("say --to xml or --to packet"));
    }
    if (to == TO_XML && line.isSet("fields-only")) {
        return misuse(line, QStringLiteral("--fields-only is for --to packet"));
    }
    Input input(line.arguments().value(0, STANDARD_INPUT));
    const Conversion conversion { input, line.isSet("raw"), line.isSet("fields-only"),
        !line.isSet("no-limit") };
    if (!input.openFile()) {
        return conversion.fail(input.errorString());
    }
    return to == TO_XML ? convertToXml(conversion) : convertToPacket(conversion);
}

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

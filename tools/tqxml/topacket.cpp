// Converts XML to packet text, one packetable after the other. What packet text cannot hold is
// found by converting back and comparing.

#include "command.h"
#include "comparison.h"
#include "conversion.h"
#include "fieldloss.h"
#include "spool.h"
#include "streams.h"
#include "xmlreader.h"

#include "xmlpacketable.h"

namespace {

constexpr QLatin1Char LINE_FEED('\n');

QByteArray packetText(const QDomElement &packetable)
{
    return XMLPacketable().toPacket(packetable).toUtf8();
}

// What packet text would not give back unchanged of a packetable.
Loss lossOf(const QDomElement &packetable, const QByteArray &text)
{
    const Loss unheld = firstUnheld(packetable);
    if (!unheld.isNone()) {
        return unheld;
    }
    XMLPacketable again;
    const QDomElement read =
        readItems(again, QString::fromUtf8(text).split(LINE_FEED, Qt::SkipEmptyParts));
    const Loss changed = firstChanged(packetable, read);
    const Comparison comparison(text, packetText(read));
    return !changed.isNone() || comparison.isEqual()
        ? changed
        : Loss { packetable,
              QStringLiteral("\"%1\" would not come back the same").arg(comparison.word()) };
}

}  // namespace

int convertToPacket(const Conversion &conversion)
{
    XmlReader reader(
        conversion.input, { conversion.isRaw, conversion.isFieldsOnly, conversion.isLimited });
    Spool spool;
    for (QDomDocument document = reader.next(); !document.isNull(); document = reader.next()) {
        const QDomElement packetable = document.documentElement();
        const QByteArray text = packetText(packetable);
        const Loss loss = conversion.isRaw ? Loss() : lossOf(packetable, text);
        if (!loss.isNone()) {
            return conversion.fail(lineMessage(reader.lineOf(loss.element), loss.reason));
        }
        if (!spool.write(text)) {
            return fail(spool.error());
        }
    }
    if (!reader.error().isEmpty()) {
        return conversion.fail(reader.error());
    }
    return spool.isEmpty() ? conversion.fail(QStringLiteral("there is no item in it"))
                           : spool.print();
}

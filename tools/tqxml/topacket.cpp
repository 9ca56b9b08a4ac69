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
constexpr QLatin1Char BLANK(' ');

QByteArray packetText(const QDomElement &packetable)
{
    return XMLPacketable().toPacket(packetable).toUtf8();
}

// Replaces line feeds with blanks. Recursion is safe: the reader has limited the nesting.
void blankLineFeeds(QDomNode node)
{
    if (node.isText()) {
        node.setNodeValue(node.nodeValue().replace(LINE_FEED, BLANK));
    }
    const QDomNamedNodeMap attributes = node.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        QDomAttr attribute = attributes.item(i).toAttr();
        attribute.setValue(attribute.value().replace(LINE_FEED, BLANK));
    }
    for (QDomNode child = node.firstChild(); !child.isNull(); child = child.nextSibling()) {
        blankLineFeeds(child);
    }
}

// The first word of the first line of packet text that changes when line feeds become blanks.
QString cutByLineFeed(const QDomDocument &document, const QByteArray &text)
{
    const QDomDocument copy = document.cloneNode().toDocument();
    blankLineFeeds(copy);
    const QByteArray blanked = packetText(copy.documentElement());
    const Comparison comparison(text, blanked);
    return comparison.isEqual() ? QString() : comparison.word();
}

// The name of something that packet text would not give back unchanged; empty if there is none.
QString lostIn(const QDomDocument &document, const QByteArray &text)
{
    XMLPacketable again;
    const QDomElement read =
        readItems(again, QString::fromUtf8(text).split(LINE_FEED, Qt::SkipEmptyParts));
    const QByteArray reread = packetText(read);
    const Comparison comparison(text, reread);
    if (!comparison.isEqual()) {
        return comparison.word();
    }
    QDomElement packetable = document.documentElement();
    packetable.removeAttribute(XMLPacketable::DATATYPE);  // only items have fields
    return firstLoss(packetable, read);
}

// Why the packet text of a packetable would not give it back unchanged; empty if it does.
QString lossOf(const QDomDocument &document, const QByteArray &text, bool hasLineFeeds)
{
    const QString cut = hasLineFeeds ? cutByLineFeed(document, text) : QString();
    if (!cut.isEmpty()) {
        return QStringLiteral("a line feed in the value of \"%1\", which packet text cannot carry")
            .arg(cut);
    }
    const QString lost = lostIn(document, text);
    return lost.isEmpty() ? QString()
                          : QStringLiteral("\"%1\" would not come back the same").arg(lost);
}

}  // namespace

int convertToPacket(const Conversion &conversion)
{
    XmlReader reader(conversion.input, { conversion.isRaw, conversion.isLimited });
    Spool spool;
    for (QDomDocument document = reader.next(); !document.isNull(); document = reader.next()) {
        const QByteArray text = packetText(document.documentElement());
        const QString loss =
            conversion.isRaw ? QString() : lossOf(document, text, reader.hasLineFeeds());
        if (!loss.isEmpty()) {
            return conversion.fail(loss);
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

// Compares elements with what packet text can hold: items with a data type, lists with a size, and
// fields that the data type has.

#include "fieldloss.h"

#include "conversion.h"

#include "xmlpacketable.h"

namespace {

constexpr QLatin1Char LINE_FEED('\n');
const QString FIELDS_ONLY = QStringLiteral("; --fields-only leaves it out");

bool isBlock(const QDomElement &e)
{
    return e.tagName() == XMLPacketable::ITEM || e.tagName() == XMLPacketable::LIST;
}

QString ownText(const QDomElement &e)
{
    QString text;
    for (QDomNode node = e.firstChild(); !node.isNull(); node = node.nextSibling()) {
        text += node.isText() ? node.nodeValue() : QString();
    }
    return text;
}

// Whether the fields are equal. Where a has no size, b may have one.
bool isSame(const QDomElement &a, const QDomElement &b)
{
    const QDomNamedNodeMap attributes = a.attributes();
    const int counted =
        b.hasAttribute(XMLPacketable::SIZE) && !a.hasAttribute(XMLPacketable::SIZE) ? 1 : 0;
    bool same = a.tagName() == b.tagName() && ownText(a) == ownText(b) &&
        attributes.count() + counted == b.attributes().count();
    for (int i = 0; same && i < attributes.count(); ++i) {
        const QDomAttr attribute = attributes.item(i).toAttr();
        same =
            b.hasAttribute(attribute.name()) && b.attribute(attribute.name()) == attribute.value();
    }
    QDomElement inA = a.firstChildElement();
    QDomElement inB = b.firstChildElement();
    for (; same && !inA.isNull(); inA = inA.nextSiblingElement(), inB = inB.nextSiblingElement()) {
        same = isSame(inA, inB);
    }
    return same && inB.isNull();
}

// Of a block its attributes only.
bool hasLineFeed(const QDomElement &e)
{
    bool has = !isBlock(e) && ownText(e).contains(LINE_FEED);
    const QDomNamedNodeMap attributes = e.attributes();
    for (int i = 0; i < attributes.count(); ++i) {
        has = has || attributes.item(i).nodeValue().contains(LINE_FEED);
    }
    QDomElement child = isBlock(e) ? QDomElement() : e.firstChildElement();
    for (; !has && !child.isNull(); child = child.nextSiblingElement()) {
        has = hasLineFeed(child);
    }
    return has;
}

// The name of the first attribute that packet text has no place for.
QString unheldAttribute(const QDomElement &block)
{
    const QString held =
        block.tagName() == XMLPacketable::LIST ? XMLPacketable::SIZE : XMLPacketable::DATATYPE;
    const QDomNamedNodeMap attributes = block.attributes();
    QString unheld;
    for (int i = 0; i < attributes.count(); ++i) {
        const QString name = attributes.item(i).nodeName();
        const bool isFirst = unheld.isEmpty() || name < unheld;
        unheld = name != held && isFirst ? name : unheld;
    }
    return unheld;
}

// Why the field cannot be held by an item, a list or a packetable; empty if it can.
QString reasonAgainst(const QDomElement &field, const QDomElement &parent)
{
    const QString name = field.tagName();
    if (XMLObject::isXMLPacketable(field) ||
        !field.firstChildElement(XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE))
             .isNull()) {
        return QStringLiteral("packet text has no place for the item inside of \"%1\"")
                   .arg(XMLObject::isXMLPacketable(field) ? parent.tagName() : name) +
            FIELDS_ONLY;
    }
    if (parent.tagName() != XMLPacketable::ITEM) {
        return QStringLiteral("\"%1\" is no item").arg(name);
    }
    const QString type = parent.attribute(XMLPacketable::DATATYPE);
    if (type.isEmpty()) {
        return QStringLiteral("the item of \"%1\" has no data type").arg(name);
    }
    auto *fields = fieldsOfType(XMLPacketable::getType(parent));
    if (!fields) {
        return QStringLiteral("the data type %1 is unknown, and with it the form of its fields")
            .arg(type);
    }
    bool isTag = false;
    const unsigned tag = XMLPacketable::getDATATAGFromXMLTagName(name).toUInt(&isTag, 16);
    return isTag && XMLPacketable::getConvStructFromDataTag(fields, tag)
        ? QString()
        : QStringLiteral("the data type %1 has no field \"%2\"").arg(type, name);
}

// What packet text has no place for in the block itself.
QString reasonAgainst(const QDomElement &block)
{
    const QString attribute = unheldAttribute(block);
    if (!attribute.isEmpty()) {
        return QStringLiteral("packet text has no place for \"%1\" of \"%2\"")
                   .arg(attribute, block.tagName()) +
            (isBlock(block) ? QString() : FIELDS_ONLY);
    }
    return ownText(block).trimmed().isEmpty()
        ? QString()
        : QStringLiteral("packet text has no place for the text in \"%1\"").arg(block.tagName());
}

// A packetable has the data type of its item.
bool isOfOtherType(const QDomElement &item, const QDomElement &parent)
{
    return XMLObject::isXMLPacketable(parent) && parent.hasAttribute(XMLPacketable::DATATYPE) &&
        parent.attribute(XMLPacketable::DATATYPE) != item.attribute(XMLPacketable::DATATYPE);
}

}  // namespace

Loss firstUnheld(const QDomElement &block)
{
    const QString reason = reasonAgainst(block);
    if (!reason.isEmpty()) {
        return { block, reason };
    }
    for (QDomElement e = block.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        Loss loss { e, isBlock(e) ? QString() : reasonAgainst(e, block) };
        if (loss.isNone() && hasLineFeed(e)) {
            loss.reason =
                QStringLiteral("a line feed in the value of \"%1\", which packet text cannot carry")
                    .arg(e.tagName());
        } else if (loss.isNone() && isBlock(e)) {
            loss = isOfOtherType(e, block)
                ? Loss { e, QStringLiteral("the item has another data type than its packetable") }
                : firstUnheld(e);
        }
        if (!loss.isNone()) {
            return loss;
        }
    }
    return {};
}

Loss firstChanged(const QDomElement &written, const QDomElement &read)
{
    QDomElement inRead = read.firstChildElement();
    for (QDomElement e = written.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        const bool isOther = e.tagName() != inRead.tagName();
        if (isOther || (!isBlock(e) && !isSame(e, inRead))) {
            return { e, QStringLiteral("\"%1\" would not come back the same").arg(e.tagName()) };
        }
        const Loss loss = isBlock(e) ? firstChanged(e, inRead) : Loss();
        if (!loss.isNone()) {
            return loss;
        }
        inRead = inRead.nextSiblingElement();
    }
    return {};
}

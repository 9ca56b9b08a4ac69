#include "fieldloss.h"

#include "xmlpacketable.h"

#include "tqstorageclass.h"

namespace {

bool isBlock(const QDomElement &e)
{
    return e.tagName() == XMLPacketable::ITEM || e.tagName() == XMLPacketable::LIST;
}

// The element after e or, without e, the first one of the parent. Skips inlined items.
QDomElement nextPart(const QDomElement &parent, const QDomElement &e = QDomElement())
{
    QDomElement next = e.isNull() ? parent.firstChildElement() : e.nextSiblingElement();
    while (XMLObject::isXMLPacketable(next)) {
        next = next.nextSiblingElement();
    }
    return next;
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
    QDomElement inA = nextPart(a);
    QDomElement inB = nextPart(b);
    for (; same && !inA.isNull(); inA = nextPart(a, inA), inB = nextPart(b, inB)) {
        same = isSame(inA, inB);
    }
    return same && inB.isNull();
}

// True for a field that packet text cannot hold: an empty one, or one that the data type does not
// have.
bool isLeftOut(const QDomElement &field, const QDomElement &item)
{
    const unsigned tag =
        XMLPacketable::getDATATAGFromXMLTagName(field.tagName()).toUInt(nullptr, 16);
    auto *table = TQGetSystemStorageClassConv(XMLPacketable::getType(item));
    return !XMLPacketable::getConvStructFromDataTag(table, tag) ||
        (!field.hasAttributes() && ownText(field).isEmpty() && nextPart(field).isNull());
}

}  // namespace

QString firstLoss(const QDomElement &written, const QDomElement &read)
{
    QDomElement inRead = nextPart(read);
    for (QDomElement e = nextPart(written); !e.isNull(); e = nextPart(written, e)) {
        const bool isOther = e.tagName() != inRead.tagName();
        if (isOther && !isBlock(e) && isLeftOut(e, written)) {
            continue;
        }
        const QString lost = isOther ? e.tagName()
            : isBlock(e)             ? firstLoss(e, inRead)
            : isSame(e, inRead)      ? QString()
                                     : e.tagName();
        if (!lost.isEmpty()) {
            return lost;
        }
        inRead = nextPart(read, inRead);
    }
    return QString();
}

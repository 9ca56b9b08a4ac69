#include "xmlpacketable.h"

#include "domtree_p.h"
#include "fields_p.h"
#include "packetitem_p.h"
#include "packettext_p.h"
#include "qtcompat_p.h"
#include "text_p.h"
#include "vocabulary_p.h"
#include "xpkreference.h"

#include "tqpacketable.h"

#include <climits>
#include <memory>

using namespace TQXmlInternal;

const QString XMLPacketable::START_LIST = TQXmlInternal::START_LIST;
const QString XMLPacketable::END_LIST = TQXmlInternal::END_LIST;
const QString XMLPacketable::START_ITEM = TQXmlInternal::START_ITEM;
const QString XMLPacketable::END_ITEM = TQXmlInternal::END_ITEM;
const QString XMLPacketable::LIST = TQXmlInternal::LIST;
const QString XMLPacketable::SIZE = TQXmlInternal::SIZE;
const QString XMLPacketable::ITEM = TQXmlInternal::ITEM;
const QString XMLPacketable::DATATYPE = TQXmlInternal::DATATYPE;
const QString XMLPacketable::VALUE = TQXmlInternal::VALUE;
const QString XMLPacketable::NAME = TQXmlInternal::NAME;
const QString XMLPacketable::KEY = TQXmlInternal::KEY;
const QString XMLPacketable::HKEY = TQXmlInternal::HKEY;
const QString XMLPacketable::IS_CURRENT = TQXmlInternal::IS_CURRENT;
const QString XMLPacketable::IS_REPLACEMENT = TQXmlInternal::IS_REPLACEMENT;

namespace {

// Memory that is reserved for an item's packet text, in characters.
constexpr int TEXT_ROOM = 4096;

QDomElement appendElement(
    QDomElement &parent, const QString &name, const QString &attribute, const QString &value)
{
    QDomElement e = XMLObject::createElement(parent, name);
    XMLObject::setAttribute(e, attribute, value);
    return e;
}

QDomElement appendField(Form form, QDomElement &parent, const QString &name, const QString &text)
{
    if (parent.isNull() || name.isEmpty()) {
        return QDomElement();
    }
    QDomDocument document = parent.ownerDocument();
    return buildField(document, parent, name, readField(form, text));
}

QString toQString(const LineBuffer &text)
{
    return QString(reinterpret_cast<const QChar *>(text.data()), TextSize(text.size()));
}

// The packet text of an element's content.
LineBuffer contentOf(const QDomElement &e)
{
    LineBuffer text;
    text.reserve(TEXT_ROOM);
    writePacketText(text, e);
    return text;
}

// The line of a field's element.
QString lineOf(Form form, const QDomElement &e)
{
    const QString tag = XMLPacketable::getDATATAGFromXMLTagName(e.tagName());
    LineBuffer line;
    writeField(line, form, tag, e);
    return line.empty() ? QString() : toQString(line);
}

// The first element below e, at any depth, for which accept returns true.
template<typename Accept>
QDomElement findBelow(const QDomElement &e, Accept accept)
{
    for (QDomNode node = e.firstChild(); !node.isNull(); node = nextBelow(node, e)) {
        const QDomElement candidate = node.toElement();
        if (!candidate.isNull() && accept(candidate)) {
            return candidate;
        }
    }
    return QDomElement();
}

}  // namespace

XMLPacketable::XMLPacketable() : XMLObject(XMLOBJECT_PACKETABLE) {}

XMLPacketable::~XMLPacketable() { dropCache(); }

void XMLPacketable::dropCache()
{
    delete m_packetable;
    m_packetable = nullptr;
}

void XMLPacketable::setCurrent(bool current) { setAttribute(element(), IS_CURRENT, current); }
bool XMLPacketable::isCurrent() const { return getAttributeBool(element(), IS_CURRENT); }

void XMLPacketable::setReplacement(QDomElement &e, bool replacement)
{
    setAttribute(e, IS_REPLACEMENT, replacement);
}

void XMLPacketable::setReplacement(bool replacement) { setReplacement(element(), replacement); }

bool XMLPacketable::isReplacement(const QDomElement &e)
{
    return getAttributeBool(e, IS_REPLACEMENT);
}

bool XMLPacketable::isReplacement() const { return isReplacement(element()); }
void XMLPacketable::clearReplacement(QDomElement &e) { removeAttribute(e, IS_REPLACEMENT); }
void XMLPacketable::clearReplacement() { clearReplacement(element()); }

void XMLPacketable::setName(QDomElement &e, const QString &name) { setAttribute(e, NAME, name); }
void XMLPacketable::setName(const QString &name) { setName(element(), name); }
QString XMLPacketable::getName(const QDomElement &e) { return getAttribute(e, NAME); }
QString XMLPacketable::getName() const { return getName(element()); }

void XMLPacketable::setDBkey(QDomElement &e, const TQKEY_ELEMENT &key)
{
    setAttribute(e, KEY, key.key, 16);
    setAttribute(e, HKEY, key.hkey, 16);
}

void XMLPacketable::setDBkey(const TQKEY_ELEMENT &key) { setDBkey(element(), key); }

TQKEY_ELEMENT XMLPacketable::getDBkey(const QDomElement &e)
{
    TQKEY_ELEMENT key = TQKEY_CC::getNullKey();
    key.key = getAttributeUInt(e, KEY, 16);
    key.hkey = getAttributeUInt(e, HKEY, 16);
    return key;
}

TQKEY_ELEMENT XMLPacketable::getDBkey() const { return getDBkey(element()); }

void XMLPacketable::setType(QDomElement &e, PACKETDATATYPES type)
{
    setAttribute(e, DATATYPE, unsigned(type), 16);
}

void XMLPacketable::setType(PACKETDATATYPES type) { setType(element(), type); }

PACKETDATATYPES XMLPacketable::getType(const QDomElement &e)
{
    return PACKETDATATYPES(getAttributeUInt(e, DATATYPE, 16));
}

PACKETDATATYPES XMLPacketable::getType() const { return getType(element()); }

QString XMLPacketable::getXMLTagNameFromDATATAG(int tag) { return fieldName(tag); }

QString XMLPacketable::getDATATAGFromXMLTagName(const QString &name)
{
    return tagIn(name).toString();
}

QDomNode XMLPacketable::getPacketableItemNode(const QDomElement &e)
{
    if (!isXMLPacketable(e)) {
        return QDomNode();
    }
    const PACKETDATATYPES type = getType(e);
    return findBelow(e, [type](const QDomElement &candidate) {
        return candidate.tagName() == ITEM && getType(candidate) == type;
    });
}

QDomNodeList XMLPacketable::getPacketableItemTagNodes(const QDomElement &e)
{
    return getPacketableItemNode(e).childNodes();
}

QDomNode XMLPacketable::getTagNode(const QDomElement &e, int tag)
{
    const QString name = getXMLTagNameFromDATATAG(tag);
    return findBelow(
        e, [&name](const QDomElement &candidate) { return candidate.tagName() == name; });
}

QString XMLPacketable::getTagAttribute(const QDomElement &e, int tag, QString attribute)
{
    return getAttribute(getTagNode(e, tag).toElement(), attribute);
}

QDomNode XMLPacketable::getFirstPacketableNodeOfType(const QDomElement &root, PACKETDATATYPES type)
{
    QDomElement e = root.firstChildElement(rootNodeName(XMLOBJECT_PACKETABLE));
    while (!e.isNull() && getType(e) != type) {
        e = e.nextSiblingElement(rootNodeName(XMLOBJECT_PACKETABLE));
    }
    return e;
}

int XMLPacketable::getPacketableNodesOfType(
    const QDomElement &root, PACKETDATATYPES type, std::list<QDomNode> &out)
{
    int count = 0;
    for (QDomElement e = root.firstChildElement(rootNodeName(XMLOBJECT_PACKETABLE)); !e.isNull();
         e = e.nextSiblingElement(rootNodeName(XMLOBJECT_PACKETABLE))) {
        if (getType(e) == type) {
            out.push_back(e);
            ++count;
        }
    }
    return count;
}

CONVERTSTRUCTELEMENTINFO *XMLPacketable::getConvStructFromDataTag(
    CONVERTSTRUCTELEMENTINFO *table, unsigned int tag)
{
    for (; table && table->type != 0; ++table) {
        if (table->tag == tag) {
            return table;
        }
    }
    return nullptr;
}

void XMLPacketable::getTagValuePair(QString &line, QStringRef &tag, QStringRef &value)
{
    const auto blank = line.indexOf(QLatin1Char(' '));
    if (blank >= 0) {
        tag = QStringRef(&line, 0, int(blank));
        value = QStringRef(&line, int(blank) + 1, int(line.size() - blank) - 1);
    }
}

QDomElement XMLPacketable::createListElement(QDomElement &parent, const QString &size)
{
    return appendElement(parent, LIST, SIZE, size);
}

void XMLPacketable::createListElementV(QDomElement &parent, const QString &size)
{
    const QDomElement created = createListElement(parent, size);
}

QDomElement XMLPacketable::createItemElement(QDomElement &parent, const QString &datatype)
{
    return appendElement(parent, ITEM, DATATYPE, datatype);
}

void XMLPacketable::createItemElementV(QDomElement &parent, const QString &datatype)
{
    const QDomElement created = createItemElement(parent, datatype);
}

QDomElement XMLPacketable::createSimpleElement(
    QDomElement &parent, const QString &name, const QString &value)
{
    return appendField(Simple, parent, name, value);
}

void XMLPacketable::createSimpleElementV(
    QDomElement &parent, const QString &name, const QString &value)
{
    const QDomElement created = createSimpleElement(parent, name, value);
}

void XMLPacketable::createBinaryDataElementV(
    QDomElement &parent, const QString &name, const QString &text)
{
    appendField(Binary, parent, name, text);
}

QDomElement XMLPacketable::createStringArrayElement(
    QDomElement &parent, const QString &name, const QString &text)
{
    return appendField(StringArray, parent, name, text);
}

void XMLPacketable::createStringArrayElementV(
    QDomElement &parent, const QString &name, const QString &text)
{
    const QDomElement created = createStringArrayElement(parent, name, text);
}

QDomElement XMLPacketable::createNumberArrayElement(
    QDomElement &parent, const QString &name, const QString &text)
{
    return appendField(NumberArray, parent, name, text);
}

void XMLPacketable::createNumberArrayElementV(
    QDomElement &parent, const QString &name, const QString &text)
{
    const QDomElement created = createNumberArrayElement(parent, name, text);
}

QDomElement XMLPacketable::createTQKEYElement(
    QDomElement &parent, const QString &name, const QString &text)
{
    return appendField(Key, parent, name, text);
}

void XMLPacketable::createTQKEYElementV(
    QDomElement &parent, const QString &name, const QString &text)
{
    const QDomElement created = createTQKEYElement(parent, name, text);
}

QDomElement XMLPacketable::getEmptyNodeOfType(QDomElement &parent, PACKETDATATYPES type)
{
    const QString typeText = numberText(type, 16);
    QDomElement e = appendElement(parent, rootNodeName(XMLOBJECT_PACKETABLE), DATATYPE, typeText);
    createItemElementV(e, typeText);
    return e;
}

void XMLPacketable::setData(const QDomNode &node)
{
    dropCache();
    setElement(node.isElement() ? withinDepth(node).cloneNode(true).toElement() : QDomElement());
}

void XMLPacketable::setData(const TQPacketable &packetable)
{
    // `packetable` may be the cached item itself, which is therefore deleted at the end.
    const std::unique_ptr<TQPacketable> previous(m_packetable);
    m_packetable = nullptr;

    bool hasText = false;
    {
        const PacketItem item(packetable, false);
        item.fill(element());
        hasText = item.hasText();
    }
    if (hasText) {
        getDataConst();  // builds the cached item: callers rely on it after this function
    }
}

unsigned int XMLPacketable::toDom(QDomElement &parent, QStringList &lines, unsigned int index)
{
    return readPacketLines(parent, lines, index);
}

QString XMLPacketable::toPacket(const QDomElement &e) const
{
    return e.hasChildNodes() ? toQString(contentOf(e)) : QString();
}

void XMLPacketable::appendSimpleValuePacket(QString &out, const QDomElement &e) const
{
    out += lineOf(Simple, e);
}

QString XMLPacketable::toSimpleValuePacket(const QDomElement &e) const { return lineOf(Simple, e); }

QString XMLPacketable::toTQKEYValuePacket(const QDomElement &e) const { return lineOf(Key, e); }

QString XMLPacketable::toNumberArrayValuePacket(const QDomElement &e) const
{
    return lineOf(NumberArray, e);
}

QString XMLPacketable::toStringArrayValuePacket(const QDomElement &e) const
{
    return lineOf(StringArray, e);
}

void XMLPacketable::appendBinaryDataPacket(QString &out, const QDomElement &e) const
{
    out += lineOf(Binary, e);
}

TQPacketable *XMLPacketable::getDataConst()
{
    if (m_packetable) {
        return m_packetable;
    }
    QByteArray text = QStringView(contentOf(element())).toUtf8();
    std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(getType()));
    if (!item || text.size() > INT_MAX ||
        !item->fromPacket(text.data(), unsigned(text.size()), false, true)) {
        return nullptr;
    }
    item->setName(getName().toUtf8().constData());
    if (TQKEY_CC::isValid(getDBkey())) {
        item->dbkey = getDBkey();
    }
    m_packetable = item.release();
    return m_packetable;
}

TQPacketable *XMLPacketable::getData()
{
    if (!getDataConst()) {
        return nullptr;
    }
    std::unique_ptr<TQPacketable> copy(PacketableUtil::getPacketable(getType()));
    if (copy) {
        *copy = *m_packetable;
    }
    return copy.release();
}

void XMLPacketable::nullifyReference(XPKReference *) {}

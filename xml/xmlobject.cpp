// What all objects of the vocabulary have in common: the life of their element (the members of an
// object), and reading and writing of values in any QDomElement (static functions). A value is the
// text of a child element, then called a property, or of an attribute. Absent or unreadable numbers
// are 0. Values of type long have 32 bits, so they are read as int.
//
// The element is made as late as possible. Until then attributes are kept in a Draft: the object's
// own, or one in a packet. xmlobject.h describes these states next to the members.

#include "xmlobject.h"

#include "domtree_p.h"
#include "draft_p.h"
#include "text_p.h"
#include "xmlpacket.h"

#include <iterator>

using namespace TQXmlInternal;

const QString XMLObject::TQ_NAMESPACE = QStringLiteral("urn:tqxml:packet:1");
const QString XMLObject::NUMLIST_SEP = QStringLiteral(" ");

namespace {

// Element names, by XMLOBJECT_TYPE.
const QString ROOT_NAMES[] = { QStringLiteral("tqxml"), QStringLiteral("packetable"),
    QStringLiteral("action"), QStringLiteral("ui"), QStringLiteral("img"), QStringLiteral("msg") };

// Significant digits of a stored double, as the header promises.
constexpr int PROPERTY_DIGITS = 6;
constexpr int ATTRIBUTE_DIGITS = 12;

template<typename T>
T numberOr0(const QString &text, int base)
{
    T value = 0;
    readNumber(text, base, value);
    return value;
}

double doubleOr0(const QString &text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? value : 0.0;
}

QString doubleText(double value, int digits) { return QString::number(value, 'g', digits); }

template<typename T>
QString listText(const QList<T> &list, int base)
{
    QString text;
    NumberBuffer buffer;
    for (const T member : list) {
        if (!text.isNull()) {
            text += XMLObject::NUMLIST_SEP;
        }
        text += writeNumber(buffer, member, base);
    }
    return text;
}

template<typename T>
QList<T> listFrom(const QString &text, bool *ok, int base)
{
    QList<T> list;
    if (text.isEmpty()) {
        return list;
    }
    bool allRead = true;
    forEachPart(text, XMLObject::NUMLIST_SEP.at(0).unicode(), [&](QStringView part) {
        T value = 0;
        if (readNumber(part, base, value)) {
            list.append(value);
        } else {
            allRead = false;
        }
    });
    if (ok) {
        *ok = allRead;
    }
    return list;
}

template<typename T>
QList<T> propertyList(const QDomElement &e, const QString &name, int base)
{
    bool ok = false;
    const QList<T> list = listFrom<T>(XMLObject::getProperty(e, name), &ok, base);
    return ok ? list : QList<T>();
}

}  // namespace

XMLObject::XMLObject(XMLOBJECT_TYPE type) : m_type(type) {}

XMLObject::~XMLObject() { leaveHolder(); }

// Takes the object out of the packet that it belongs to; the packet keeps the element.
void XMLObject::leaveHolder()
{
    if (m_holder) {
        m_holder->forgetObject(m_place);
        m_holder = nullptr;
    }
}

QDomDocument &XMLObject::ownDocument() const
{
    if (m_document.isNull()) {
        m_document = createDocument(QString(), QStringLiteral("dummydoc"));
    }
    return m_document;
}

QDomElement &XMLObject::element() const
{
    if (m_holder) {
        m_holder->tree();  // builds the packet's document, and sets m_element to its element there
    } else if (!m_isBuilt) {
        QDomElement root = ownDocument().documentElement();
        m_element = takeDraft().appendTo(root);
        m_isBuilt = true;
    }
    return m_element;
}

Draft XMLObject::takeDraft() const
{
    if (!m_draft) {  // no attribute was set
        return Draft(rootNodeName());
    }
    Draft draft = std::move(*m_draft);
    m_draft.reset();
    return draft;
}

void XMLObject::setOwnAttribute(const QString &name, const QString &value)
{
    if (m_isBuilt || m_holder) {
        setAttribute(element(), name, value);
    } else if (!name.isEmpty() && !value.isEmpty()) {
        if (!m_draft) {
            m_draft = std::make_unique<Draft>(rootNodeName());
        }
        m_draft->setAttribute(name, value);
    }
}

void XMLObject::setElement(const QDomElement &e)
{
    leaveHolder();
    m_isBuilt = true;
    m_element = e;
    m_owner = e.ownerDocument();
}

void XMLObject::setNode(const QDomElement &e)
{
    element();  // builds the former element, which stays in its document
    setElement(ownDocument().importNode(withinDepth(e), true).toElement());
}

QDomElement XMLObject::getNode() const
{
    return withinDepth(element()).cloneNode(true).toElement();
}

const QDomElement &XMLObject::getNodeConst() const { return element(); }

QString XMLObject::rootNodeName(XMLOBJECT_TYPE type)
{
    const bool known = type >= 0 && size_t(type) < std::size(ROOT_NAMES);
    return known ? ROOT_NAMES[type] : QStringLiteral("nobody");
}

QString XMLObject::rootNodeName() const { return rootNodeName(m_type); }

QString XMLObject::toString(const QDomNode &n) { return writtenText(n); }

QString XMLObject::toString() const { return toString(element()); }

bool XMLObject::isXMLPacketable(const QDomElement &e)
{
    return e.tagName() == rootNodeName(XMLOBJECT_PACKETABLE);
}

bool XMLObject::isXMLPacketable() const { return m_type == XMLOBJECT_PACKETABLE; }
bool XMLObject::isXMLAction() const { return m_type == XMLOBJECT_ACTION; }
bool XMLObject::isXMLUI() const { return m_type == XMLOBJECT_UI; }
bool XMLObject::isXMLImage() const { return m_type == XMLOBJECT_IMAGE; }
bool XMLObject::isXMLMessage() const { return m_type == XMLOBJECT_MSG; }

QDomDocument XMLObject::createDocument(const QString &namespaceURI, const QString &qualifiedName)
{
    return QDomImplementation().createDocument(namespaceURI, qualifiedName, QDomDocumentType());
}

void XMLObject::createDocumentV(const QString &namespaceURI, const QString &qualifiedName)
{
    const QDomDocument dropped = createDocument(namespaceURI, qualifiedName);
}

QDomElement XMLObject::getDocumentRoot(const QDomDocument &d) { return d.documentElement(); }

QDomElement XMLObject::createElement(QDomElement &parent, const QString &name)
{
    if (parent.isNull() || name.isEmpty()) {
        return QDomElement();
    }
    return parent.appendChild(parent.ownerDocument().createElement(name)).toElement();
}

void XMLObject::createElementV(QDomElement &parent, const QString &name)
{
    const QDomElement created = createElement(parent, name);
}

QDomText XMLObject::createTextNode(QDomElement &parent, const QString &text)
{
    if (parent.isNull()) {
        return QDomText();
    }
    return parent.appendChild(parent.ownerDocument().createTextNode(text)).toText();
}

void XMLObject::createTextNodeV(QDomElement &parent, const QString &text)
{
    const QDomText created = createTextNode(parent, text);
}

QDomElement XMLObject::getElement(const QDomElement &parent, const QString &name)
{
    return parent.namedItem(name).toElement();
}

bool XMLObject::hasNodesOfType(const QDomElement &parent, XMLOBJECT_TYPE t)
{
    return !parent.namedItem(rootNodeName(t)).isNull();
}

void XMLObject::removeNodesOfType(QDomElement &parent, XMLOBJECT_TYPE t)
{
    const QString name = rootNodeName(t);
    for (QDomNode node = parent.firstChild(); !node.isNull();) {
        const QDomNode next = node.nextSibling();
        if (node.nodeName() == name) {
            parent.removeChild(node);
        }
        node = next;
    }
}

int XMLObject::getNodesOfType(const QDomElement &parent, XMLOBJECT_TYPE t, std::list<QDomNode> &out)
{
    const QString name = rootNodeName(t);
    int count = 0;
    for (QDomNode node = parent.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.nodeName() == name) {
            out.push_back(node);
            ++count;
        }
    }
    return count;
}

bool XMLObject::hasProperty(const QDomElement &e, const QString &name)
{
    return !getElement(e, name).isNull();
}

QString XMLObject::getProperty(const QDomElement &e, const QString &name)
{
    const QDomElement property = getElement(e, name);
    return property.isNull() ? QString() : textBelow(property);
}

int XMLObject::getPropertyInt(const QDomElement &e, const QString &name)
{
    return numberOr0<int>(getProperty(e, name), 10);
}

long XMLObject::getPropertyLong(const QDomElement &e, const QString &name)
{
    return getPropertyInt(e, name);
}

unsigned int XMLObject::getPropertyUInt(const QDomElement &e, const QString &name, int base)
{
    return numberOr0<unsigned int>(getProperty(e, name), base);
}

unsigned long XMLObject::getPropertyULong(const QDomElement &e, const QString &name, int base)
{
    return getPropertyUInt(e, name, base);
}

double XMLObject::getPropertyDouble(const QDomElement &e, const QString &name)
{
    return doubleOr0(getProperty(e, name));
}

bool XMLObject::getPropertyBool(const QDomElement &e, const QString &name)
{
    return getPropertyInt(e, name) == 1;
}

QList<int> XMLObject::getPropertyLongList(const QDomElement &e, const QString &name, int base)
{
    return propertyList<int>(e, name, base);
}

QList<unsigned int> XMLObject::getPropertyULongList(
    const QDomElement &e, const QString &name, int base)
{
    return propertyList<unsigned int>(e, name, base);
}

void XMLObject::setProperty(QDomElement &e, const QString &name, const QString &text)
{
    QDomElement property = getElement(e, name);
    if (property.isNull()) {
        property = createElement(e, name);
        createTextNodeV(property, text);
        return;
    }
    // Only the first text is replaced; a CDATA section, for one, is none and stays.
    for (QDomNode node = property.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.nodeType() == QDomNode::TextNode) {
            node.toText().setData(text);
            return;
        }
    }
}

void XMLObject::setProperty(QDomElement &e, const QString &name, double value)
{
    setProperty(e, name, doubleText(value, PROPERTY_DIGITS));
}

void XMLObject::setProperty(QDomElement &e, const QString &name, unsigned int value, int base)
{
    setProperty(e, name, numberText(value, base));
}

void XMLObject::setProperty(QDomElement &e, const QString &name, int value)
{
    setProperty(e, name, numberText(value, 10));
}

void XMLObject::setProperty(QDomElement &e, const QString &name, bool value)
{
    setProperty(e, name, value ? 1 : 0);
}

void XMLObject::setProperty(QDomElement &e, const QString &name, const QList<int> &list, int base)
{
    setProperty(e, name, toString(list, base));
}

void XMLObject::setProperty(
    QDomElement &e, const QString &name, const QList<unsigned int> &list, int base)
{
    setProperty(e, name, toString(list, base));
}

QString XMLObject::getAttribute(const QDomElement &e, const QString &name)
{
    return name.isEmpty() ? QString() : e.attribute(name, QString());
}

int XMLObject::getAttributeInt(const QDomElement &e, const QString &name)
{
    return numberOr0<int>(getAttribute(e, name), 10);
}

long XMLObject::getAttributeLong(const QDomElement &e, const QString &name)
{
    return getAttributeInt(e, name);
}

unsigned int XMLObject::getAttributeUInt(const QDomElement &e, const QString &name, int base)
{
    return numberOr0<unsigned int>(getAttribute(e, name), base);
}

unsigned long XMLObject::getAttributeULong(const QDomElement &e, const QString &name, int base)
{
    return getAttributeUInt(e, name, base);
}

double XMLObject::getAttributeDouble(const QDomElement &e, const QString &name)
{
    return doubleOr0(getAttribute(e, name));
}

bool XMLObject::getAttributeBool(const QDomElement &e, const QString &name)
{
    return getAttributeInt(e, name) == 1;
}

void XMLObject::setAttribute(QDomElement &e, const QString &name, const QString &value)
{
    if (!name.isEmpty() && !value.isEmpty()) {
        e.setAttribute(name, value);
    }
}

void XMLObject::setAttribute(QDomElement &e, const QString &name, int value)
{
    setAttribute(e, name, numberText(value, 10));
}

void XMLObject::setAttribute(QDomElement &e, const QString &name, unsigned int value, int base)
{
    setAttribute(e, name, numberText(value, base));
}

void XMLObject::setAttribute(QDomElement &e, const QString &name, bool value)
{
    setAttribute(e, name, value ? 1 : 0);
}

void XMLObject::setAttribute(QDomElement &e, const QString &name, double value)
{
    setAttribute(e, name, doubleText(value, ATTRIBUTE_DIGITS));
}

void XMLObject::removeAttribute(QDomElement &e, const QString &name)
{
    if (!name.isEmpty()) {
        e.removeAttribute(name);
    }
}

QString XMLObject::toString(const QList<int> &list, int base) { return listText(list, base); }

QString XMLObject::toString(const QList<unsigned int> &list, int base)
{
    return listText(list, base);
}

QList<int> XMLObject::toLongList(const QString &text, bool *ok, int base)
{
    return listFrom<int>(text, ok, base);
}

QList<unsigned int> XMLObject::toULongList(const QString &text, bool *ok, int base)
{
    return listFrom<unsigned int>(text, ok, base);
}

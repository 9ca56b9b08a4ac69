#ifndef XMLOBJECT_H
#define XMLOBJECT_H

#include "tqxml_export.h"

#include <QDomDocument>
#include <QList>
#include <QObject>
#include <QString>

#include <list>

/// Base of everything that is held as XML: owns one element of a known kind in a document of its
/// own, and offers the static helpers by which all kinds read and write their elements.
///
/// Nothing here reports errors: what is absent or unreadable reads as 0, false, a null string or
/// an empty list, and what cannot be done changes nothing. Null elements are allowed everywhere.
///
/// A deep copy, here and in all that derives from it, reaches 384 levels down and leaves out what
/// lies deeper: QtXml would copy and write that at the risk of the stack.
///
/// Names of properties and attributes, and characters of texts, are not checked: what XML does not
/// allow makes a text that no parser takes. Bases of numbers are 2 to 36.
///
/// Objects have no QObject parent and belong to whoever makes them. They and their elements are
/// for one thread at a time. A handle of an element taken from an object does not keep the
/// object's document alive; keep the object, or a QDomDocument of the element, as long as it.
class TQXML_EXPORT XMLObject : public QObject
{
public:
    /// The kind of an element. Any number is a valid value; those not named here are "nobody".
    enum XMLOBJECT_TYPE : int {
        XMLOBJECT_PACKET = 0,
        XMLOBJECT_PACKETABLE = 1,
        XMLOBJECT_ACTION = 2,
        XMLOBJECT_UI = 3,
        XMLOBJECT_IMAGE = 4,
        XMLOBJECT_MSG = 5
    };

    /// An empty element of that kind, the only child of a document element "dummydoc".
    explicit XMLObject(XMLOBJECT_TYPE type);
    ~XMLObject() override;
    XMLObject(const XMLObject &) = delete;
    XMLObject &operator=(const XMLObject &) = delete;

    /// Replaces the content by a deep copy of the element, made in the object's own document. The
    /// kind stays, whatever the element's name; a null element leaves the object without one.
    virtual void setNode(const QDomElement &e);
    /// A deep copy of the object's element, in the same document, without a parent.
    QDomElement getNode() const;
    /// The object's element itself: changes through it change the object.
    const QDomElement &getNodeConst() const;

    /// @{
    /// Element name of a kind, or of the object's: "tqxml", "packetable", "action", "ui", "img" or
    /// "msg"; else "nobody".
    static QString rootNodeName(XMLOBJECT_TYPE type);
    QString rootNodeName() const;
    /// @}

    /// @{
    /// Text of a node, or of the object's element, with all below, indented by one blank per
    /// level. Attributes stand in no fixed order. What lies more than 384 levels below the node is
    /// left out.
    static QString toString(const QDomNode &n);
    QString toString() const;
    /// @}

    /// True when the element is named "packetable".
    static bool isXMLPacketable(const QDomElement &e);
    /// @{
    /// The object's kind, as constructed.
    bool isXMLPacketable() const;
    bool isXMLAction() const;
    bool isXMLUI() const;
    bool isXMLImage() const;
    bool isXMLMessage() const;
    /// @}

    /// A document whose document element has that name, in the namespace unless that is empty.
    [[nodiscard]] static QDomDocument createDocument(
        const QString &namespaceURI, const QString &qualifiedName);
    /// Makes the same document and drops it.
    static void createDocumentV(const QString &namespaceURI, const QString &qualifiedName);
    /// The document element; null when the document has none.
    static QDomElement getDocumentRoot(const QDomDocument &d);

    /// @{
    /// Appends a new element, or a text node, as the last child of parent. Returns a null node
    /// when parent is null or the name is empty.
    [[nodiscard]] static QDomElement createElement(QDomElement &parent, const QString &name);
    static void createElementV(QDomElement &parent, const QString &name);
    [[nodiscard]] static QDomText createTextNode(QDomElement &parent, const QString &text);
    static void createTextNodeV(QDomElement &parent, const QString &text);
    /// @}

    /// The first direct child whose node name is name, as an element: null when there is none or
    /// when that node is no element.
    static QDomElement getElement(const QDomElement &parent, const QString &name);

    /// @{
    /// Direct children of one kind, by node name. getNodesOfType() appends handles of the nodes
    /// themselves at the end of out, in document order, and returns how many.
    static bool hasNodesOfType(const QDomElement &parent, XMLOBJECT_TYPE t);
    static void removeNodesOfType(QDomElement &parent, XMLOBJECT_TYPE t);
    static int getNodesOfType(
        const QDomElement &parent, XMLOBJECT_TYPE t, std::list<QDomNode> &out);
    /// @}

    /// @{
    /// A property is the first direct child element of that name; its value is the text below it.
    /// The typed forms read 0, 0.0, false or an empty list where the text does not parse or does
    /// not fit 32 bits; a list is empty as soon as one member is unreadable. True is the number 1.
    static bool hasProperty(const QDomElement &e, const QString &name);
    static QString getProperty(const QDomElement &e, const QString &name);
    static int getPropertyInt(const QDomElement &e, const QString &name);
    static long getPropertyLong(const QDomElement &e, const QString &name);
    static unsigned int getPropertyUInt(const QDomElement &e, const QString &name, int base);
    static unsigned long getPropertyULong(const QDomElement &e, const QString &name, int base);
    static double getPropertyDouble(const QDomElement &e, const QString &name);
    static bool getPropertyBool(const QDomElement &e, const QString &name);
    static QList<int> getPropertyLongList(const QDomElement &e, const QString &name, int base);
    static QList<unsigned int> getPropertyULongList(
        const QDomElement &e, const QString &name, int base);
    /// @}

    /// @{
    /// Writes a property: appends the child element with one text node, or replaces the first text
    /// node of the one that is there. An existing element without any text node stays as it is.
    /// Where another kind of node has the name, it is found first, and another element is appended.
    /// A double keeps 6 significant digits; a negative number has a leading "-" in every base.
    static void setProperty(QDomElement &e, const QString &name, const QString &text);
    static void setProperty(QDomElement &e, const QString &name, double value);
    static void setProperty(QDomElement &e, const QString &name, unsigned int value, int base);
    static void setProperty(QDomElement &e, const QString &name, int value);
    static void setProperty(QDomElement &e, const QString &name, bool value);
    static void setProperty(QDomElement &e, const QString &name, const QList<int> &list, int base);
    static void setProperty(
        QDomElement &e, const QString &name, const QList<unsigned int> &list, int base);
    /// UTF-8 text; without this form a literal would be stored as a bool.
    static void setProperty(QDomElement &e, const QString &name, const char *text)
    {
        setProperty(e, name, QString::fromUtf8(text));
    }
    template<typename T>
    static void setProperty(QDomElement &e, const QString &name, T *) = delete;
    /// @}

    /// @{
    /// An attribute of the element; null, 0, 0.0 or false when absent or unreadable, like
    /// properties. With an empty name nothing is asked.
    static QString getAttribute(const QDomElement &e, const QString &name);
    static int getAttributeInt(const QDomElement &e, const QString &name);
    static long getAttributeLong(const QDomElement &e, const QString &name);
    static unsigned int getAttributeUInt(const QDomElement &e, const QString &name, int base);
    static unsigned long getAttributeULong(const QDomElement &e, const QString &name, int base);
    static double getAttributeDouble(const QDomElement &e, const QString &name);
    static bool getAttributeBool(const QDomElement &e, const QString &name);
    /// @}

    /// @{
    /// Writes or removes an attribute; an empty name or an empty text changes nothing. A double
    /// keeps 12 significant digits.
    static void setAttribute(QDomElement &e, const QString &name, const QString &value);
    static void setAttribute(QDomElement &e, const QString &name, int value);
    static void setAttribute(QDomElement &e, const QString &name, unsigned int value, int base);
    static void setAttribute(QDomElement &e, const QString &name, bool value);
    static void setAttribute(QDomElement &e, const QString &name, double value);
    /// UTF-8 text; without this form a literal would be stored as a bool.
    static void setAttribute(QDomElement &e, const QString &name, const char *value)
    {
        setAttribute(e, name, QString::fromUtf8(value));
    }
    template<typename T>
    static void setAttribute(QDomElement &e, const QString &name, T *) = delete;
    static void removeAttribute(QDomElement &e, const QString &name);
    /// @}

    /// @{
    /// Number lists: members in the given base, joined by one blank. Reading skips what does not
    /// parse or does not fit 32 bits and then sets *ok to false, else to true; an empty text leaves
    /// *ok alone, and ok may be null.
    static QString toString(const QList<int> &list, int base);
    static QString toString(const QList<unsigned int> &list, int base);
    static QList<int> toLongList(const QString &text, bool *ok, int base);
    static QList<unsigned int> toULongList(const QString &text, bool *ok, int base);
    /// @}

    /// Namespace of the packet document.
    static const QString TQ_NAMESPACE;
    /// Separator of number lists, one blank.
    static const QString NUMLIST_SEP;

protected:
    /// The object's element, made on first use.
    QDomElement &element() const;
    /// Makes e the object's element and keeps the document that owns it.
    void setElement(const QDomElement &e);

private:
    friend class XMLPacket;  // moves elements of other objects into its body

    const XMLOBJECT_TYPE m_type;
    mutable QDomDocument m_document;  // private to the object; null until first used
    mutable QDomElement m_element;
    QDomDocument m_owner;  // owns m_element when it left m_document; nodes keep no document alive
};

#endif

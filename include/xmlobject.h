#ifndef XMLOBJECT_H
#define XMLOBJECT_H

#include "tqxml_export.h"

#include <QDomDocument>
#include <QList>
#include <QObject>
#include <QString>

#include <list>
#include <memory>

class XMLAction;
class XMLImage;
class XMLMessage;
class XMLPacket;
class XMLUI;

namespace TQXmlInternal {
class Draft;
}

/// Base of everything that is held as XML. An object owns one element of a known kind, in a
/// document of its own. The class also has the static functions with which all kinds read and write
/// their elements.
///
/// No function reports an error. What is absent or unreadable reads as 0, false, a null string or
/// an empty list. What cannot be done changes nothing. Null elements are allowed everywhere.
///
/// A deep copy, in this class and in all that derive from it, has at most 384 levels; what is
/// deeper is left out, because QtXml copies and writes recursively and would run out of stack.
///
/// Names of properties and attributes, and the characters of texts, are not checked: with
/// characters that XML does not allow, the written document cannot be parsed. Bases of numbers are
/// 2 to 36.
///
/// Objects have no QObject parent; who makes an object owns it. An object and its elements may be
/// used in one thread at a time. A QDomElement does not keep its document alive: keep the object,
/// or the element's ownerDocument(), as long as you use the element.
class TQXML_EXPORT XMLObject : public QObject
{
public:
    /// The kind of an element. Any number is valid; the name of an unknown kind is "nobody".
    enum XMLOBJECT_TYPE : int {
        XMLOBJECT_PACKET = 0,
        XMLOBJECT_PACKETABLE = 1,
        XMLOBJECT_ACTION = 2,
        XMLOBJECT_UI = 3,
        XMLOBJECT_IMAGE = 4,
        XMLOBJECT_MSG = 5
    };

    /// Makes an empty element of that kind, in a document whose root is named "dummydoc".
    explicit XMLObject(XMLOBJECT_TYPE type);
    ~XMLObject() override;
    XMLObject(const XMLObject &) = delete;
    XMLObject &operator=(const XMLObject &) = delete;

    /// Replaces the object's element by a deep copy of \a e, made in the object's own document. The
    /// kind of the object stays the same, whatever the name of \a e. After a null element the
    /// object has no element.
    virtual void setNode(const QDomElement &e);
    /// A deep copy of the object's element, in the same document, without a parent.
    QDomElement getNode() const;
    /// The object's element itself: a change of it is a change of the object.
    const QDomElement &getNodeConst() const;

    /// @{
    /// The element name of a kind, or of the object's kind: "tqxml", "packetable", "action", "ui",
    /// "img" or "msg", and "nobody" for all others.
    static QString rootNodeName(XMLOBJECT_TYPE type);
    QString rootNodeName() const;
    /// @}

    /// @{
    /// XML text of a node, or of the object's element, with everything below it, indented by one
    /// blank per level. The order of attributes is not defined. What is more than 384 levels below
    /// the node is left out.
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

    /// A document whose root element has that name, and that namespace unless it is empty.
    [[nodiscard]] static QDomDocument createDocument(
        const QString &namespaceURI, const QString &qualifiedName);
    /// Makes the same document and deletes it.
    static void createDocumentV(const QString &namespaceURI, const QString &qualifiedName);
    /// The root element of a document; null when it has none.
    static QDomElement getDocumentRoot(const QDomDocument &d);

    /// @{
    /// Append a new element or text node as the last child of parent. They return a null node when
    /// parent is null or the name is empty.
    [[nodiscard]] static QDomElement createElement(QDomElement &parent, const QString &name);
    static void createElementV(QDomElement &parent, const QString &name);
    [[nodiscard]] static QDomText createTextNode(QDomElement &parent, const QString &text);
    static void createTextNodeV(QDomElement &parent, const QString &text);
    /// @}

    /// The first direct child whose node name is \a name. Null when there is none, or when that
    /// child is not an element.
    static QDomElement getElement(const QDomElement &parent, const QString &name);

    /// @{
    /// The direct children of one kind, found by node name. getNodesOfType() appends them to \a out
    /// in document order, not copies, and returns how many there are.
    static bool hasNodesOfType(const QDomElement &parent, XMLOBJECT_TYPE t);
    static void removeNodesOfType(QDomElement &parent, XMLOBJECT_TYPE t);
    static int getNodesOfType(
        const QDomElement &parent, XMLOBJECT_TYPE t, std::list<QDomNode> &out);
    /// @}

    /// @{
    /// A property is the first direct child element with that name; its value is the text in it.
    /// The typed getters return 0, 0.0, false or an empty list when the text is not such a value or
    /// does not fit into 32 bits. A list with one unreadable member is empty. True is written as 1.
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
    /// Set a property. If there is no such child element, one with a text node is appended; else
    /// the text of its first text node is replaced. If it has no text node, nothing changes. If the
    /// first child with that name is not an element, a new element is appended in every call.
    /// A double keeps 6 significant digits. A negative number starts with "-" in every base.
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
    /// An attribute of the element: a null string, 0, 0.0 or false when it is absent or unreadable.
    /// An empty name counts as absent.
    static QString getAttribute(const QDomElement &e, const QString &name);
    static int getAttributeInt(const QDomElement &e, const QString &name);
    static long getAttributeLong(const QDomElement &e, const QString &name);
    static unsigned int getAttributeUInt(const QDomElement &e, const QString &name, int base);
    static unsigned long getAttributeULong(const QDomElement &e, const QString &name, int base);
    static double getAttributeDouble(const QDomElement &e, const QString &name);
    static bool getAttributeBool(const QDomElement &e, const QString &name);
    /// @}

    /// @{
    /// Set or remove an attribute. An empty name or an empty text changes nothing. A double keeps
    /// 12 significant digits.
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
    /// Number lists: the members in the given base, separated by one blank. Reading skips members
    /// that are not numbers or do not fit into 32 bits; *ok then becomes false, else true. An empty
    /// text does not change *ok. ok may be null.
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
    /// Makes \a e the object's element, and keeps a handle of its document.
    void setElement(const QDomElement &e);

private:
    friend class XMLPacket;  // moves elements of other objects into its body

    // Those whose attributes are set without building the element.
    friend class XMLAction;
    friend class XMLImage;
    friend class XMLMessage;
    friend class XMLUI;

    // Changes nothing if the name or the value is empty.
    void setOwnAttribute(const QString &name, const QString &value);
    QDomDocument &ownDocument() const;
    TQXmlInternal::Draft takeDraft() const;
    void leaveHolder();

    // The element is in one of three states: a draft of its own; a draft in an unbuilt packet,
    // which is m_holder; or built.
    const XMLOBJECT_TYPE m_type;
    int m_place = 0;  // in the body of m_holder
    XMLPacket *m_holder = nullptr;
    mutable std::unique_ptr<TQXmlInternal::Draft> m_draft;  // null if it has no attributes
    mutable QDomDocument m_document;  // the object's own; null until first used
    mutable QDomElement m_element;
    QDomDocument m_owner;  // of m_element, if not m_document: a node does not own its document
    mutable bool m_isBuilt = false;
};

#endif

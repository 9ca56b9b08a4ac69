#ifndef XMLPACKETABLE_H
#define XMLPACKETABLE_H

#include "xmlobject.h"
#include "xpkreference.h"

#include "tqstorageclass.h"
#include "tqtypes.h"

#include <QStringRef>

class ArchiveNode;
class TQCommServer;
class TQPacketable;

/// The XML form of one server item: an element "packetable" with the item's name, key, data type
/// and two flags as attributes, and an "item" child that holds its fields.
///
/// Fields are elements named "_" and the data tag in hexadecimal; lists are "list" elements that
/// hold further items. All numbers that are written here are lower-case hexadecimal. Conversions
/// follow items and lists to ::TQMAX_NESTING levels and leave out what lies deeper, like everything
/// that has no counterpart on the other side.
///
/// The object caches the server item built from its element; see getDataConst().
class TQXML_EXPORT XMLPacketable : public XMLObject
{
public:
    XMLPacketable();
    /// Deletes the cached server item.
    ~XMLPacketable() override;

    /// @{
    /// The item's flags, boolean attributes that read false when absent.
    virtual void setCurrent(bool current);
    virtual bool isCurrent() const;
    static void setReplacement(QDomElement &e, bool replacement);
    void setReplacement(bool replacement);
    static bool isReplacement(const QDomElement &e);
    bool isReplacement() const;
    static void clearReplacement(QDomElement &e);
    void clearReplacement();
    /// @}

    /// @{
    /// Attribute "name": an empty text leaves the earlier one; a null string when absent.
    static void setName(QDomElement &e, const QString &name);
    virtual void setName(const QString &name);
    static QString getName(const QDomElement &e);
    virtual QString getName() const;
    /// @}

    /// @{
    /// Database key, attributes "key" and "hkey"; each word reads 0 when absent or unreadable.
    static void setDBkey(QDomElement &e, const TQKEY_ELEMENT &key);
    virtual void setDBkey(const TQKEY_ELEMENT &key);
    static TQKEY_ELEMENT getDBkey(const QDomElement &e);
    virtual TQKEY_ELEMENT getDBkey() const;
    /// @}

    /// @{
    /// Data type, attribute "datatype"; 0 when absent or unreadable.
    static void setType(QDomElement &e, PACKETDATATYPES type);
    virtual void setType(PACKETDATATYPES type);
    static PACKETDATATYPES getType(const QDomElement &e);
    virtual PACKETDATATYPES getType() const;
    /// @}

    /// @{
    /// Element name of a data tag, "_" and the tag in hexadecimal (with "-" when negative), and
    /// the name without its first character, whatever that is.
    static QString getXMLTagNameFromDATATAG(int tag);
    static QString getDATATAGFromXMLTagName(const QString &name);
    /// @}

    /// The item's own "item" element: the first below a packetable element, at any depth, of the
    /// same data type. A null node when e is no packetable element or has none.
    static QDomNode getPacketableItemNode(const QDomElement &e);
    /// The children of that element; an empty list when there is none.
    static QDomNodeList getPacketableItemTagNodes(const QDomElement &e);
    /// @{
    /// The first element below e, at any depth, that is named by the data tag, or an attribute of
    /// it; a null node or a null string when there is none.
    static QDomNode getTagNode(const QDomElement &e, int tag);
    static QString getTagAttribute(const QDomElement &e, int tag, QString attribute);
    /// @}
    /// @{
    /// Packetable elements of that data type directly below root: the first one, or all. The list
    /// is not cleared; the number appended is returned.
    static QDomNode getFirstPacketableNodeOfType(const QDomElement &root, PACKETDATATYPES type);
    static int getPacketableNodesOfType(
        const QDomElement &root, PACKETDATATYPES type, std::list<QDomNode> &out);
    /// @}
    /// The first record of a conversion table with that data tag; null when there is none or the
    /// table is null. The record stays the server library's.
    static CONVERTSTRUCTELEMENTINFO *getConvStructFromDataTag(
        CONVERTSTRUCTELEMENTINFO *table, unsigned int tag);
    /// Cuts a line at its first blank; without a blank both references stay as they were. They
    /// refer to the line, which must outlive them unchanged.
    static void getTagValuePair(QString &line, QStringRef &tag, QStringRef &value);

    /// @{
    /// Builders: each appends a new element to parent. Values are stored as they stand; an empty
    /// one is not stored. The texts of the compound forms are those of the packet text:
    /// "SIZE DATA" for binary data, "COUNT A<CR>B" for string arrays, "COUNT A B" for number
    /// arrays and "KEY HKEY" for keys, counts in hexadecimal. A text that does not fit its form
    /// leaves the element bare; a string array keeps its size.
    [[nodiscard]] static QDomElement createListElement(QDomElement &parent, const QString &size);
    static void createListElementV(QDomElement &parent, const QString &size);
    [[nodiscard]] static QDomElement createItemElement(
        QDomElement &parent, const QString &datatype);
    static void createItemElementV(QDomElement &parent, const QString &datatype);
    [[nodiscard]] static QDomElement createSimpleElement(
        QDomElement &parent, const QString &name, const QString &value);
    static void createSimpleElementV(
        QDomElement &parent, const QString &name, const QString &value);
    static void createBinaryDataElementV(
        QDomElement &parent, const QString &name, const QString &text);
    [[nodiscard]] static QDomElement createStringArrayElement(
        QDomElement &parent, const QString &name, const QString &text);
    static void createStringArrayElementV(
        QDomElement &parent, const QString &name, const QString &text);
    [[nodiscard]] static QDomElement createNumberArrayElement(
        QDomElement &parent, const QString &name, const QString &text);
    static void createNumberArrayElementV(
        QDomElement &parent, const QString &name, const QString &text);
    [[nodiscard]] static QDomElement createTQKEYElement(
        QDomElement &parent, const QString &name, const QString &text);
    static void createTQKEYElementV(QDomElement &parent, const QString &name, const QString &text);
    /// @}

    /// Appends a packetable element of that type with an empty item of it, and returns it.
    static QDomElement getEmptyNodeOfType(QDomElement &parent, PACKETDATATYPES type);

    /// Makes a deep copy of the node the content, and drops the cache. The copy stays in the
    /// node's document, which the object keeps alive. A node that is no element leaves the object
    /// without one.
    void setData(const QDomNode &node);
    /// Takes type, key and name from the server item, and appends its fields. Earlier children
    /// stay: a second call gives a second item element.
    void setData(const TQPacketable &packetable);
    /// Takes the node's item, and puts a copy of every item that it refers to, and of what those
    /// refer to, into the field that refers to it. ICC profiles are loaded from the server first.
    /// A node is inlined once along a path, not again below itself; one call inlines at most 64
    /// levels and 100,000 items.
    void setData(TQCommServer &server, const ArchiveNode *node);
    /// A new item, owned by the caller, filled by setData(server, node); null for a null node.
    [[nodiscard]] static XMLPacketable *fromArchiveNode(TQCommServer &server, ArchiveNode *node);
    /// Puts a copy of the child node's item, with all that it refers to, into every field of this
    /// item that refers to it by key or, when its key is not valid, by name. Names are compared as
    /// Latin-1 text: only those in ASCII match what the fields hold. Does nothing unless this item
    /// has a cached server item.
    void insertInlineData(TQCommServer &server, const ArchiveNode *child);
    /// Appends a new reference, owned by the caller, for each field that holds an inlined item;
    /// true when there was one. Items inside the item's lists are not searched.
    bool getXPKReferences(QList<XPKReference *> &references) const;
    /// Does nothing.
    void nullifyReference(XPKReference *reference);

    /// Appends the content of lines, from index on, to parent, and returns the index at which it
    /// stopped: that of the terminator that ends the parent, or one behind the last line for each
    /// level that was left open. Line feeds inside a line are text.
    unsigned int toDom(QDomElement &parent, QStringList &lines, unsigned int index);

    /// The packet text of an element's content; a null string without any child node.
    ///
    /// The form has no escaping: values are written as they stand, and a line feed in one starts a
    /// new line. Check XML from strangers for line feeds (and, in string arrays, carriage returns)
    /// in attributes and texts before it is converted.
    QString toPacket(const QDomElement &e) const;
    /// @{
    /// One line of packet text for a field's element. An empty simple value gives no line (a null
    /// string); all others always give one. Values are written as they stand, see toPacket().
    void appendSimpleValuePacket(QString &out, const QDomElement &e) const;
    QString toSimpleValuePacket(const QDomElement &e) const;
    QString toTQKEYValuePacket(const QDomElement &e) const;
    QString toNumberArrayValuePacket(const QDomElement &e) const;
    QString toStringArrayValuePacket(const QDomElement &e) const;
    void appendBinaryDataPacket(QString &out, const QDomElement &e) const;
    /// @}

    /// The server item built from the element; null when the server library does not know the type
    /// or refuses the text. Built on first use and owned by the object: valid until setData() or
    /// the object's end, and not to be changed. Later changes of the element do not reach it.
    /// The element's text goes through toPacket(); see there.
    TQPacketable *getDataConst();
    /// A new copy of that server item, owned by the caller; null when it cannot be built. The
    /// element's text goes through toPacket(); see there.
    [[nodiscard]] TQPacketable *getData();

    /// @{
    /// First words of the lines that open and close lists and items.
    static const QString START_LIST;
    static const QString END_LIST;
    static const QString START_ITEM;
    static const QString END_ITEM;
    /// @}
    /// @{
    /// Element and attribute names.
    static const QString LIST;
    static const QString SIZE;
    static const QString ITEM;
    static const QString DATATYPE;
    static const QString VALUE;
    static const QString NAME;
    static const QString KEY;
    static const QString HKEY;
    static const QString IS_CURRENT;
    static const QString IS_REPLACEMENT;
    /// @}

private:
    class Inlining;

    void dropCache();

    TQPacketable *m_packetable = nullptr;  // owned; null until built
};

#endif

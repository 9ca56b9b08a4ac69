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
/// hold further items. All numbers are written in lower-case hexadecimal. Conversions follow
/// ::TQMAX_NESTING levels of items and lists. They leave out what is deeper, and everything that
/// has no counterpart on the other side.
///
/// The object caches the server item that it builds from its element; see getDataConst().
class TQXML_EXPORT XMLPacketable : public XMLObject
{
public:
    XMLPacketable();
    /// Deletes the cached server item.
    ~XMLPacketable() override;

    /// @{
    /// The item's flags: boolean attributes "is_current" and "is_replacement", false when absent.
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
    /// Attribute "name". Setting an empty text changes nothing; a null string when absent.
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
    /// The element name of a data tag: "_" and the tag in hexadecimal (with "-" when negative). The
    /// reverse removes the first character of the name, whatever it is.
    static QString getXMLTagNameFromDATATAG(int tag);
    static QString getDATATAGFromXMLTagName(const QString &name);
    /// @}

    /// The item's own "item" element: the first element "item" of the same data type below a
    /// packetable element, at any depth. Null when \a e is not a packetable element or has none.
    static QDomNode getPacketableItemNode(const QDomElement &e);
    /// The children of that element; an empty list when there is none.
    static QDomNodeList getPacketableItemTagNodes(const QDomElement &e);
    /// @{
    /// The first element below \a e, at any depth, with the name of that data tag, or one of its
    /// attributes. A null node or a null string when there is none.
    static QDomNode getTagNode(const QDomElement &e, int tag);
    static QString getTagAttribute(const QDomElement &e, int tag, QString attribute);
    /// @}
    /// @{
    /// The packetable elements of that data type directly below \a root: the first, or all. The
    /// list is not cleared; the number of appended elements is returned.
    static QDomNode getFirstPacketableNodeOfType(const QDomElement &root, PACKETDATATYPES type);
    static int getPacketableNodesOfType(
        const QDomElement &root, PACKETDATATYPES type, std::list<QDomNode> &out);
    /// @}
    /// The first record of a conversion table with that data tag; null when there is none or the
    /// table is null. The server library owns the record.
    static CONVERTSTRUCTELEMENTINFO *getConvStructFromDataTag(
        CONVERTSTRUCTELEMENTINFO *table, unsigned int tag);
    /// Splits a line at its first blank. Without a blank, both references stay as they were. They
    /// refer to the line: do not change or delete it while you use them.
    static void getTagValuePair(QString &line, QStringRef &tag, QStringRef &value);

    /// @{
    /// Builders: each appends a new element to \a parent. Values are not checked; an empty value is
    /// not stored. Compound values have the form of packet text: "SIZE DATA" for binary data,
    /// "COUNT A<CR>B" for string arrays, "COUNT A B" for number arrays and "KEY HKEY" for keys,
    /// with counts in hexadecimal. If the text does not have its form, the element stays empty; a
    /// string array keeps its size.
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

    /// Replaces the object's element by a deep copy of \a node, and deletes the cached item. The
    /// copy belongs to the node's document, which the object keeps alive. If the node is not an
    /// element, the object has none afterwards.
    void setData(const QDomNode &node);
    /// Takes type, key and name from the server item and appends its fields. Children that are
    /// there already stay: a second call appends a second "item" element.
    void setData(const TQPacketable &packetable);
    /// Takes the item of the archive node. Each field that refers to another item gets a copy of
    /// that item, which is filled in the same way. The data of ICC profiles is loaded from the
    /// server. A node is not inlined below itself. One call inlines at most 64 levels and 100,000
    /// items.
    void setData(TQCommServer &server, const ArchiveNode *node);
    /// A new item, owned by the caller, filled by setData(server, node); null for a null node.
    [[nodiscard]] static XMLPacketable *fromArchiveNode(TQCommServer &server, ArchiveNode *node);
    /// Puts a copy of the child node's item, filled like by setData(server, node), into every field
    /// of this item that refers to it: by key or, when the child's key is not valid, by name. The
    /// child's name is read as Latin-1, so only ASCII names match. Does nothing unless this item
    /// has a cached server item.
    void insertInlineData(TQCommServer &server, const ArchiveNode *child);
    /// Appends a new reference for each field that holds an inlined item; the caller owns them.
    /// Returns whether there was one. Items in the item's lists are not searched.
    bool getXPKReferences(QList<XPKReference *> &references) const;
    /// Does nothing.
    void nullifyReference(XPKReference *reference);

    /// Reads packet text: appends what the lines from \a index on contain to \a parent. Returns the
    /// index of the line that closed \a parent. If no line did, returns the number of lines plus
    /// one for each level that was still open below \a parent. A line feed inside a line is text.
    unsigned int toDom(QDomElement &parent, QStringList &lines, unsigned int index);

    /// The packet text of an element's content; a null string without any child node.
    ///
    /// Packet text has no escaping: a line feed in a value starts a new line. Before you convert
    /// untrusted XML, check its attributes and texts for line feeds, and string arrays also for
    /// carriage returns.
    QString toPacket(const QDomElement &e) const;
    /// @{
    /// The line of packet text for a field's element. A simple field without a value has no line (a
    /// null string); every other field has one. Values are not escaped, see toPacket().
    void appendSimpleValuePacket(QString &out, const QDomElement &e) const;
    QString toSimpleValuePacket(const QDomElement &e) const;
    QString toTQKEYValuePacket(const QDomElement &e) const;
    QString toNumberArrayValuePacket(const QDomElement &e) const;
    QString toStringArrayValuePacket(const QDomElement &e) const;
    void appendBinaryDataPacket(QString &out, const QDomElement &e) const;
    /// @}

    /// The server item for the element. It is built on first use from the element's packet text,
    /// see toPacket(). Null when the server library does not know the type or refuses the text. The
    /// object owns the item until setData() or its own end. Do not change the item. Later changes
    /// of the element do not change it.
    TQPacketable *getDataConst();
    /// A new copy of that server item, which the caller owns. Null when it cannot be built.
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

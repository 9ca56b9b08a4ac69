#ifndef XMLPACKET_H
#define XMLPACKET_H

#include "xmlobject.h"

#include <memory>
#include <optional>
#include <vector>

QT_FORWARD_DECLARE_CLASS(QIODevice)

class TQPacketable;
class XMLAction;
class XMLImage;
class XMLMessage;
class XMLPacketable;
class XMLRouter;
class XMLUI;

namespace TQXmlInternal {
class BodyItem;
class XmlWriter;
}

/// What agents exchange: a document "tqxml" with a header that names source and destination, and
/// a body that holds any number of items.
///
/// The document is built when somebody asks for one of its nodes: by getNodesOfType(), by append(),
/// or by appendV() of an item that is built itself, because it has children or was looked at. It
/// is also built when an item that was appended by appendV() is used again or outlives the packet.
/// Until then a packet holds only ids, the packet text of server items, and the attributes of other
/// items. All other functions work without a document.
///
/// A packet belongs to its creator until XMLRouter::send() takes it over, and to the receiving
/// agent from receive() on. What XMLObject offers on the object's own element (getNode(),
/// toString() and the like) shows an empty element, not the packet document.
class TQXML_EXPORT XMLPacket : public XMLObject
{
public:
    XMLPacket();
    ~XMLPacket() override;

    /// Makes this packet an independent copy of \a other.
    virtual XMLPacket &operator=(const XMLPacket &other);
    /// @{
    /// Whether the two documents are equal. Ids, items and their order, attributes and all texts
    /// count; the order of the attributes in an element does not.
    virtual bool operator==(const XMLPacket &other) const;
    virtual bool operator!=(const XMLPacket &other) const;
    /// @}
    XMLPacket(const XMLPacket &) = delete;

    /// Resets the packet: empty if \a other is null, else an independent copy of \a other.
    void init(const XMLPacket *other);

    /// @{
    /// Agent ids of the header; 0 when absent.
    int getSourceAgentID() const;
    int getDestinationAgentID() const;
    void setSourceAgentID(int agentID);
    void setDestinationAgentID(int agentID);
    /// @}

    /// True when the body has no child nodes.
    bool isEmpty() const;
    /// @{
    /// XMLObject's operations of the same names on the body.
    bool hasNodesOfType(XMLOBJECT_TYPE t) const;
    int getNodesOfType(XMLOBJECT_TYPE t, std::list<QDomNode> &out) const;
    /// @}

    /// @{
    /// Append a deep copy of the item's element to the body and return the copy.
    QDomElement append(XMLPacketable &item);
    QDomElement append(XMLAction &item);
    QDomElement append(XMLUI &item);
    QDomElement append(XMLImage &item);
    QDomElement append(XMLMessage &item);
    /// @}

    /// @{
    /// Move the item's own element to the end of the body. Item and packet then share the element;
    /// either may be deleted first, in the same thread. An element that contains the body is not
    /// moved.
    void appendV(XMLPacketable &item);
    void appendV(XMLAction &item);
    void appendV(XMLUI &item);
    void appendV(XMLImage &item);
    void appendV(XMLMessage &item);
    /// @}

    /// @{
    /// Convert a server item and append it, marked as current or not. The item is read during the
    /// call and not needed afterwards. appendV() only stores its packet text; the element is made
    /// when somebody asks for a node.
    QDomElement append(TQPacketable &p, bool current);
    void appendV(TQPacketable &p, bool current);
    /// @}

    /// Writes the document as UTF-8 to a device, which is not owned. Attributes are sorted by name,
    /// after the namespace, so equal packets give equal bytes. The document is not built for it.
    /// Returns false when the device is null, not open for writing or did not take all bytes.
    bool write(QIODevice *device) const;
    /// Writes the same to standard output, through stdio.
    void print() const;

    /// @{
    /// Names of the document's elements and of the attribute that holds an agent id.
    static const QString HEADER;
    static const QString SOURCE;
    static const QString DESTINATION;
    static const QString BODY;
    static const QString AGENT_ID;
    /// @}

private:
    friend class XMLObject;  // shares the element of an object that was appended
    friend class XMLRouter;  // marks what it has taken over

    // The document and its elements, once somebody has asked for a node.
    struct Tree;

    Tree &tree() const;
    bool showsSource() const;
    bool showsDestination() const;
    QDomElement appendCopy(const XMLObject &item);
    void appendMoved(XMLObject &item);
    void forgetObject(int place);
    void releaseObjects();
    void writeUnbuilt(TQXmlInternal::XmlWriter &writer) const;

    bool m_isTaken = false;  // by a router; false while the packet is an agent's
    std::optional<int> m_source;  // the ids, while there is no tree
    std::optional<int> m_destination;
    mutable std::vector<TQXmlInternal::BodyItem> m_items;  // of the body
    mutable std::unique_ptr<Tree> m_tree;  // null until built; then it holds everything
};

#endif

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
class PacketItem;
class XmlWriter;
}

/// What agents exchange: a document "tqxml" with a header that names source and destination, and
/// a body that holds any number of items.
///
/// The document is built when somebody asks for one of its nodes, with getNodesOfType() or an
/// append() or appendV() of anything but a server item. Until then a packet costs little more than
/// what it carries: ids and the packet text of items. All other operations work without it.
///
/// A packet belongs to its creator until XMLRouter::send() takes it over, and to the receiving
/// agent from receive() on. What XMLObject offers on the object's own element (getNode(),
/// toString() and the like) shows an empty element, not the packet document.
class TQXML_EXPORT XMLPacket : public XMLObject
{
public:
    XMLPacket();
    ~XMLPacket() override;

    /// Becomes an independent copy of other.
    virtual XMLPacket &operator=(const XMLPacket &other);
    /// @{
    /// Whether the two documents say the same: ids, items, their order, attributes and all texts
    /// count; the order of an element's attributes does not.
    virtual bool operator==(const XMLPacket &other) const;
    virtual bool operator!=(const XMLPacket &other) const;
    /// @}
    XMLPacket(const XMLPacket &) = delete;

    /// Starts again: empty with null, else as an independent copy of other.
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
    /// Appends a deep copy of the item's element to the body and returns the copy.
    QDomElement append(XMLPacketable &item);
    QDomElement append(XMLAction &item);
    QDomElement append(XMLUI &item);
    QDomElement append(XMLImage &item);
    QDomElement append(XMLMessage &item);
    /// @}

    /// @{
    /// Moves the item's own element to the end of the body. Item and packet share it from then on,
    /// and either may be deleted first. An element that the body lies in stays where it is.
    void appendV(XMLPacketable &item);
    void appendV(XMLAction &item);
    void appendV(XMLUI &item);
    void appendV(XMLImage &item);
    void appendV(XMLMessage &item);
    /// @}

    /// @{
    /// Converts a server item and appends it, marked as current or not. The item is only read, and
    /// not needed afterwards. appendV() keeps the item's text and leaves the rest for the time when
    /// somebody asks for a node.
    QDomElement append(TQPacketable &p, bool current);
    void appendV(TQPacketable &p, bool current);
    /// @}

    /// Writes the document as UTF-8 to a device, which is not owned and must be open for writing:
    /// the namespace first, then the attributes of each element by name. Equal packets give equal
    /// bytes. Nothing is built for it. False when the device did not take all, is null or cannot be
    /// written to.
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
    friend class XMLRouter;  // marks what it has taken over

    // The document and its elements, once somebody has asked for a node.
    struct Tree;

    Tree &tree() const;
    bool showsSource() const;
    bool showsDestination() const;
    QDomElement appendCopy(const XMLObject &item);
    void appendMoved(XMLObject &item);
    void writeUnbuilt(TQXmlInternal::XmlWriter &writer) const;

    std::optional<int> m_source;  // the ids, until there is a tree; nothing until set
    std::optional<int> m_destination;
    mutable std::vector<TQXmlInternal::PacketItem> m_items;  // of the body
    mutable std::unique_ptr<Tree> m_tree;  // holds everything, once it is there
    bool m_isTaken = false;  // by a router; false while the packet is an agent's
};

#endif

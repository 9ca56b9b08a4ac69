#ifndef XMLPACKET_H
#define XMLPACKET_H

#include "xmlobject.h"

#include <QPointer>

class TQPacketable;
class XMLAction;
class XMLImage;
class XMLMessage;
class XMLPacketable;
class XMLRouter;
class XMLUI;

/// What agents exchange: a document "tqxml" with a header that names source and destination, and
/// a body that holds any number of items.
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

    /// Makes the packet anew, empty with null, else as an independent copy of other.
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
    /// Converts a server item and appends it, marked as current or not. The item is only read.
    QDomElement append(TQPacketable &p, bool current);
    void appendV(TQPacketable &p, bool current);
    /// @}

    /// Writes the document's text to standard output, as UTF-8.
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

    bool isShown(const QDomElement &id) const;  // unless an application took it out of the document
    QDomElement appendCopy(const XMLObject &item);
    void appendMoved(XMLObject &item);

    QDomDocument m_packetDocument;
    QDomElement m_root;
    QDomElement m_header;
    QDomElement m_source;
    QDomElement m_destination;
    QDomElement m_body;
    QPointer<QObject> m_takenBy;  // the router that holds the packet; null while it is an agent's
};

#endif

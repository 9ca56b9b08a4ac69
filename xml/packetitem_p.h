#ifndef TQXML_PACKETITEM_P_H
#define TQXML_PACKETITEM_P_H

#include "tqtypes.h"

#include <QDomElement>

#include <memory>
#include <string>

class TQPacketable;

namespace TQXmlInternal {

class XmlWriter;

// A server item in a packet, kept as its packet text and the values of the attributes of its
// "packetable" element. When somebody asks for the element, that takes the place of the text.
class PacketItem
{
public:
    // Reads the server item; it is not needed afterwards.
    PacketItem(const TQPacketable &item, bool isCurrent);
    PacketItem(const PacketItem &other);
    PacketItem(PacketItem &&) noexcept = default;
    PacketItem &operator=(PacketItem &&) noexcept = default;
    ~PacketItem() = default;

    // False when the server library gave no text, or more than INT_MAX bytes. Such an item has
    // attributes only.
    bool hasText() const { return m_text != nullptr; }

    // Sets the attributes of a "packetable" element and appends the content.
    void fill(QDomElement &packetable) const;
    // Appends the item's element to parent, which is not null, and returns it.
    QDomElement appendTo(QDomElement &parent) const;
    void write(XmlWriter &writer) const;

    // Whether both items have the same element.
    bool operator==(const PacketItem &other) const;

private:
    bool hasSameContent(const PacketItem &other) const;

    using Free = void (*)(void *);
    unsigned int m_length = 0;  // declared before the text, which sets it
    std::unique_ptr<char, Free> m_text;
    PACKETDATATYPES m_type;
    TQKEY_ELEMENT m_key;
    bool m_isCurrent;
    std::string m_name;  // UTF-8
};

}  // namespace TQXmlInternal

#endif

#ifndef ITEM_H
#define ITEM_H

#include <QByteArray>
#include <QDomDocument>

#include <memory>
#include <string>

class TextItem;

// The mixed item that the figures are about: 12 simple values, 3 keys, 2 number arrays of 8, a
// string array of 4, 200 bytes of binary data and a list of two items of 3 fields.
namespace Item {

// Packet text of that many such items, one after the other.
QByteArray text(int items = 1);

// Packet text of one item with a further simple value at its end.
std::string textEndingWith(const std::string &value);

// Builds the same tree below parent, with direct QtXml calls, from UTF-8 values.
void build(QDomDocument &document, QDomElement &parent);

// The same in a "packetable" element, a child of parent.
void buildPacketable(QDomDocument &document, QDomElement &parent);

// The forms of its fields, and that of a tag.
enum Form { Simple, Key, Numbers, Strings, Binary };
Form formOf(unsigned int tag);

// A server item that writes that text.
std::unique_ptr<TextItem> serverItem();

// Reads every name, attribute and text of the items below the node and returns how many characters
// they are.
qint64 walk(const QDomNode &node);

}  // namespace Item

#endif

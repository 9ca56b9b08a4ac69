#ifndef PACKETTEXT_P_H
#define PACKETTEXT_P_H

#include <QDomDocument>
#include <QStringList>
#include <QStringView>

#include <string>

// Reading and writing of packet text.

// Text that is being written: a field takes many short pieces, for which QString::append() costs
// more than reading them.
using PacketText = std::u16string;

inline void append(PacketText &out, QStringView piece)
{
    out.append(piece.utf16(), size_t(piece.size()));
}

// Appends what the text, in UTF-8, says to parent.
void readPacketText(QDomElement &parent, const char *text, size_t length);

// Appends what the lines from index on say to parent; returns the index of the terminator that
// ended it, or, behind the last line, one more for each level that was left open.
unsigned int readPacketLines(QDomElement &parent, const QStringList &lines, unsigned int index);

// Appends the text of an element's content.
void writePacketText(PacketText &out, const QDomElement &e);

// Appends the line of a field's element, which starts with its tag. A simple field without a value
// has none.
// @{
void writeSimple(PacketText &out, QStringView tag, const QDomElement &e);
void writeKey(PacketText &out, QStringView tag, const QDomElement &e);
void writeNumberArray(PacketText &out, QStringView tag, const QDomElement &e);
void writeStringArray(PacketText &out, QStringView tag, const QDomElement &e);
void writeBinary(PacketText &out, QStringView tag, const QDomElement &e);
// @}

#endif

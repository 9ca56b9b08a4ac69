#ifndef TQXML_PACKETTEXT_P_H
#define TQXML_PACKETTEXT_P_H

#include "fields_p.h"

#include <QDomDocument>
#include <QStringList>

namespace TQXmlInternal {

// Reading and writing of packet text.

// Appends what the text, in UTF-8, says to parent.
void readPacketText(const QDomElement &parent, const char *text, size_t length);

// Appends what the lines from index on say to parent; returns the index of the terminator that
// ended it, or, behind the last line, one more for each level that was left open.
unsigned int readPacketLines(
    const QDomElement &parent, const QStringList &lines, unsigned int index);

// Appends the text of an element's content.
void writePacketText(LineBuffer &out, const QDomElement &e);

}  // namespace TQXmlInternal

#endif

#ifndef TQXML_PACKETTEXT_P_H
#define TQXML_PACKETTEXT_P_H

#include "fields_p.h"

#include <QDomDocument>
#include <QStringList>

namespace TQXmlInternal {

// Reading and writing of packet text.

// Appends the elements of a text in UTF-8 to parent.
void readPacketText(const QDomElement &parent, const char *text, size_t length);

// Appends the elements of the lines from index on to parent. Returns the index of the line that
// closed the parent or, if none did, the number of lines plus the number of levels left open.
unsigned int readPacketLines(
    const QDomElement &parent, const QStringList &lines, unsigned int index);

// Appends the text of an element's content.
void writePacketText(LineBuffer &out, const QDomElement &e);

}  // namespace TQXmlInternal

#endif

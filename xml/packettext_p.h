#ifndef PACKETTEXT_P_H
#define PACKETTEXT_P_H

#include <QDomDocument>
#include <QStringList>

// Reading and writing of packet text.

// Appends what the text says to parent.
void readPacketText(QDomElement &parent, QStringView text);

// Appends what the lines from index on say to parent; returns the index of the terminator that
// ended it, or, behind the last line, one more for each level that was left open.
unsigned int readPacketLines(QDomElement &parent, const QStringList &lines, unsigned int index);

// Appends the text of an element's content.
void writePacketText(QString &out, const QDomElement &e);

// Appends the line of a field's element. A simple field without a value has none.
// @{
void writeSimple(QString &out, const QDomElement &e);
void writeKey(QString &out, const QDomElement &e);
void writeNumberArray(QString &out, const QDomElement &e);
void writeStringArray(QString &out, const QDomElement &e);
void writeBinary(QString &out, const QDomElement &e);
// @}

#endif

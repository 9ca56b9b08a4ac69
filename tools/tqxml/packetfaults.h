#ifndef PACKETFAULTS_H
#define PACKETFAULTS_H

#include <QByteArray>
#include <QString>

/// Why a line of packet text does not come back the same from XML: what is wrong with line number
/// \a line of \a text, which starts with line 1 at the top level. \a isStart says whether the text
/// is the start of the file.
QString faultOf(const QByteArray &text, qint64 line, bool isStart);

#endif

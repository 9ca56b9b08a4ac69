#ifndef TQXML_MONITOR_PACKETFILE_H
#define TQXML_MONITOR_PACKETFILE_H

#include <QString>

QT_FORWARD_DECLARE_CLASS(QIODevice)

namespace TQXmlInternal {

class PacketLog;

// Files of recorded packets (*.tqpackets): an XML document that schema/tqpackets.rnc describes.
// Each packet is in it as the document that it is.

// Returns false if the device does not take everything.
bool writePackets(const PacketLog &log, QIODevice &device);
// Puts what a file holds in place of what the log holds. If the file is none of ours or is damaged,
// returns what is wrong with it, and the log stays as it was.
QString readPackets(QIODevice &device, PacketLog &log);

}  // namespace TQXmlInternal

#endif

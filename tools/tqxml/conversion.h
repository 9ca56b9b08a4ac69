#ifndef CONVERSION_H
#define CONVERSION_H

#include "input.h"

#include <QDomElement>

class XMLPacketable;

/// What convert reads, and how.
struct Conversion
{
    Input &input;
    bool isRaw = false;  ///< converts what can be converted
    bool isLimited = true;  ///< refuses large items

    /// Reports an error in the input and returns the exit code.
    int fail(const QString &message) const;
};

/// @{
/// Converts item by item, and prints nothing unless all of it is converted; returns the exit code.
int convertToXml(const Conversion &conversion);
int convertToPacket(const Conversion &conversion);
/// @}

/// Reads the items of a packet text into one packetable, whose element is returned.
QDomElement readItems(XMLPacketable &all, QStringList lines);

#endif

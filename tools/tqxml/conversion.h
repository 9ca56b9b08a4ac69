#ifndef CONVERSION_H
#define CONVERSION_H

#include "input.h"

#include "tqstorageclass.h"

#include <QDomElement>

class XMLPacketable;

/// The input of "tqxml convert" and its options.
struct Conversion
{
    Input &input;
    bool isRaw = false;  ///< converts what can be converted
    bool isFieldsOnly = false;  ///< leaves out what packet text has no place for
    bool isLimited = true;  ///< refuses large items

    /// Reports an error in the input and returns the exit code.
    int fail(const QString &message) const;
};

/// @{
/// Converts item by item. Prints nothing if an item cannot be converted. Returns the exit code.
int convertToXml(const Conversion &conversion);
int convertToPacket(const Conversion &conversion);
/// @}

/// The message for a fault in that line of the input.
QString lineMessage(qint64 line, const QString &reason);

/// The fields of a data type; null if it has none or is unknown.
CONVERTSTRUCTELEMENTINFO *fieldsOfType(PACKETDATATYPES type);

/// Reads the items of a packet text into one packetable and returns its element.
QDomElement readItems(XMLPacketable &all, QStringList lines);

#endif

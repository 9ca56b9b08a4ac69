#ifndef ITEMFIELDS_H
#define ITEMFIELDS_H

#include "rows.h"

#include <QStringList>

class QDomElement;

/// Data tags of the fields that the program knows by name.
namespace JobField {
enum Tag : unsigned {
    Name = 0x1,
    Output = 0x2,
    Book = 0x3,
    Publication = 0x5,
    State = 0x7,
    Priority = 0x8,
    Copies = 0x9,
    TrimBox = 0xa,
    Colours = 0xc,
    Options = 0xe,
    Created = 0xf
};
}

/// The fields of a packetable element: first its own values, then those that refer to other items.
std::vector<Field> fieldsOf(const QDomElement &packetable);

/// Name of a field for people.
QString fieldHeading(PACKETDATATYPES type, unsigned tag);
/// Value of a simple field or of an array for people, on one line: states and options as names,
/// the four process colours as "CMYK".
QString fieldText(
    PACKETDATATYPES type, unsigned tag, const QString &value, const QStringList &entries);

/// Names of the known states; a state is the index of its name.
QStringList stateNames();
/// Its name, or the number of a state that is not known; empty for JobRow::ABSENT.
QString stateName(int state);

#endif

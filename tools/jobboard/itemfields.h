#ifndef ITEMFIELDS_H
#define ITEMFIELDS_H

#include "tqtypes.h"

#include <QDomElement>
#include <QString>

#include <functional>

/// Data tags of the fields that the window knows by name.
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

/// Calls visit for each field of a packetable element, in order.
void visitFields(const QDomElement &packetable,
    const std::function<void(unsigned tag, const QDomElement &field)> &visit);

/// Name of a field for people.
QString fieldHeading(PACKETDATATYPES type, unsigned tag);
/// Value of a field for people, on one line: states and options as names, the four process colours
/// as "CMYK", a referred item as its name, and binary data as its size.
QString fieldText(PACKETDATATYPES type, unsigned tag, const QDomElement &field);
/// Key of the item that a field refers to; the null key if it does not refer to one by key.
TQKEY_ELEMENT fieldKey(const QDomElement &field);

#endif

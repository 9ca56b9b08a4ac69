#ifndef TQREGISTRY_H
#define TQREGISTRY_H

#include "tqtypes.h"

#include <stddef.h>

/// \file
/// Storage classes: which fields the items of a data type have. A new data type is a table of
/// fields, not a class. Any thread may call these functions. Unregister a type only when no thread
/// has items of it or uses its conversion table.

/// The specimen: its table has every element type code from 1 to 31 at each of the widths 1, 2, 4
/// and 8. The tag of a field is 256 times its code plus its width.
constexpr PACKETDATATYPES PACKETDATATYPE_SPECIMEN = static_cast<PACKETDATATYPES>(0x63);

/// One field of a storage class.
struct TQSTORAGEFIELD
{
    unsigned int type;  ///< element type code, not 0
    unsigned int tag;  ///< data tag, unique within the table, below 0x80000000
    unsigned int width;  ///< width of one element in bytes
    const char *column;  ///< where a store keeps the value; null for a field that is not stored
    const char *heading;  ///< readable name of the field, UTF-8; null for none
    PACKETDATATYPES refers;  ///< of ::TQELEMENT_NAME and ::TQELEMENT_KEY: type of the item; or 0
};

/// Makes a data type known: from then on items of it can be made, filled and written. The table is
/// copied. False when the type is 0 or known already, or when a field has type 0, a tag out of
/// range or the tag of another field.
TQSERVER_EXPORT bool TQRegisterStorageClass(
    PACKETDATATYPES type, const TQSTORAGEFIELD *fields, size_t count);

/// Forgets a type that TQRegisterStorageClass() made known; its conversion table ends with it.
/// False for every other type.
TQSERVER_EXPORT bool TQUnregisterStorageClass(PACKETDATATYPES type);

/// Readable heading of a field, UTF-8, owned by the library as long as the type is known; null
/// when the type or the field is not known or has none.
TQSERVER_EXPORT const char *TQFieldHeading(PACKETDATATYPES type, unsigned int tag);

#endif

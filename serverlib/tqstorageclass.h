#ifndef TQSTORAGECLASS_H
#define TQSTORAGECLASS_H

#include "tqtypes.h"

#include <stddef.h>

/// \file
/// Conversion tables: which fields the items of a data type have, and in which form.

/// Element type codes: what a field holds, and so the form of its value in packet text. The forms
/// (text, integer, number, key, numbers, texts, bytes) are described in tqpacketable.h.
///
/// libtqxml uses the form, and the two codes that refer to other items. The rest of the meaning is
/// for the server library and for programs that show items. A code that is not listed has no form:
/// libtqxml leaves out its fields, both when it reads and when it writes. "Of the field's width"
/// means the member width of the field; a code with a width in its name usually has that width.
enum TQELEMENTTYPE : unsigned int {
    TQELEMENT_END = 0,  ///< no field: ends the table
    TQELEMENT_TEXT = 1,  ///< text: any
    TQELEMENT_IDENTIFIER = 2,  ///< text: a code or number that people know the item by
    TQELEMENT_WORD = 3,  ///< text: one word of a fixed vocabulary
    TQELEMENT_DATE = 4,  ///< text: date, ISO 8601, "2024-03-01"
    TQELEMENT_INTEGER8 = 5,  ///< integer of 8 bytes
    TQELEMENT_INTEGER2 = 6,  ///< integer of 2 bytes
    TQELEMENT_INTEGER1 = 7,  ///< integer of 1 byte
    TQELEMENT_NUMBER = 8,  ///< number: any
    TQELEMENT_NAME = 9,  ///< text: the name of another item, which the field refers to
    TQELEMENT_LENGTH = 11,  ///< number: a length in points
    TQELEMENT_TOKEN = 12,  ///< text: a language tag or a version, "de", "4.3.0"
    TQELEMENT_INTEGER = 13,  ///< integer of the field's width
    TQELEMENT_KEY = 14,  ///< key: that of another item, which the field refers to
    TQELEMENT_NUMBERS = 15,  ///< numbers: any
    TQELEMENT_INTEGERS = 16,  ///< numbers: integers of the field's width
    TQELEMENT_INTEGERS8 = 17,  ///< numbers: integers of 8 bytes
    TQELEMENT_INTEGERS2 = 18,  ///< numbers: integers of 2 bytes
    TQELEMENT_INTEGERS1 = 19,  ///< numbers: integers of 1 byte
    TQELEMENT_CHOICE = 20,  ///< integer: one value of an enumeration
    TQELEMENT_BITS = 21,  ///< integer: a set of bits
    TQELEMENT_TEXTS = 22,  ///< texts: any
    TQELEMENT_BYTES = 23,  ///< bytes: any
    TQELEMENT_DATETIME = 24,  ///< text: date and time, ISO 8601, UTC, "2024-03-01T09:30:00Z"
    TQELEMENT_REMARK = 25,  ///< text: a remark for people
    TQELEMENT_LENGTHS = 27,  ///< numbers: lengths in points
    TQELEMENT_PATH = 28,  ///< text: a path or file name
    TQELEMENT_INTEGER4 = 29,  ///< integer of 4 bytes
    TQELEMENT_BITSETS = 30,  ///< numbers: integers, each a set of bits
    TQELEMENT_INTEGERS4 = 31  ///< numbers: integers of 4 bytes
};

/// One field of a data type. A table of them ends at the first record of type 0, whose other
/// members are not read.
struct CONVERTSTRUCTELEMENTINFO
{
    unsigned int type;  ///< element type code, see ::TQELEMENTTYPE; 0 ends the table
    unsigned int tag;  ///< data tag, unique within the table, below 0x80000000
    unsigned int reserved0;  ///< the server library's own
    unsigned int width;  ///< bytes of one element: 1, 2, 4 or 8 for integers, which must fit it
    unsigned int reserved1[4];  ///< the server library's own
};

static_assert(sizeof(CONVERTSTRUCTELEMENTINFO) == 32, "records follow one another");
static_assert(offsetof(CONVERTSTRUCTELEMENTINFO, tag) == 4, "second word");
static_assert(offsetof(CONVERTSTRUCTELEMENTINFO, width) == 12, "fourth word");

/// Conversion table of a data type, or null when it has none; items of such a type have no fields.
/// Data type 6 is never asked for.
///
/// The table belongs to the server library, which keeps it and does not change it while the type is
/// known: until the program ends, for types that are known from the start. libtqxml asks for it
/// before each item and reads the whole table each time, to see whether its own copy (one in each
/// thread, found by the table's address) is still right. So the answer must come fast, and be the
/// same pointer as long as the table is the same. When a type was forgotten and made known again,
/// its table may be different, at the same address or at another. Several threads ask at the same
/// time.
///
/// All tables are process-wide: every connection has the same.
TQSERVER_EXPORT CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES type);

#endif

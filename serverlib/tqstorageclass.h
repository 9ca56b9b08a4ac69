#ifndef TQSTORAGECLASS_H
#define TQSTORAGECLASS_H

#include "tqtypes.h"

#include <stddef.h>

/// \file
/// Conversion tables: which fields the items of a data type have, and in which form.

/// One field of a data type's storage class. A table of them ends at the first record of type 0.
struct CONVERTSTRUCTELEMENTINFO
{
    unsigned int type;  ///< element type code; 0 ends the table
    unsigned int tag;  ///< data tag, unique within the table
    unsigned int reserved0;  ///< the server library's own
    unsigned int width;  ///< width of one element in bytes
    unsigned int reserved1[4];  ///< the server library's own
};

static_assert(sizeof(CONVERTSTRUCTELEMENTINFO) == 32, "records follow one another");
static_assert(offsetof(CONVERTSTRUCTELEMENTINFO, tag) == 4, "second word");
static_assert(offsetof(CONVERTSTRUCTELEMENTINFO, width) == 12, "fourth word");

/// Conversion table of a data type, or null when it has none. Owned by the server library.
TQSERVER_EXPORT CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES type);

#endif

#ifndef TQSTORAGECLASS_H
#define TQSTORAGECLASS_H

#include "tqtypes.h"

#include <stddef.h>

/// One field of a data type's storage class. A table of them ends at the first record of type 0.
struct CONVERTSTRUCTELEMENTINFO
{
    unsigned int type;  ///< element type code; 0 ends the table
    unsigned int tag;  ///< data tag, unique within the table
    unsigned int reserved0;
    unsigned int width;  ///< width of one element in bytes
    unsigned int reserved1[4];
};

static_assert(sizeof(CONVERTSTRUCTELEMENTINFO) == 32, "records follow one another");
static_assert(offsetof(CONVERTSTRUCTELEMENTINFO, tag) == 4, "second word");
static_assert(offsetof(CONVERTSTRUCTELEMENTINFO, width) == 12, "fourth word");

/// Conversion table of a data type, or null when it has none. Owned by the server library.
TQSERVER_EXPORT CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES type);

#endif

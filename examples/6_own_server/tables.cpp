// Which fields items have, and which class an item is of.

#include "shop.h"

#include <tqitems.h>

namespace {

// Type code, tag, type that the field refers to, width; each table ends with a record of type 0.
CONVERTSTRUCTELEMENTINFO OUTPUT[] = {
    { TQELEMENT_INTEGER4, 1, 0, 4, {} },  // resolution
    {},
};
CONVERTSTRUCTELEMENTINFO JOB[] = {
    { TQELEMENT_INTEGER, 1, 0, 2, {} },  // page
    { TQELEMENT_TEXT, 2, 0, 1, {} },  // publication
    { TQELEMENT_INTEGER4, 3, 0, 4, {} },  // number of the publication
    { TQELEMENT_KEY, 4, PACKETDATATYPE_BOOK, 4, {} },
    { TQELEMENT_NAME, 5, PACKETDATATYPE_ICCPROFILE, 1, {} },
    {},
};
CONVERTSTRUCTELEMENTINFO PROFILE[] = {
    { TQELEMENT_PATH, 1, 0, 1, {} },
    { TQELEMENT_BYTES, 2, 0, 1, {} },
    {},
};
CONVERTSTRUCTELEMENTINFO OWNER[] = {
    { TQELEMENT_TEXT, 1, 0, 1, {} },  // city
    {},
};
CONVERTSTRUCTELEMENTINFO BOOK[] = {
    { TQELEMENT_TEXT, 1, 0, 1, {} },  // author
    { TQELEMENT_KEY, 2, PACKETDATATYPE_BOOKOWNER, 4, {} },
    { TQELEMENT_NUMBERS, 3, 0, 8, {} },  // page size, in millimetres
    {},
};

}  // namespace

CONVERTSTRUCTELEMENTINFO *TQGetSystemStorageClassConv(PACKETDATATYPES type)
{
    switch (type) {
    case PACKETDATATYPE_OUTPUT:
        return OUTPUT;
    case PACKETDATATYPE_JOB:
        return JOB;
    case PACKETDATATYPE_ICCPROFILE:
        return PROFILE;
    case PACKETDATATYPE_BOOKOWNER:
        return OWNER;
    case PACKETDATATYPE_BOOK:
        return BOOK;
    default:
        return nullptr;
    }
}

TQPacketable *PacketableUtil::getPacketable(PACKETDATATYPES type)
{
    switch (type) {
    case PACKETDATATYPE_JOB:
        return new TQJOB_CC;
    case PACKETDATATYPE_ICCPROFILE:
        return new ICCPROFILEDATA_CC;  // or no bytes are ever loaded
    case PACKETDATATYPE_BOOK:
        return new BOOK_CC;
    case PACKETDATATYPE_UNCONVERTED:
    case PACKETDATATYPE_OUTPUT:
    case PACKETDATATYPE_BOOKOWNER:
        return new TQPacketable(type);
    default:
        return nullptr;
    }
}

const CONVERTSTRUCTELEMENTINFO *findField(PACKETDATATYPES type, unsigned int tag)
{
    const CONVERTSTRUCTELEMENTINFO *field = TQGetSystemStorageClassConv(type);
    while (field && field->type != TQELEMENT_END && field->tag != tag) {
        ++field;
    }
    return field && field->type != TQELEMENT_END ? field : nullptr;
}

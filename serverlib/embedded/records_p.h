#ifndef RECORDS_P_H
#define RECORDS_P_H

#include "tqrecords.h"

#include <cstdint>
#include <string>

namespace TQServerInternal {

// A list record: the part that tqrecords.h declares, and what this library keeps next to it.
//
// The interface hands out pointers to the declared part. of() finds the record that it belongs to.
struct ListRecord
{
    // A record of an item of that type, from the store of that number; free it with destroy().
    static ListRecord *create(PACKETDATATYPES type, std::uint64_t store);
    // The record of a declared part; null for null and for what this library did not make.
    static ListRecord *of(const void *declared);
    static void destroy(ListRecord *record);

    // The declared part.
    TQLISTRECORD *asListRecord() { return reinterpret_cast<TQLISTRECORD *>(storage); }

    // Fills the declared part from the members below. Its texts point at theirs, so they must not
    // change afterwards.
    void fillDeclaredPart();

    alignas(8) unsigned char storage[sizeof(TQJOB)];  // the declared part, whichever it is
    PACKETDATATYPES type;  // of the item
    std::uint64_t store;  // see OpenStore
    TQKEY_ELEMENT key;
    std::string name;
    std::string publication;
    unsigned publicationId;  // 0 outside any publication
    int page;
    std::string fields;  // field lines of the item's packet text
};

}  // namespace TQServerInternal

#endif

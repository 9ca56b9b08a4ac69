#include "listings.h"

#include "xmlcommserver.h"

#include <algorithm>
#include <iterator>

namespace {

const Listing LISTINGS[] = {
    { "outputs", XMLCommServer::REQUEST_OUTPUTS, PACKETDATATYPE_OUTPUT, PACKETDATATYPE_NONE, false,
        0x1, { 0x2, 0x3, 0x4, 0x5, 0x6, 0x8, 0x9 } },
    { "publications", XMLCommServer::REQUEST_PUBLICATIONS, PACKETDATATYPE_JOB,
        PACKETDATATYPE_OUTPUT, false, 0x5, { 0x2, 0x6, 0x7, 0xf } },
    { "books", XMLCommServer::REQUEST_BOOKS, PACKETDATATYPE_BOOK, PACKETDATATYPE_BOOKOWNER, true,
        0x1, { 0x2, 0x4, 0x5, 0x6, 0x7, 0x3 } },
    { "jobs", XMLCommServer::REQUEST_JOBS, PACKETDATATYPE_JOB, PACKETDATATYPE_OUTPUT, true, 0x1,
        { 0x2, 0x5, 0x6, 0x7, 0x9, 0xc, 0x3, 0x4 } },
    { "owners", 0, PACKETDATATYPE_BOOKOWNER, PACKETDATATYPE_NONE, false, 0x1, { 0x2, 0x3, 0x4 } },
    { "profiles", 0, PACKETDATATYPE_ICCPROFILE, PACKETDATATYPE_NONE, false, 0x1,
        { 0x2, 0x3, 0x4, 0x5, 0x6 } },
};

}  // namespace

const Listing *findListing(const QString &name)
{
    const auto found = std::find_if(std::begin(LISTINGS), std::end(LISTINGS),
        [&name](const Listing &listing) { return name == QLatin1String(listing.name); });
    return found == std::end(LISTINGS) ? nullptr : found;
}

Columns columnsOf(const Listing &listing) { return columnsOf(listing.type, listing.nameTag); }

Columns usualColumnsOf(const Listing &listing)
{
    const Columns all = columnsOf(listing);
    Columns usual { all[0], all[1] };
    for (const unsigned tag : listing.tags) {
        const auto found = std::find_if(
            all.begin(), all.end(), [tag](const Column &column) { return column.tag == tag; });
        if (found != all.end()) {
            usual.push_back(*found);
        }
    }
    return usual;
}

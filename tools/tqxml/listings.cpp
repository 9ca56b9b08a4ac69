#include "listings.h"

#include "xmlcommserver.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr unsigned NAME = 0x1;
constexpr unsigned OUTPUT_OF_JOB = 0x2;
constexpr unsigned PUBLICATION_OF_JOB = 0x5;

const Listing LISTINGS[] = {
    { "outputs", XMLCommServer::REQUEST_OUTPUTS, PACKETDATATYPE_OUTPUT, PACKETDATATYPE_NONE, false,
        NAME, { 0x2, 0x3, 0x4, 0x5, 0x6, 0x8, 0x9 }, { NAME } },
    { "publications", XMLCommServer::REQUEST_PUBLICATIONS, PACKETDATATYPE_JOB,
        PACKETDATATYPE_OUTPUT, false, PUBLICATION_OF_JOB, { 0x2, 0x6, 0x7, 0xf },
        { OUTPUT_OF_JOB, PUBLICATION_OF_JOB } },
    { "books", XMLCommServer::REQUEST_BOOKS, PACKETDATATYPE_BOOK, PACKETDATATYPE_BOOKOWNER, true,
        NAME, { 0x2, 0x4, 0x5, 0x6, 0x7, 0x3 }, { NAME } },
    { "jobs", XMLCommServer::REQUEST_JOBS, PACKETDATATYPE_JOB, PACKETDATATYPE_OUTPUT, true, NAME,
        { 0x2, 0x5, 0x6, 0x7, 0x9, 0xc, 0x3, 0x4 }, { NAME } },
    { "owners", 0, PACKETDATATYPE_BOOKOWNER, PACKETDATATYPE_NONE, false, NAME, { 0x2, 0x3, 0x4 },
        { NAME } },
    { "profiles", 0, PACKETDATATYPE_ICCPROFILE, PACKETDATATYPE_NONE, false, NAME,
        { 0x2, 0x3, 0x4, 0x5, 0x6 }, { NAME } },
};

}  // namespace

const Listing *findListing(const QString &name)
{
    const auto found = std::find_if(std::begin(LISTINGS), std::end(LISTINGS),
        [&name](const Listing &listing) { return name == QLatin1String(listing.name); });
    return found == std::end(LISTINGS) ? nullptr : found;
}

const Listing *findListing(PACKETDATATYPES type, bool isPublication)
{
    const auto found = std::find_if(
        std::begin(LISTINGS), std::end(LISTINGS), [type, isPublication](const Listing &listing) {
            return listing.type == type && (listing.nameTag == PUBLICATION_OF_JOB) == isPublication;
        });
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

std::vector<std::string> columnNamesOf(const char *listing)
{
    std::vector<std::string> names;
    for (const Column &column : columnsOf(*findListing(QLatin1String(listing)))) {
        names.push_back(column.name.toStdString());
    }
    return names;
}

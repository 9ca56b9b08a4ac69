#ifndef LISTINGS_H
#define LISTINGS_H

#include "columns.h"

#include "tqtypes.h"

#include <string>
#include <vector>

/// Something that can be listed.
struct Listing
{
    const char *name;
    int request;  ///< request type of the bridge; 0 if it has none, and the connection is asked
    PACKETDATATYPES type;  ///< of the items
    PACKETDATATYPES owner;  ///< data type that --key takes; NONE if it takes no keys
    bool isByOwner;  ///< owner by owner is asked, so that no more than one's items are in memory
    unsigned nameTag;  ///< the field that shows the item's name
    std::vector<unsigned> tags;  ///< the fields that are shown unless others are chosen
    std::vector<unsigned> order;  ///< the fields by which the rows of a reply are sorted
};

/// Null if there is none of that name.
const Listing *findListing(const QString &name);
/// The listing that has items of that type; null if there is none. Publications are jobs.
const Listing *findListing(PACKETDATATYPES type, bool isPublication);
/// All columns of a listing.
Columns columnsOf(const Listing &listing);
/// Key, name and the fields that are shown unless others are chosen.
Columns usualColumnsOf(const Listing &listing);
/// The names of all columns of the listing with that name.
std::vector<std::string> columnNamesOf(const char *listing);

#endif

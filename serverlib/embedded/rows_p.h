#ifndef ROWS_P_H
#define ROWS_P_H

#include "openstore_p.h"
#include "records_p.h"
#include "storageclass_p.h"

namespace TQServerInternal {

// Which rows of a storage class, in which order.
struct Selection
{
    const char *where;  // behind WHERE, with the class's alias; empty for all
    const char *order;  // behind ORDER BY; empty for any
};

// Reads rows straight into a list of records, linked in the rows' order. False when the statement
// failed; no rows give a null list.
bool readRecords(OpenStore &store, const StorageClass &type, const Selection &selection,
    const QVariantList &values, TQLISTRECORD **list);

// The value of a binary field, in the form of packet text.
struct BinaryField
{
    unsigned tag;
    std::string value;
};

// The bytes of the binary field of the row with that value in that column; none without such a row,
// or bytes. A failure of the statement is the store's.
std::optional<BinaryField> readBinaryField(
    OpenStore &store, const StorageClass &type, const char *column, const QVariant &value);

}  // namespace TQServerInternal

#endif

#ifndef ROWS_P_H
#define ROWS_P_H

#include "openstore_p.h"
#include "records_p.h"
#include "storageclass_p.h"
#include "tqstore.h"

namespace TQServerInternal {

// Which rows of a storage class, in which order. "A." stands for the class's own table.
struct Selection
{
    const char *where;  // what follows WHERE; empty for all
    const char *order;  // what follows ORDER BY; empty for any
};

// Reads rows into a list of records, in the rows' order; no rows give a null list. False, and a
// null list, when the statement failed.
bool readRecords(OpenStore &store, const StorageClass &type, const Selection &selection,
    const QVariantList &values, TQLISTRECORD **list);

// Reads keys and names of all items of a type, sorted by name. False, and nothing, when the
// statement failed.
bool readKeys(OpenStore &store, const StorageClass &type, std::vector<TQNAMEDKEY> &keys);

// A binary field's value as it stands in packet text.
struct BinaryField
{
    unsigned tag;
    std::string value;
};

// The first binary field that is not null, of the row that has that value in the key column. None
// without such a row, or without bytes, and when the statement failed, which counts as a failure of
// the store.
std::optional<BinaryField> readBinaryField(
    OpenStore &store, const StorageClass &type, const char *keyColumn, const QVariant &keyValue);

}  // namespace TQServerInternal

#endif

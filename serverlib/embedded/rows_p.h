#ifndef ROWS_P_H
#define ROWS_P_H

#include "database_p.h"
#include "records_p.h"
#include "storageclass_p.h"

// Which rows of a storage class, in which order.
struct Selection
{
    const char *where;  // behind WHERE, with the class's alias; empty for all
    const char *order;  // behind ORDER BY; empty for any
};

// Reads rows straight into a list of records, linked in the rows' order. False when the statement
// failed; no rows give a null list.
bool readRecords(Database &database, const StorageClass &type, const Selection &selection,
    const QVariantList &values, TQLISTRECORD **list);

// The bytes of the binary field of the row with that value in that column.
std::optional<Database::FieldValue> readBinaryField(
    Database &database, const StorageClass &type, const char *column, const QVariant &value);

#endif

#ifndef SCHEMA_P_H
#define SCHEMA_P_H

#include <QStringList>

namespace TQServerInternal {

struct Dialect;

constexpr int SCHEMA_VERSION = 2;
constexpr const char *VERSION_TABLE = "tq_schema";

// Each table has a range of ids of its own, from its first id up to the next table's. So an id is
// of one item only, and the highest id of a table says which one is next.
struct FirstId
{
    const char *table;
    int id;
};
constexpr FirstId FIRST_IDS[] = {
    { "tq_job", 1 },
    { "tq_output", 0x40000000 },
    { "tq_book_owner", 0x48000000 },
    { "tq_book", 0x50000000 },
    { "tq_icc_profile", 0x58000000 },
    { "tq_publication", 0x60000000 },
};
int firstId(const char *table);
int lastId(const char *table);

// The statements that create the tables, in order.
QStringList schemaStatements(const Dialect &dialect);
// The statements after which watchers notice changes; none where they need nothing in the store.
QStringList watchStatements(const Dialect &dialect);

}  // namespace TQServerInternal

#endif

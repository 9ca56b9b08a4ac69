#ifndef SCHEMA_P_H
#define SCHEMA_P_H

#include <QString>
#include <QStringList>

namespace TQServerInternal {

// What differs between the database systems.
struct Dialect
{
    const char *driver;  // of QtSql
    const char *blob;  // type of a column of bytes
    const char *collation;  // order of texts by their code points
    const char *hasSchema;  // query: 1 when the table of the schema's version is there
    const char *beginReading;  // all that it reads is of one moment
    // Statements that begin a transaction of a program that makes tables or gives ids: one after
    // the other, whatever program it is. The second may be null.
    const char *beginWriting;
    const char *waitForWriters;
};

inline constexpr Dialect SQLITE { "QSQLITE", "BLOB", "BINARY",
    "SELECT count(*) FROM sqlite_master WHERE type = 'table' AND name = 'tq_schema'", "BEGIN",
    "BEGIN IMMEDIATE", nullptr };
inline constexpr Dialect POSTGRESQL { "QPSQL", "BYTEA", "\"C\"",
    "SELECT count(*) FROM pg_tables WHERE tablename = 'tq_schema' "
    "AND schemaname = ANY (current_schemas(false))",
    "BEGIN ISOLATION LEVEL REPEATABLE READ, READ ONLY", "BEGIN ISOLATION LEVEL READ COMMITTED",
    "SELECT pg_advisory_xact_lock(8025545361711)" };  // a number of this system's own

constexpr int SCHEMA_VERSION = 2;

// The first id of each table; what follows up to that of the next one is its own. So an id is of
// one item only, and the highest of a table tells which one comes next.
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

}  // namespace TQServerInternal

#endif

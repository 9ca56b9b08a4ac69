#ifndef SQLITECHECK_P_H
#define SQLITECHECK_P_H

namespace TQServerInternal {

class Database;

// What damage to a file is called, as SQLite says it.
constexpr const char *DAMAGED = "database disk image is malformed";

// Database::checkSchema() for SQLite.
bool checkSqliteSchema(Database &database);

}  // namespace TQServerInternal

#endif

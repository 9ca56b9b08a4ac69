#ifndef SCHEMACHECK_P_H
#define SCHEMACHECK_P_H

namespace TQServerInternal {

class Database;

// Whether an open store has the tables that this library knows, and in a file nothing else that
// could run or answer in their place. Asks the store for nothing before that is certain; false with
// the database's error.
bool checkSchema(Database &database);

}  // namespace TQServerInternal

#endif

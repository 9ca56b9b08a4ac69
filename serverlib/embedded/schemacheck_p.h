#ifndef SCHEMACHECK_P_H
#define SCHEMACHECK_P_H

#include <QString>

namespace TQServerInternal {

class Database;

// Whether the store's table of the version holds the one that this library knows; false with the
// database's error.
bool checkVersion(Database &database);

// The error of a database that holds no store; false.
bool refuseStranger(Database &database, const QString &detail = {});

}  // namespace TQServerInternal

#endif

// What the checks of all database systems have in common: a store has the version of the schema
// that this library knows. Stores of another version are refused.

#include "schemacheck_p.h"

#include "database_p.h"
#include "schema_p.h"

namespace TQServerInternal {

bool checkVersion(Database &database)
{
    const auto value = database.ask(
        QStringLiteral("SELECT max(version) FROM %1").arg(QLatin1String(VERSION_TABLE)));
    if (!value) {
        return false;
    }
    bool isNumber = false;
    const qlonglong version = value->toLongLong(&isNumber);
    if (value->isNull() || !isNumber) {
        return refuseStranger(database);
    }
    return version == SCHEMA_VERSION ||
        database.refuse(QStringLiteral("the store has version %1, this library knows version %2")
                            .arg(version)
                            .arg(SCHEMA_VERSION));
}

bool refuseStranger(Database &database, const QString &detail)
{
    const QString stranger = QStringLiteral("not a store of this system");
    return database.refuse(detail.isEmpty() ? stranger : stranger + QStringLiteral(": ") + detail);
}

}  // namespace TQServerInternal

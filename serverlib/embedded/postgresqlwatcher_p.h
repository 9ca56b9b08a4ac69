#ifndef POSTGRESQLWATCHER_P_H
#define POSTGRESQLWATCHER_P_H

#include "storeaddress_p.h"
#include "watcher_p.h"

#include <memory>

namespace TQServerInternal {

// The function that the triggers of a store call, the trigger of each table, and what a watcher
// says to be notified by them. PostgreSQL sends equal notifications of one transaction once.
constexpr const char *POSTGRESQL_ANNOUNCER =
    "CREATE FUNCTION tq_announce() RETURNS trigger LANGUAGE plpgsql AS "
    "'BEGIN NOTIFY tq_store; RETURN NULL; END'";
constexpr const char *POSTGRESQL_TRIGGER =
    "CREATE TRIGGER tq_announce AFTER INSERT OR UPDATE OR DELETE OR TRUNCATE ON %table% "
    "FOR EACH STATEMENT EXECUTE FUNCTION tq_announce()";
constexpr const char *POSTGRESQL_LISTEN = "LISTEN tq_store";

std::unique_ptr<Watcher> makePostgresqlWatcher(const StoreAddress &address, Watcher::Notice notice);

}  // namespace TQServerInternal

#endif

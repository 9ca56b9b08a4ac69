#ifndef STOREADDRESS_P_H
#define STOREADDRESS_P_H

#include "schema_p.h"

#include <QString>

#include <chrono>
#include <optional>

namespace TQServerInternal {

// Where a store is, and how long it may take to answer.
struct StoreAddress
{
    // None when the URL is not of a known form; error says why, without any password.
    static std::optional<StoreAddress> parse(const char *url, QString &error);

    bool isFile() const { return dialect == &SQLITE && !path.isEmpty(); }
    bool isMemory() const { return dialect == &SQLITE && path.isEmpty(); }
    // What messages call it.
    QString label() const;

    const Dialect *dialect = nullptr;

    // Of a file.
    QString path;  // absolute; empty for a store in memory
    QString shownPath;  // as it was given
    int busyTimeout = 3000;  // ms to wait for a lock

    // Of a PostgreSQL database.
    QString host;  // empty: what libpq takes by default
    QString user;
    QString database;
    QString options;  // the rest, as QtSql takes connection options
    QByteArray conninfo() const;  // all of it, as libpq takes it
    std::chrono::milliseconds responseTimeout { 0 };  // silence of the server; 0 for any time
};

}  // namespace TQServerInternal

#endif

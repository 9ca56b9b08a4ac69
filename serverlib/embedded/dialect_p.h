#ifndef DIALECT_P_H
#define DIALECT_P_H

#include "watcher_p.h"

#include <QString>

#include <memory>
#include <optional>

namespace TQServerInternal {

class Database;
struct StoreAddress;

// A database system: all that differs from one to another. Each system has a unit of its own, with
// its Dialect and its class derived from Database. A third system needs such a unit, and a row in
// the table of storeaddress.cpp.
struct Dialect
{
    const char *form;  // of its URLs, for people
    // Whether a URL is one of this system, by its scheme.
    bool (*isUrl)(const QString &url);
    // Reads such a URL. None, with the reason, when it is wrong.
    std::optional<StoreAddress> (*parse)(const QString &url, QString &error);
    // Makes the database at such an address; it is not open yet.
    std::unique_ptr<Database> (*makeDatabase)(const StoreAddress &address);

    // What is appended to a file's name for files that belong to it; null where there are no files.
    const char *journal;
    const char *log;

    const char *blob;  // type of a column of bytes
    const char *collation;  // order of texts by their code points
    const char *hasSchema;  // query: 1 when the table of the schema's version is there
    const char *beginReading;  // all that the transaction reads is of one moment
    // Begin a transaction that makes tables or gives ids. Only one such transaction runs at a time,
    // in whatever program. The second statement may be null.
    const char *beginWriting;
    const char *waitForWriters;

    // Makes the watcher of a store that is not in memory.
    std::unique_ptr<Watcher> (*makeWatcher)(const StoreAddress &address, Watcher::Notice notice);
    // What watchers need in a store: a statement for the whole, and one for each %table%. Both are
    // null where the system tells a connection by itself.
    const char *announcer;
    const char *trigger;
};

extern const Dialect SQLITE;
extern const Dialect POSTGRESQL;

}  // namespace TQServerInternal

#endif

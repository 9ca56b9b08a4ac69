#ifndef TQSTORE_H
#define TQSTORE_H

#include "tqcommserver.h"

#include <stddef.h>

#include <functional>
#include <string>
#include <vector>

/// \file
/// The stores of the embedded server library: their URLs, how to make and fill them, and how to
/// read them as of one moment.
///
/// Every function does all of its work or nothing, also when the process is killed meanwhile. On
/// failure it returns false, with one line of UTF-8 in error. All need a QCoreApplication, and so
/// does TQCommServer: without one a connection fails to open. A connection is for the thread that
/// opened it; every thread may have one of its own.
///
/// URLs
/// ----
///
/// | URL | Store |
/// |-----|-------|
/// | `sqlite:PATH` | an SQLite file; a path without "/" at its start is relative |
/// | `sqlite::memory:` | the sample content, in memory, new for each connection |
/// | `postgresql://...`, `postgres://...` | a PostgreSQL database, in libpq's form: see below |
///
/// In paths, names and values "%" and two hexadecimal digits stand for a byte of UTF-8: `%20` is a
/// blank, `%25` a "%", `%3F` a "?". `%00` is refused. Parameters follow after "?", with "&" between
/// them. A parameter that is not known is an error.
///
/// SQLite has one:
///
/// | Parameter | Default | Meaning |
/// |-----------|---------|---------|
/// | `busy_timeout` | 3000 | milliseconds to wait for a lock of another program; 0 for not at all |
///
/// While a file is open, NAME-wal and NAME-shm next to it belong to it: the store is in write-ahead
/// mode, in which readers see one moment and never hold up writers. A reader that is not allowed to
/// make these files can read the store only while nobody has it open to write. If the store changes
/// meanwhile, its query fails.
///
/// PostgreSQL:
///
///     postgresql://[USER@][HOST][:PORT][,...][/DB][?PARAMETER=VALUE&...]
///
/// Without a host it is the local socket. IPv6 addresses stand in brackets. Several hosts are tried
/// one after another. Parts that are left out have libpq's defaults. **A password in a URL is an
/// error**, because others can see URLs in process lists and logs: set PGPASSWORD, use a password
/// file (`~/.pgpass` or `passfile=`), or use a certificate.
///
/// The parameters are those of libpq (connect_timeout, keepalives_idle, sslmode, sslrootcert,
/// passfile, options ...) and three more. Some have another default than in libpq, which would wait
/// for ever:
///
/// | Parameter | Default | Meaning |
/// |-----------|---------|---------|
/// | `connect_timeout` | 5 | seconds until a host that does not answer is given up |
/// | `statement_timeout` | 30s | time for one statement, in PostgreSQL's notation; 0 for any |
/// | `lock_timeout` | 10s | time to wait for another session's lock, likewise; 0 for any |
/// | `response_timeout` | statement_timeout + 10 | seconds of silence of the server; 0 for any |
///
/// PostgreSQL's notation is a number with a unit, "500ms", "30s" or "2min"; without one it means
/// milliseconds. The server itself keeps statement_timeout and lock_timeout. response_timeout is
/// for a server that is there but does not answer. After it the query fails and the connection is
/// given up; the next query opens a new one.

/// A transaction of a connection: while it lives, all queries see the store as it was at the first
/// of them, whatever others change meanwhile. It holds up neither readers nor writers, however long
/// it lives; but until it ends, an SQLite store's write-ahead log grows with each change.
///
/// An SQLite store is checked as a whole at the end of a connection's first transaction. The check
/// finds damage that a query does not notice because it only makes rows invisible. Damage counts as
/// a failure, so compare TQCommServer::failures() after the end.
///
/// When one of the queries fails, the rest of the transaction fails, too: later queries could see
/// another moment. A transaction inside another one becomes a part of it. Use transactions in the
/// connection's thread, and end them before the connection; after that they do nothing.
class TQSERVER_EXPORT TQReadTransaction
{
public:
    /// Begins one on a connection of this thread; on one that is not open it does nothing.
    explicit TQReadTransaction(TQCommServer &server);
    /// Ends it.
    ~TQReadTransaction();
    TQReadTransaction(const TQReadTransaction &) = delete;
    TQReadTransaction &operator=(const TQReadTransaction &) = delete;

private:
    unsigned long long m_connection;  // its number in the thread; 0 for none
};

/// A stored item, by its key and its name.
struct TQNAMEDKEY
{
    TQKEY_ELEMENT key;  ///< as getArchiveNode() takes it
    std::string name;  ///< UTF-8
};

/// Keys and names of all items of a data type, in the order of a listing by name. Data type 8
/// stands for the outputs. Nothing else of the items is read, so a program that holds this list can
/// ask for what belongs to one owner after another without holding more than that. Types that are
/// not stored have no items. False when the query failed, which counts as a failure of the
/// connection; then keys is empty.
TQSERVER_EXPORT bool TQListKeys(
    TQCommServer &server, PACKETDATATYPES type, std::vector<TQNAMEDKEY> &keys);

/// Called with how many of how many rows or files are done. When it returns false, the work stops
/// and fails, and everything is as it was before. May be empty.
using TQPROGRESS = std::function<bool(size_t done, size_t total)>;

/// Creates a store with the sample content at a URL for TQCommServer ("sqlite:PATH" or
/// "postgresql://USER@HOST:PORT/DB"). Fails when there is a file of that name, or a store in that
/// database.
TQSERVER_EXPORT bool TQCreateSampleStore(
    const char *url, const TQPROGRESS &progress, std::string &error);

/// Creates a store with that many generated jobs, and with outputs, books and publications for
/// them; the same number always gives the same content. Fails like TQCreateSampleStore().
TQSERVER_EXPORT bool TQCreateGeneratedStore(
    const char *url, size_t jobs, const TQPROGRESS &progress, std::string &error);

/// Stores ICC profiles, each under its file's name without the extension. A profile that has this
/// name already is replaced and keeps its key. When one of the files is not a whole profile,
/// nothing is stored. Unless keys is null or the import fails, it gets the keys of the profiles,
/// one for each file.
TQSERVER_EXPORT bool TQImportProfiles(const char *url, const std::vector<std::string> &files,
    const TQPROGRESS &progress, std::string &error, std::vector<TQKEY_ELEMENT> *keys = nullptr);

#endif

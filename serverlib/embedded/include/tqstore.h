#ifndef TQSTORE_H
#define TQSTORE_H

#include "tqcommserver.h"

#include <stddef.h>

#include <functional>
#include <string>
#include <vector>

/// \file
/// The stores of the embedded server library: their URLs, making and filling them, and reading them
/// at one moment.
///
/// Every operation is all or nothing, also when the process is killed on the way. Each answers
/// false on failure, with one line of UTF-8 in error. All need a QCoreApplication, and so does
/// TQCommServer: without one a connection fails to open. A connection is for the thread that opened
/// it; every thread may have one of its own.
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
/// While a file is open, NAME-wal and NAME-shm next to it belong to it: the store is in
/// write-ahead mode, in which readers see one moment and never hold up writers. A reader that may
/// not make them reads the file as it is as long as nobody has the store open to write; a change
/// meanwhile is an error.
///
/// PostgreSQL:
///
///     postgresql://[USER@][HOST][:PORT][,...][/DB][?PARAMETER=VALUE&...]
///
/// Without a host it is the local socket. IPv6 addresses stand in brackets. Several hosts are tried
/// in turn. What is left out has libpq's default. **There is no password in a URL**, which others
/// can see in process lists and logs: set PGPASSWORD, have a password file (`~/.pgpass` or
/// `passfile=`), or use a certificate.
///
/// All parameters are libpq's (connect_timeout, keepalives and its siblings, sslmode, sslrootcert,
/// passfile, options ...), with these defaults where libpq would wait for ever, and three more:
///
/// | Parameter | Default | Meaning |
/// |-----------|---------|---------|
/// | `connect_timeout` | 5 | seconds until a host that does not answer is given up |
/// | `statement_timeout` | 30s | time for one statement, in PostgreSQL's notation; 0 for any |
/// | `lock_timeout` | 10s | time to wait for another session's lock, likewise; 0 for any |
/// | `response_timeout` | 10 more | seconds without a sign of the server; 0 for any |
///
/// PostgreSQL's notation is a number with a unit, "500ms", "30s" or "2min"; without one it means
/// milliseconds. The server itself keeps statement_timeout and lock_timeout. response_timeout is
/// for a server that is there but silent: its default is 10 seconds more than statement_timeout.
/// After it the query fails and the connection is given up; the next query connects anew.

/// While it lives, all queries of a connection see the store as it was at the first of them,
/// whatever others change meanwhile, and hold nobody up.
///
/// At the end of a connection's first one, an SQLite store is checked as a whole, which shows
/// damage that only leaves rows out: compare TQCommServer::failures() after the end.
///
/// When one of the queries fails, the rest fail, too, until the transaction ends: what they would
/// find could be of another moment. One within another belongs to the outer one. Use it in the
/// connection's thread, and end it before the connection's; one that is left over then does
/// nothing.
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

/// Told how many of how many rows or files are done; on false the work stops, fails, and leaves
/// everything as it was. May be empty.
using TQPROGRESS = std::function<bool(size_t done, size_t total)>;

/// Creates a store with the sample content at a URL that TQCommServer opens ("sqlite:PATH" or
/// "postgresql://USER@HOST:PORT/DB"). An existing file or store is refused.
TQSERVER_EXPORT bool TQCreateSampleStore(
    const char *url, const TQPROGRESS &progress, std::string &error);

/// Creates a store with that many generated jobs, and outputs, books and publications to go with
/// them; the same number always gives the same content.
TQSERVER_EXPORT bool TQCreateGeneratedStore(
    const char *url, size_t jobs, const TQPROGRESS &progress, std::string &error);

/// Stores ICC profiles, each under its file's name without the extension; the bytes of a profile
/// of that name are replaced. A file that is no whole profile leaves the store unchanged. The keys
/// of the profiles, one for each file, are put into keys unless that is null or the import fails.
TQSERVER_EXPORT bool TQImportProfiles(const char *url, const std::vector<std::string> &files,
    const TQPROGRESS &progress, std::string &error, std::vector<TQKEY_ELEMENT> *keys = nullptr);

#endif

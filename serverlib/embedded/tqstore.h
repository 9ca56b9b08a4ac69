#ifndef TQSTORE_H
#define TQSTORE_H

#include "tqcommserver.h"

#include <stddef.h>

#include <functional>
#include <string>
#include <vector>

/// \file
/// Making and filling stores, and reading them at one moment. Every operation is all or nothing,
/// also when the process is killed on the way. Each answers false on failure, with one line of
/// UTF-8 in error, and needs a QCoreApplication, like the connection itself.

/// While it lives, all queries of a connection see the store as it was at the first of them,
/// whatever others change meanwhile, and hold nobody up.
///
/// When one of the queries fails, the rest fail, too, until the transaction ends: what they would
/// find could be of another moment. One within another belongs to the outer one. Use it in the
/// connection's thread, and end it before the connection's; one that is left over then does
/// nothing.
class TQSERVER_EXPORT TQReadTransaction
{
public:
    explicit TQReadTransaction(TQCommServer &server);
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

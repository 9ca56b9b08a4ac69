#ifndef TQCOMMSERVER_H
#define TQCOMMSERVER_H

#include "archivenode.h"
#include "tqrecords.h"

/// A connection to the server.
///
/// Queries return lists of records, which the caller frees with TQPacketFreeList(), or null when
/// there are none or the query failed; iserror() tells the two apart.
///
/// Whoever gets an answer that took several queries, such as a reply of the server bridge, compares
/// failures() before the request with failures() after the reply: when the number has grown, the
/// answer may be short.
class TQSERVER_EXPORT TQCommServer
{
public:
    /// Opens the server at a URL: "sqlite:PATH", "sqlite::memory:" (the sample content) or
    /// "postgresql://USER@HOST:PORT/DB". A store that cannot be opened, or null, leaves a
    /// connection on which every query fails; errorText() says why. The embedded library needs a
    /// QCoreApplication, and is for the thread that opened it.
    explicit TQCommServer(const char *url);
    ~TQCommServer();
    TQCommServer(const TQCommServer &) = delete;
    TQCommServer &operator=(const TQCommServer &) = delete;

    /// Records of data type 15 (outputs) or 85 (owners of books), by name; null for other types.
    TQLISTRECORD *getDBList(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type);
    /// Jobs in the queue of the owner with that id.
    TQJOB *getJobqueue(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, TQQUEUE queue,
        SORTTYPE sortType, SORTORDER sortOrder, int owner);
    /// Books of the owner with that key.
    TQBOOK *getBooks(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, SORTTYPE sortType,
        SORTORDER sortOrder, const TQKEY_ELEMENT &owner);
    /// Numeric id of a database item; 0 for a key that denotes none.
    int getidfromtqkey(const TQKEY_ELEMENT &key);
    /// True when the query that filled the command record failed.
    bool iserror(TQLPCOMMANDS &command);

    /// Host name of the server, NUL-terminated, owned by the connection; null when not connected.
    const char *getConnectedHostname() const;
    /// Port number of the server; 0 when not connected.
    int getConnectedPortnum() const;

    /// The item with that type and key and, below it, all items that it refers to. The caller
    /// deletes the node. Null when there is no such item or the query failed.
    ArchiveNode *getArchiveNode(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type,
        const TQKEY_ELEMENT &key);

    /// How many queries of this connection have failed, loading of an ICC profile's bytes included;
    /// a connection that could not be opened starts with one. Never goes back.
    unsigned int failures() const;
    /// Why the last of them failed, as one line of UTF-8; empty when none did. A later success does
    /// not clear it. Owned by the connection, valid until the next call on it.
    const char *errorText() const;

private:
    struct Connection;
    Connection *m_connection;  // owned; the implementation's own
};

#endif

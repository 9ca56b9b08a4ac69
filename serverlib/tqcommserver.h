#ifndef TQCOMMSERVER_H
#define TQCOMMSERVER_H

#include "archivenode.h"
#include "tqrecords.h"

/// \file
/// The connection to the server.

/// A connection to the server.
///
/// Queries return lists of records, which the caller frees with TQPacketFreeList(), or null when
/// there are none or the query failed; iserror() tells the two apart. A query that failed on the
/// way may return the records that it had by then: the caller frees them like any others. The
/// server bridge leaves out what a failed getDBList() returned, and does not ask for the rest.
///
/// Whoever gets an answer that took several queries, such as a reply of the server bridge, compares
/// failures() before the request with failures() after the reply: when the number has changed, the
/// answer may be short. One failure does not condemn later requests.
///
/// A query may run an event loop while it waits (see tqtypes.h). Use a connection and what comes
/// from it in one thread at a time; several threads may have one each.
class TQSERVER_EXPORT TQCommServer
{
public:
    /// Opens the server at a URL, NUL-terminated UTF-8, in the form of the server library in use;
    /// tqstore.h has that of the embedded one. A server that cannot be reached, or null, leaves a
    /// connection on which every query fails; errorText() says why.
    explicit TQCommServer(const char *url);
    /// Ends the connection. Records, items and nodes that came from it stay valid.
    ~TQCommServer();
    TQCommServer(const TQCommServer &) = delete;
    TQCommServer &operator=(const TQCommServer &) = delete;

    /// Records of data type 15 (outputs) or 85 (owners of books), by name; null for other types,
    /// which is no failure. What comes first of two names is the server library's own, but the same
    /// each time: listings keep the order.
    TQLISTRECORD *getDBList(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type);
    /// Jobs in the queue of the output with that id, which getidfromtqkey() gave; null for 0. With
    /// TQQUEUE_ALL the jobs of all its queues. libtqxml asks for that, by name, ascending.
    TQJOB *getJobqueue(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, TQQUEUE queue,
        SORTTYPE sortType, SORTORDER sortOrder, int owner);
    /// Books of the owner with that key; null for a key that denotes no owner of books, which is no
    /// failure.
    TQBOOK *getBooks(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, SORTTYPE sortType,
        SORTORDER sortOrder, const TQKEY_ELEMENT &owner);
    /// Numeric id of a database item, as getJobqueue() takes it; 0 for a key that denotes none.
    int getidfromtqkey(const TQKEY_ELEMENT &key);
    /// True when the query that filled the command record failed. False for a new record.
    bool iserror(TQLPCOMMANDS &command);

    /// Host name of the server, NUL-terminated, owned by the connection and valid as long as that;
    /// null when not connected. With the port it is what ICCPROFILEDATA_CC::load() gets; see there.
    const char *getConnectedHostname() const;
    /// Port number of the server, up to 65535; 0 when not connected.
    int getConnectedPortnum() const;

    /// The item with that type and key and, below it, all items that it refers to, in any depth;
    /// see ArchiveNode. An item that refers to itself, directly or through others, comes once along
    /// a path. ICC profiles come without their bytes. The caller deletes the node. Null when there
    /// is no such item or the query failed. For applications: libtqxml does not call it.
    ArchiveNode *getArchiveNode(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type,
        const TQKEY_ELEMENT &key);

    /// How many queries of this connection have failed, loading of an ICC profile's bytes included;
    /// a connection that could not be opened starts with one. Never goes back, but may wrap around
    /// after 2^32: compare with !=. No query is made, and no lock is waited for.
    unsigned int failures() const;
    /// Why the last of them failed, as one line of UTF-8 for people; empty, not null, when none
    /// did. A later success does not clear it. Owned by the connection, valid until the next call
    /// on it.
    const char *errorText() const;

private:
    struct Connection;
    Connection *m_connection;  // owned; the implementation's own
};

#endif

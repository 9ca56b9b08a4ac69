#ifndef TQCOMMSERVER_H
#define TQCOMMSERVER_H

#include "archivenode.h"
#include "tqrecords.h"

/// \file
/// The connection to the server.

/// A connection to the server.
///
/// Queries return lists of records, which the caller frees with TQPacketFreeList(). They return
/// null when there are no records, and when the query failed; iserror() says which. A query that
/// failed halfway may return the records that it had read; the caller frees them like any others.
/// The server bridge does not use records of a failed getDBList(), and asks no further queries
/// then.
///
/// An answer that took several queries, such as a reply of the server bridge, may lack items when
/// one of them failed. To find out, compare failures() before the request with failures() after the
/// reply. Later requests may succeed again.
///
/// A query may run an event loop while it waits (see tqtypes.h). Use a connection and what comes
/// from it in one thread at a time; several threads may have one each.
class TQSERVER_EXPORT TQCommServer
{
public:
    /// Opens the server at a URL, NUL-terminated UTF-8, in the form of the server library in use;
    /// tqstore.h describes the URLs of the embedded one. When the server cannot be reached, and for
    /// null, every query on the connection fails; errorText() says why.
    explicit TQCommServer(const char *url);
    /// Ends the connection. Records, items and nodes that came from it stay valid.
    ~TQCommServer();
    TQCommServer(const TQCommServer &) = delete;
    TQCommServer &operator=(const TQCommServer &) = delete;

    /// Records of data type 15 (outputs) or 85 (owners of books), sorted by name. How names are
    /// compared is up to the server library, but the order is the same each time: listings keep it.
    /// A server library may list further types for applications; the embedded one lists 48 (ICC
    /// profiles, without their bytes). Null for all other types, which is no failure.
    TQLISTRECORD *getDBList(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type);
    /// Jobs in a queue of the output with that id, which getidfromtqkey() gave; null for 0. With
    /// TQQUEUE_ALL the jobs in all its queues. libtqxml asks for all, by name, ascending.
    TQJOB *getJobqueue(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, TQQUEUE queue,
        SORTTYPE sortType, SORTORDER sortOrder, int owner);
    /// Books of the owner with that key; null for the key of anything else, which is no failure.
    TQBOOK *getBooks(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, SORTTYPE sortType,
        SORTORDER sortOrder, const TQKEY_ELEMENT &owner);
    /// Numeric id of a database item, as getJobqueue() takes it; 0 for a key that no item has.
    int getidfromtqkey(const TQKEY_ELEMENT &key);
    /// True when the query that filled the command record failed. False for a new record.
    bool iserror(TQLPCOMMANDS &command);

    /// Host name of the server, NUL-terminated, owned by the connection and valid until its end;
    /// null when not connected. ICCPROFILEDATA_CC::load() is called with it and with the port.
    const char *getConnectedHostname() const;
    /// Port number of the server, up to 65535; 0 when not connected.
    int getConnectedPortnum() const;

    /// The item with that type and key and, below it, all items that it refers to, at any depth;
    /// see ArchiveNode. Below an item the same item does not come again, so circles end. ICC
    /// profiles come without their bytes. The caller deletes the node. Null when there is no such
    /// item or the query failed. For applications: libtqxml does not call it.
    ArchiveNode *getArchiveNode(TQLPCOMMANDS &command, ZQ_MESSAGE_ID &message, PACKETDATATYPES type,
        const TQKEY_ELEMENT &key);

    /// How many queries of this connection have failed, loading of an ICC profile's bytes included;
    /// a connection that could not be opened starts with one. It only grows, but wraps around at
    /// 2^32: compare with !=. It makes no query and waits for no lock.
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

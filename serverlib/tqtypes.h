#ifndef TQTYPES_H
#define TQTYPES_H

/// \file
/// Keys, data types and small records of the server library, and what every implementation of it
/// must be.
///
/// The server library
/// ------------------
///
/// libtqxml and applications reach the server through the headers tqtypes.h, tqrecords.h,
/// tqpacketable.h, tqitems.h, tqstorageclass.h, archivenode.h and tqcommserver.h. A server library
/// is a library that defines everything that they declare. The headers need C++17 and no Qt.
///
/// - **Name.** It is a shared library with the soname `libtqserver.so.1`, or
///   `libtqserver-qt5.so.1` for programs on Qt 5, whose libtqxml is linked against that. The
///   declarations are the same, so a library without Qt may be built once and linked under both.
/// - **Complete.** Define every function, also those in which you have nothing to do: without one
/// of
///   them a program may not start.
/// - **As declared.** Classes have exactly the declared members and virtual functions. Your own
///   members go into the nested structs that are only declared here (`Fields`, `Children`,
///   `Connection`). Symbols are visible; compile with RTTI (no `-fno-rtti`): libtqxml uses
///   dynamic_cast on items.
/// - **No exceptions.** No function should throw: libtqxml is called from Qt's event loop, and no
///   exception may pass through that.
/// - **Null** and 0 are valid answers: no list, no item, no table, no name. libtqxml accepts them
///   everywhere, and passes null only where a comment allows it.
/// - **Memory** that the server library hands out is released by its own functions only: buffers by
///   TQ_free(), records by TQPacketFreeList() and TQPacketFreeItem(), items and nodes by delete.
/// - **Text** is UTF-8, NUL-terminated unless a length goes with it.
/// - **Keys, types and texts come from requests** of any agent, and from untrusted XML. Accept
/// every
///   value; one that means nothing to you finds nothing.
/// - **Threads.** A program may have one connection in each thread. A connection, its answers and
///   the items made from them are used by one thread at a time. But several threads use theirs at
///   the same time, so guard what they share: conversion tables, the factory, counters, any table
///   of open connections. Functions without a connection (all that are not members of
///   TQCommServer) are called by several threads at once.
/// - **Event loop.** A query may run Qt's event loop while it waits. libtqxml is prepared for
///   whatever the program does meanwhile, even when it deletes the router whose bridge asked. Your
///   library must be prepared for a second query on the same connection. The program makes sure
///   that a connection lives longer than its queries.

// Symbols of the server library are visible whatever the including project's default is.
#if defined(__GNUC__)
#define TQSERVER_EXPORT __attribute__((visibility("default")))
#else
#define TQSERVER_EXPORT
#endif

/// Database key of an item. Both words zero is the null key. Only the server library knows what the
/// words mean; everybody else compares keys for equality.
struct TQKEY_ELEMENT
{
    unsigned int key;  ///< first word
    unsigned int hkey;  ///< second word
};

/// Stored data types. Any 32-bit number is a valid value; the enumerators are those in use.
///
/// When records are freed (TQPacketFreeList(), TQPacketFreeItem()), the type is 8 for owners'
/// records (also for those of owners of books), 21 for jobs' and 86 for books'.
enum PACKETDATATYPES : unsigned int {
    PACKETDATATYPE_NONE = 0,  ///< no type
    PACKETDATATYPE_UNCONVERTED = 6,  ///< item without fields in packet text
    PACKETDATATYPE_OUTPUT = 8,  ///< item of an output; loads a ::TQOWNER record of list 15
    PACKETDATATYPE_OUTPUTLIST = 15,  ///< list of outputs, asked for with getDBList()
    PACKETDATATYPE_JOB = 21,  ///< item of a job, TQJOB_CC; loads a ::TQJOB record
    PACKETDATATYPE_ICCPROFILE = 48,  ///< item of an ICC profile, ICCPROFILEDATA_CC
    PACKETDATATYPE_BOOKOWNER = 85,  ///< owner of books: a list, and an item that loads its records
    PACKETDATATYPE_BOOK = 86  ///< item of a book, BOOK_CC; loads a ::TQBOOK record
};

/// Levels of items and lists that libtqxml follows, one inside the other, in packet text and in
/// XML.
constexpr int TQMAX_NESTING = 256;

/// A job queue of the server.
enum TQQUEUE : int { TQQUEUE_ALL = 3 };

/// What a listing is sorted by.
enum SORTTYPE : int { SORTTYPE_NAME = 4 };

/// Direction of a sorted listing.
enum SORTORDER : int { SORTORDER_ASCENDING = 0, SORTORDER_DESCENDING = 1 };

/// Command record: filled by each query, and read with TQCommServer::iserror(). Callers pass a new
/// one to each query and do not read its members.
struct TQLPCOMMANDS
{
    int command = 0;  ///< number of the query that filled the record
    int status = 0;  ///< 0 when the query succeeded
};

/// Identifier of a query's message; each query on a connection fills in another one. Callers pass a
/// new one to each query.
struct ZQ_MESSAGE_ID
{
    unsigned int id = 0;  ///< 0 before the query
};

/// Operations on database keys.
class TQSERVER_EXPORT TQKEY_CC
{
public:
    /// The key that denotes nothing: both words zero.
    static TQKEY_ELEMENT getNullKey();
    /// True when the key may denote a database item: both words are non-zero. No query is made.
    static bool isValid(const TQKEY_ELEMENT &key);
};

/// Releases a buffer that the server library allocated; null is ignored.
TQSERVER_EXPORT void TQ_free(void *buffer);

#endif

#ifndef TQTYPES_H
#define TQTYPES_H

/// \file
/// Keys, data types and small records of the server library.

// Symbols of the server library are visible whatever the including project's default is.
#if defined(__GNUC__)
#define TQSERVER_EXPORT __attribute__((visibility("default")))
#else
#define TQSERVER_EXPORT
#endif

/// Database key of an item. Both words zero is the null key.
struct TQKEY_ELEMENT
{
    unsigned int key;  ///< first word
    unsigned int hkey;  ///< second word
};

/// Stored data types. Any 32-bit number is a valid value; the enumerators are those in use.
enum PACKETDATATYPES : unsigned int {
    PACKETDATATYPE_NONE = 0,
    PACKETDATATYPE_UNCONVERTED = 6,  ///< exists, but has no packet text of its own
    PACKETDATATYPE_OUTPUT = 8,
    PACKETDATATYPE_OUTPUTLIST = 15,
    PACKETDATATYPE_JOB = 21,
    PACKETDATATYPE_ICCPROFILE = 48,
    PACKETDATATYPE_BOOKOWNER = 85,
    PACKETDATATYPE_BOOK = 86
};

/// A job queue of the server.
enum TQQUEUE : int { TQQUEUE_ALL = 3 };

/// What a listing is sorted by.
enum SORTTYPE : int { SORTTYPE_NAME = 4 };

/// Direction of a sorted listing.
enum SORTORDER : int { SORTORDER_ASCENDING = 0, SORTORDER_DESCENDING = 1 };

/// Command record: filled by each query, asked with TQCommServer::iserror().
struct TQLPCOMMANDS
{
    int command = 0;  ///< number of the query that filled the record
    int status = 0;  ///< 0 when the query succeeded
};

/// Identifier that a query gives its message; never the same twice on one connection.
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
    /// True when the key denotes a database item: both words are non-zero.
    static bool isValid(const TQKEY_ELEMENT &key);
};

/// Releases a buffer that the server library allocated; null is ignored.
TQSERVER_EXPORT void TQ_free(void *buffer);

#endif

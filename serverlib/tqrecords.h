#ifndef TQRECORDS_H
#define TQRECORDS_H

#include "tqtypes.h"

#include <stddef.h>

/// \file
/// List records as the server library hands them out.
///
/// - The byte offsets are the same on every platform, so with 8-byte pointers some members are
///   misaligned: read and write them by value, never through a pointer or reference.
/// - Records are allocated and freed by the server library alone, which may keep data of its own
///   after the end of the declared part, and in the reserved bytes. A record stays valid until it
///   is freed, also during later queries and after the connection's end.
/// - libtqxml reads the members, and reads and writes the next pointers: it cuts and joins lists
///   itself. So do not store the length or the end of a list, nor a pointer to the record before.
/// - The texts belong to the record and live as long as it does; a null name counts as an empty
/// one.
/// - A record is in a list, or belongs to an item (see TQPacketable::loadRecord()), or to whoever
///   unlinked it. Its owner frees it once.
#pragma pack(push, 1)

/// What every list record starts with.
struct TQLISTRECORD
{
    unsigned char reserved[16];  ///< the server library's own
    TQLISTRECORD *next;  ///< null at the end of the list
};

/// Record of an owner: an output (in the list of data type 15) or an owner of books (85). The
/// bridge asks for an owner's jobs or books by this key. An output's record is also loaded into an
/// item of data type 8, which takes the name and the fields from the server library's own part.
struct TQOWNER
{
    TQLISTRECORD list;  ///< links the records
    unsigned char reserved[56 - sizeof(TQLISTRECORD)];  ///< the server library's own
    unsigned int key;  ///< first word of the owner's database key
    unsigned int hkey;  ///< second word of that
};

/// Record of a book.
struct TQBOOK
{
    TQLISTRECORD list;  ///< links the records
    unsigned char reserved[28 - sizeof(TQLISTRECORD)];  ///< the server library's own
    char *name;  ///< NUL-terminated UTF-8
};

/// Record of a job.
struct TQJOB
{
    TQLISTRECORD list;  ///< links the records
    unsigned char reserved0[28 - sizeof(TQLISTRECORD)];  ///< the server library's own
    char *name;  ///< NUL-terminated UTF-8
    unsigned char reserved1[164 - 28 - sizeof(char *)];  ///< the server library's own
    char *publicationName;  ///< NUL-terminated UTF-8; null for a job outside any publication
    unsigned char reserved2[188 - 164 - sizeof(char *)];  ///< the server library's own
    unsigned int publicationId;  ///< the publication's; not read when publicationName is null
};

#pragma pack(pop)

static_assert(offsetof(TQLISTRECORD, next) == 16, "next record");
static_assert(offsetof(TQOWNER, key) == 56, "owner's key");
static_assert(offsetof(TQOWNER, hkey) == 60, "owner's hkey");
static_assert(offsetof(TQBOOK, name) == 28, "book's name");
static_assert(offsetof(TQJOB, name) == 28, "job's name");
static_assert(offsetof(TQJOB, publicationName) == 164, "job's publication name");
static_assert(offsetof(TQJOB, publicationId) == 188, "job's publication identifier");

/// Appends a whole list to the list at head; an empty (null) head becomes the list. A null list
/// changes nothing. The time grows with the length of the list at head only. The two lists must not
/// share records.
TQSERVER_EXPORT void AddListList(TQLISTRECORD **head, TQLISTRECORD *list);

/// Unlinks one record of the list at head and clears its next pointer; the record is the caller's
/// from then on. A record that is not in the list is left alone. Unlinking the first is O(1).
TQSERVER_EXPORT void RemoveItemFromList(TQLISTRECORD **head, TQLISTRECORD *record);

/// Frees every record of the list and sets the head to null; the list may be empty (null). The data
/// type says what the records are: 8 owners of both kinds, 21 jobs, 86 books.
TQSERVER_EXPORT void TQPacketFreeList(TQLISTRECORD **head, PACKETDATATYPES type);

/// Frees one unlinked record of that data type; null is ignored.
TQSERVER_EXPORT void TQPacketFreeItem(TQLISTRECORD *record, PACKETDATATYPES type);

#endif

#ifndef TQRECORDS_H
#define TQRECORDS_H

#include "tqtypes.h"

#include <stddef.h>

/// \file
/// List records as the server library hands them out. The byte offsets are the same on every
/// platform, so with 8-byte pointers some members are misaligned: read and write them by value,
/// never through a pointer or reference. Records are allocated and freed by the server library
/// alone, which may keep more behind the end of the declared part.
#pragma pack(push, 1)

/// What every list record starts with.
struct TQLISTRECORD
{
    unsigned char reserved[16];  ///< the server library's own
    TQLISTRECORD *next;  ///< null at the end of the list
};

/// Record of an owner: an output (data type 15) or an owner of books (data type 85).
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
    unsigned int publicationId;  ///< means something only with a publication name
};

#pragma pack(pop)

static_assert(offsetof(TQLISTRECORD, next) == 16, "next record");
static_assert(offsetof(TQOWNER, key) == 56, "owner's key");
static_assert(offsetof(TQOWNER, hkey) == 60, "owner's hkey");
static_assert(offsetof(TQBOOK, name) == 28, "book's name");
static_assert(offsetof(TQJOB, name) == 28, "job's name");
static_assert(offsetof(TQJOB, publicationName) == 164, "job's publication name");
static_assert(offsetof(TQJOB, publicationId) == 188, "job's publication identifier");

/// Appends a whole list to the list at head; an empty (null) head becomes the list. Time grows
/// with the length of the list at head, not with that of the appended one.
TQSERVER_EXPORT void AddListList(TQLISTRECORD **head, TQLISTRECORD *list);

/// Unlinks one record of the list at head and clears its next pointer; the record is the caller's
/// from then on. A record that is not in the list is left alone. Unlinking the first is O(1).
TQSERVER_EXPORT void RemoveItemFromList(TQLISTRECORD **head, TQLISTRECORD *record);

/// Frees every record of the list and sets the head to null. The data type names the family of
/// records: 8 owners, 21 jobs, 86 books.
TQSERVER_EXPORT void TQPacketFreeList(TQLISTRECORD **head, PACKETDATATYPES type);

/// Frees one unlinked record; null is ignored.
TQSERVER_EXPORT void TQPacketFreeItem(TQLISTRECORD *record, PACKETDATATYPES type);

#endif

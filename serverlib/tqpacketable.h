#ifndef TQPACKETABLE_H
#define TQPACKETABLE_H

#include "tqtypes.h"

class ICCPROFILEDATA_CC;

/// Sub-record of an output item (data type 8).
struct TQSUBRECORD
{
    char *name;  ///< NUL-terminated UTF-8, or null
};

/// One reference of an item to another: by key, or by name when the key is not valid.
struct TQDB_REFERENCE
{
    TQDB_REFERENCE *next;  ///< null at the end of the chain
    PACKETDATATYPES datatype;  ///< data type of the referred item; 0 when unknown
    TQKEY_ELEMENT key;  ///< not valid in a reference by name
    const char *name;  ///< NUL-terminated UTF-8, or null
};

/// A server item: its fields, key and name, and their packet text.
///
/// An item owns its sub-record, its name, the record it was loaded from and its reference chain.
class TQSERVER_EXPORT TQPacketable
{
public:
    /// An item of that type without key, name or field values.
    explicit TQPacketable(PACKETDATATYPES type = PACKETDATATYPE_NONE);
    /// A new item with what operator=() copies.
    TQPacketable(const TQPacketable &other);
    virtual ~TQPacketable();

    /// Writes the packet text. The buffer is the caller's, to be released with TQ_free(); it is
    /// not NUL-terminated. Null on failure, length then 0.
    virtual char *toPacket(unsigned int &length) const;
    /// Fills the item from packet text of that many bytes; false when the text does not parse,
    /// with the item unchanged. The key and name stay as they are. A value that could not be read
    /// again is left out: blank text, bytes of no size, a list with an empty text. The flags are
    /// reserved: pass false, then true.
    virtual bool fromPacket(char *data, unsigned int length, bool, bool);
    /// Takes over a record of the item's family: fields, key, name and, for data type 8, the
    /// sub-record. The record belongs to the item, which frees it when it loads the next or dies.
    virtual void loadRecord(unsigned char *record);
    /// Leaves the head of the chain of the item's references, each of them once, at head; null
    /// when there are none. The chain is the item's, valid until the next call or the item's end.
    /// Pass 0 and 0.
    virtual void getReferences(int, TQDB_REFERENCE **head, int);

    /// Copies type, key, name, sub-record and fields; records stay with the item they belong to.
    TQPacketable &operator=(const TQPacketable &other);

    /// Sets the name from UTF-8; null clears it.
    void setName(const char *name);
    /// Like loadRecord(), but leaves the name as it was set.
    void setData(unsigned char *record);

    TQSUBRECORD *subrecord;  ///< owned; only outputs have one, null otherwise
    PACKETDATATYPES datatype;  ///< set by the constructor and by operator=()
    TQKEY_ELEMENT dbkey;  ///< the null key until a record or the application sets it
    char *name;  ///< owned, change it with setName(); null when none was set

private:
    friend class ICCPROFILEDATA_CC;  // loads from where its item came from
    struct Fields;
    Fields *m_fields;  // owned; the implementation's own
};

/// Factory of server items.
class TQSERVER_EXPORT PacketableUtil
{
public:
    /// A new item of that type, to be deleted by the caller; null for an unknown type.
    static TQPacketable *getPacketable(PACKETDATATYPES type);
};

#endif

#ifndef TQPACKETABLE_H
#define TQPACKETABLE_H

#include "tqtypes.h"

/// \file
/// Items of the server, and their packet text.
///
/// Packet text
/// -----------
///
/// Packet text is the text form of an item's fields. TQPacketable::toPacket() writes it and
/// TQPacketable::fromPacket() reads it. An item's key and name are not part of it, unless a field
/// holds them as well. It is UTF-8 without a byte order mark, and it consists of lines. Every line
/// is a word, one blank and a value, and ends with one line feed; so does the last line.
///
/// | Line | What it says |
/// |------|--------------|
/// | `SI` type | an item of that data type begins |
/// | `TI 0` | the item ends |
/// | `SL` size | a list of that many items begins |
/// | `TL 0` | the list ends |
/// | tag value | a field of the open item; the field's type code says which form the value has |
///
/// Types, sizes, tags and the words of keys are 32-bit numbers, hexadecimal without prefix. Write
/// them in lower case and without leading zeros. When you read, accept upper case and leading
/// zeros: they can stand in foreign XML that the text was made from.
///
/// An item holds fields, lists and items, in any order. A list holds items only. This is a job with
/// a name, a book's key, and a list of one item of type 5:
///
///     SI 15
///     1 Cover
///     3 2a 56
///     SL 1
///     SI 5
///     2 7
///     TI 0
///     TL 0
///     TI 0
///
/// Forms of values; ::TQELEMENTTYPE says which type code has which:
///
/// | Form | Value | Example of a line |
/// |------|-------|-------------------|
/// | text | any text, not empty, no white space at its ends | `1 Moby-Dick` |
/// | integer | decimal, "-" when negative, in the range below | `6 300` |
/// | number | decimal with a point, also with an exponent; finite | `4 841.89` |
/// | key | the words key and hkey, one blank between them | `3 2a 56` |
/// | numbers | count, blank, that many integers or numbers, blanks between | `7 2 129 198` |
/// | texts | count, blank, that many texts, carriage returns between | `8 2 Novel` CR `Sea` |
/// | bytes | size in bytes, blank, the bytes in base64 with padding | `7 4 AP8A/w==` |
///
/// An integer lies between the smallest signed and the largest unsigned number of its width. Counts
/// and sizes are hexadecimal, too. Numbers and texts without any entry have the value "0 ", with
/// the blank. A field without a value has no line. A tag that comes twice in an item is not an
/// error; readers take the first.
///
/// - **There is no escaping.** A value holds no line feed, and an entry of texts holds no carriage
///   return. Replace both before you write.
/// - **Read strictly.** Refuse a line without a blank or line feed, brackets that do not match,
///   tags that the item's type does not have, values that do not have their form, and counts and
///   sizes that are wrong. Never read past the length.
/// - **libtqxml reads leniently.** It drops empty lines, white space at the ends of a line, fields
///   that it does not know, and keys, numbers and texts whose parts do not match their count; an
///   empty text among texts is such a case. What it drops is lost: do not write it.
/// - **Items in items** have types with a conversion table. One that has none (type 6) is written
///   as its "SI" line with the "TI" line right after it: libtqxml takes the line after "SI" for the
///   end, whatever it is.
/// - **Depth.** libtqxml follows ::TQMAX_NESTING levels of items and lists, and leaves out what
///   lies deeper. Refuse text that is too deep for you.
/// - **Several blocks.** As a rule, the text of an item is one block: from its own "SI" line to the
///   "TI" line that belongs to it. But an XMLPacketable may hold more items and lists next to its
///   own item; then there are several blocks, one after another. The item itself is the first item
///   block that is in no list, and has the item's type. Keep the other blocks, and write them in
///   the same order.
/// - **Empty text** (length 0) and text without the item's own block describe no item: refuse them.
///   An item without any field is "SI" type and "TI 0".

class ICCPROFILEDATA_CC;

/// Sub-record of an output item (data type 8).
struct TQSUBRECORD
{
    char *name;  ///< the output's name, NUL-terminated UTF-8; or null
};

/// One reference of an item to another: by key, or by name when the key is not valid.
struct TQDB_REFERENCE
{
    TQDB_REFERENCE *next;  ///< null at the end of the chain
    PACKETDATATYPES datatype;  ///< data type of the referred item; 0 when unknown
    TQKEY_ELEMENT key;  ///< not valid in a reference by name
    const char *name;  ///< NUL-terminated UTF-8; null in a reference by key
};

/// A server item: its fields, key and name, and their packet text.
///
/// An item owns its sub-record, its name, the record it was loaded from and its reference chain. It
/// is independent of the connection that the record came from, and may outlive it. Applications and
/// libtqxml read subrecord, datatype, dbkey and name directly, and assign to dbkey.
class TQSERVER_EXPORT TQPacketable
{
public:
    /// An item of that type without key, name or field values.
    explicit TQPacketable(PACKETDATATYPES type = PACKETDATATYPE_NONE);
    /// A new item with what operator=() copies.
    TQPacketable(const TQPacketable &other);
    virtual ~TQPacketable();

    /// Writes the packet text. The buffer is the caller's, to be released with TQ_free(). It is not
    /// NUL-terminated, and stays valid when the item changes or dies. On failure it returns null
    /// and sets length to 0. libtqxml's item then has type, key and name only; so it has when the
    /// text is longer than 2^31 - 1 bytes.
    virtual char *toPacket(unsigned int &length) const;
    /// Fills the item from packet text of that many bytes; false when the text does not parse or is
    /// empty, with the item unchanged. All fields that the item had before are gone after success;
    /// key, name and sub-record stay as they are, as libtqxml sets key and name itself afterwards.
    /// The buffer is the caller's and ends after the call; it need not end with a NUL. A value that
    /// libtqxml would not read back (see the file's description) may be left out. The flags are
    /// reserved: pass false, then true.
    virtual bool fromPacket(char *data, unsigned int length, bool, bool);
    /// Takes over a record that items of this data type load (see PACKETDATATYPES): fields, key,
    /// name and, for data type 8, the sub-record; the member name of such an item is then null.
    ///
    /// From then on the record is the item's, which frees it when it takes over the next one or
    /// dies; fields, key and name were copied by then, or live as long. The record must be
    /// unlinked: the item neither follows nor changes its next pointer, and a list that still holds
    /// it would lead to freed memory. The record that the item owns already may be given again. A
    /// record that another item owns must not: it would be freed twice. Null, and a record that
    /// items of another type load, leave the item without fields, key and name.
    virtual void loadRecord(unsigned char *record);
    /// Leaves the head of the chain of the item's references at head; null when there are none. The
    /// chain has one entry for each different key or name that a field of the type codes
    /// ::TQELEMENT_KEY or ::TQELEMENT_NAME holds, in the order of the fields in the packet text.
    /// Keys that are not valid are left out, and so are fields of items inside the item.
    ///
    /// libtqxml asks an item that it filled with fromPacket(), so the answer must follow from the
    /// packet text alone: such an item has neither a record nor a connection. The chain belongs to
    /// the item and is valid until the item changes, is asked again or dies. A
    /// null head is ignored. The numbers are reserved: pass 0 and 0.
    virtual void getReferences(int, TQDB_REFERENCE **head, int);

    /// Copies type, key, name, sub-record and fields. Neither the other item's record nor its chain
    /// of references is copied, and this item keeps the record that it owns. Assigning an item to
    /// itself changes nothing. Items of all types can be assigned to each other; the C++ class of
    /// this item stays the same.
    TQPacketable &operator=(const TQPacketable &other);

    /// Sets the name from UTF-8, which is copied; it may be this item's name itself. Null clears
    /// it.
    void setName(const char *name);
    /// Like loadRecord(), but leaves the name as it was set. libtqxml calls setName() before.
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
    /// A new item of that type, to be deleted by the caller; null for an unknown type. Type 6 is
    /// known.
    ///
    /// ICC profiles (48) must be an ICCPROFILEDATA_CC: libtqxml finds out with dynamic_cast, and
    /// loads no bytes into anything else. Jobs (21) are a TQJOB_CC and books (86) a BOOK_CC, for
    /// applications that cast likewise. Every other type is a plain TQPacketable, or a subclass of
    /// your own. Several threads ask at once.
    static TQPacketable *getPacketable(PACKETDATATYPES type);
};

#endif

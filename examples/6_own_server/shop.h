// What the units of this server library share.

#ifndef SHOP_H
#define SHOP_H

#include <archivenode.h>
#include <optional>
#include <string>
#include <string_view>
#include <tqrecords.h>
#include <tqstorageclass.h>
#include <vector>

// One line of a table.
struct Row
{
    TQKEY_ELEMENT key;  // number within the table, and data type
    unsigned int owner;  // number of its output or owner of books; 0 for none
    std::string name;
    std::vector<std::string> values;  // of the type's fields, in packet text's form; may be empty
};

// The store: a folder with one table for each data type.
struct Shop
{
    // The open shop with that number, or null.
    static Shop *find(unsigned int number);

    // The rows of a table, by name; none when it cannot be read.
    std::optional<std::vector<Row>> rows(PACKETDATATYPES type);
    // The bytes of a file in the folder; none when it cannot be read.
    std::optional<std::string> bytes(const std::string &file);

    void fail(const std::string &reason);

    std::string folder;
    unsigned int number = 0;  // each open shop has another one; 0 for a shop that is not open
    unsigned int failures = 0;
    std::string error;  // of the last failure
};

// A record: the declared part, which libtqxml sees, and our own part.
struct Record
{
    union {
        TQLISTRECORD list;
        TQOWNER owner;
        TQBOOK book;
        TQJOB job;
    } shown;  // the first member, so that it has the record's address
    Row row;

    // A new record in front of next.
    static Record *make(const Row &row, TQLISTRECORD *next);
    static Record *of(void *shown) { return static_cast<Record *>(shown); }
};

// The field of the type with that tag, or null. The record's reserved0 is the type that the field
// refers to.
const CONVERTSTRUCTELEMENTINFO *findField(PACKETDATATYPES type, unsigned int tag);

// Lower-case hexadecimal.
std::string hex(unsigned int number);
// Packet text of an item with these values for the fields of its type.
std::string writeItem(PACKETDATATYPES type, const std::vector<std::string> &values);
// True when the text describes an item of that type.
bool isItem(std::string_view text, PACKETDATATYPES type);

// The item with that key and all that it refers to, owned by the caller. Null when there is none.
ArchiveNode *loadArchive(Shop &shop, PACKETDATATYPES type, const TQKEY_ELEMENT &key);

// A field's line: its tag and its value.
struct Field
{
    unsigned int tag;
    std::string_view value;
};
// The fields of the item itself, without those of items inside it. Values point into the text.
std::vector<Field> fieldsOf(std::string_view text);

#endif

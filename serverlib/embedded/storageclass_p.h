#ifndef STORAGECLASS_P_H
#define STORAGECLASS_P_H

#include "tqregistry.h"
#include "tqstorageclass.h"

#include <deque>
#include <string>
#include <utility>
#include <vector>

namespace TQServerInternal {

// What is known of a data type: its fields, and where a store keeps its items.
class StorageClass
{
public:
    // Where the rows of a stored type are.
    struct Source
    {
        PACKETDATATYPES type;
        const char *alias;  // of the type's own table within tables
        const char *head;  // publication's name and id, page number
        const char *tables;  // the FROM clause
    };

    StorageClass(PACKETDATATYPES type, const TQSTORAGEFIELD *fields, size_t count);
    StorageClass(const StorageClass &) = delete;
    StorageClass &operator=(const StorageClass &) = delete;

    PACKETDATATYPES type() const { return m_type; }
    const std::vector<TQSTORAGEFIELD> &fields() const { return m_fields; }
    // The field of that tag, or null.
    const TQSTORAGEFIELD *find(unsigned tag) const;
    // Null for a type without rows of its own.
    const Source *source() const { return m_source; }
    CONVERTSTRUCTELEMENTINFO *conversion() { return m_conversion.data(); }

private:
    const char *keep(const char *text);

    PACKETDATATYPES m_type;
    const Source *m_source;
    std::deque<std::string> m_texts;  // copies that the fields' pointers point at
    std::vector<TQSTORAGEFIELD> m_fields;
    std::vector<CONVERTSTRUCTELEMENTINFO> m_conversion;  // ends with a record of type 0
    std::vector<std::pair<unsigned, size_t>> m_byTag;  // sorted; index into m_fields
};

// Null for an unknown type and for type 6, which is known but has no fields.
const StorageClass *storageClass(PACKETDATATYPES type);

}  // namespace TQServerInternal

#endif

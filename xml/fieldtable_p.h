#ifndef FIELDTABLE_P_H
#define FIELDTABLE_P_H

#include "tqstorageclass.h"

#include <QString>

#include <memory>
#include <vector>

// XML shape of a field.
enum Shape { NoShape, Simple, Key, NumberArray, StringArray, Binary };

// The fields of a data type, ready for conversions: the server library's table with each field's
// shape and element name, indexed by data tag.
class FieldTable
{
public:
    struct Field
    {
        unsigned int tag;
        unsigned int type;  // element type code
        Shape shape;
        QString name;  // element name
    };

    // The fields of a data type; null when items of the type are not converted at all. Made once
    // for each table, and again when the table has changed.
    static std::shared_ptr<const FieldTable> of(unsigned int datatype);

    // The first field with that tag; null when there is none.
    const Field *find(unsigned int tag) const;

private:
    explicit FieldTable(const CONVERTSTRUCTELEMENTINFO *records);
    bool isMadeFrom(const CONVERTSTRUCTELEMENTINFO *records) const;

    std::vector<CONVERTSTRUCTELEMENTINFO> m_records;  // as the table was, with its end record
    std::vector<Field> m_fields;  // by tag
};

#endif

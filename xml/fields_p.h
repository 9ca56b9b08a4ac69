#ifndef TQXML_FIELDS_P_H
#define TQXML_FIELDS_P_H

#include "vocabulary_p.h"

#include "tqstorageclass.h"

#include <QDomDocument>
#include <QString>
#include <QStringView>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace TQXmlInternal {

// The fields of items: which fields a data type has, and how each is read and written.

// The forms of a field; fields.cpp shows each in packet text and in XML.
enum Form { NoForm, Simple, Key, NumberArray, StringArray, Binary };

// Packet text that is being written. It is appended to in many short pieces, for which
// QString::append() is too slow.
using LineBuffer = std::u16string;

inline void append(LineBuffer &out, QStringView piece)
{
    out.append(piece.utf16(), size_t(piece.size()));
}

// The fields of a data type, ready for conversions: the server library's table with each field's
// form and element name, indexed by data tag.
class FieldTable
{
public:
    struct Field
    {
        unsigned int tag;
        unsigned int type;  // element type code
        Form form;
        QString name;  // element name
    };

    // The fields of a data type; null when items of the type are not converted at all. Made once
    // for each table, and again if the table changes.
    static std::shared_ptr<const FieldTable> of(unsigned int datatype);

    // The first field with that tag; null when there is none.
    const Field *find(unsigned int tag) const;

private:
    explicit FieldTable(const CONVERTSTRUCTELEMENTINFO *records);
    bool isMadeFrom(const CONVERTSTRUCTELEMENTINFO *records) const;

    std::vector<CONVERTSTRUCTELEMENTINFO> m_records;  // as the table was, with its end record
    std::vector<Field> m_fields;  // by tag
};

// The parts of a field's value. They are views of its line; an empty view means absent.
struct FieldContent
{
    QStringView value;  // attributes
    QStringView key;
    QStringView hkey;
    QStringView size;  // of bytes, as it stands
    std::optional<unsigned int>
        count;  // of values, written as their size; never together with size
    QStringView values;  // children: the parts between the separators
    char16_t separator = BLANK;
    std::optional<QStringView> text;
};

FieldContent readField(Form form, QStringView value);

bool operator==(const FieldContent &a, const FieldContent &b);

// Appends a new element with that content to parent. The caller passes the parent's document, so
// that it is not searched for again with every field.
QDomElement buildField(
    QDomDocument &document, QDomElement &parent, const QString &name, const FieldContent &content);

// Appends the line of a field's element, which starts with its tag. A simple field without a value
// and a field without a form have no line.
void writeField(LineBuffer &out, Form form, QStringView tag, const QDomElement &e);

// The fields of an item whose type has that text; null when such items are not converted.
std::shared_ptr<const FieldTable> fieldsOfType(QStringView type);

// The element name of a field, "_" and its data tag in hexadecimal, and the tag in such a name.
QString fieldName(int tag);
inline QStringView tagIn(const QString &fieldName) { return QStringView(fieldName).mid(1); }

// A new element without a parent, with one attribute unless its value is empty.
QDomElement makeElement(
    QDomDocument &document, const QString &name, const QString &attribute, QStringView value);

}  // namespace TQXmlInternal

#endif

#include "fields_p.h"

#include "domtree_p.h"
#include "text_p.h"
#include "vocabulary_p.h"

#include <algorithm>
#include <iterator>
#include <unordered_map>

// A field of each form in packet text and in XML, here of tag 7:
//
// | Form        | Value in packet text | Element                                                 |
// |-------------|----------------------|---------------------------------------------------------|
// | Simple      | 300                  | <_7 value="300"/>                                       |
// | Key         | 2a 56                | <_7 key="2a" hkey="56"/>                                |
// | NumberArray | 2 129 198            | <_7 size="2"><value>129</value><value>198</value></_7>  |
// | StringArray | 2 Novel CR Sea       | <_7 size="2"><value>Novel</value><value>Sea</value></_7>|
// | Binary      | 4 AP8A/w==           | <_7 size="4">AP8A/w==</_7>                              |
//
// Sizes are hexadecimal. CR is the carriage return, without blanks around it.

namespace TQXmlInternal {

namespace {

// Items of this type are never converted.
constexpr unsigned int UNCONVERTED = PACKETDATATYPE_UNCONVERTED;

// Tables that are kept; far more than there are data types.
constexpr size_t MAX_TABLES = 1024;

// The form of a field by element type code. Codes outside all spans have no form. The width of a
// field does not matter here: it only distinguishes codes that have the same form.
struct Span
{
    TQELEMENTTYPE first;
    TQELEMENTTYPE last;
    Form form;
};
constexpr Span SPANS[] = {
    { TQELEMENT_TEXT, TQELEMENT_NAME, Simple },
    { TQELEMENT_LENGTH, TQELEMENT_INTEGER, Simple },
    { TQELEMENT_KEY, TQELEMENT_KEY, Key },
    { TQELEMENT_NUMBERS, TQELEMENT_INTEGERS1, NumberArray },
    { TQELEMENT_CHOICE, TQELEMENT_BITS, Simple },
    { TQELEMENT_TEXTS, TQELEMENT_TEXTS, StringArray },
    { TQELEMENT_BYTES, TQELEMENT_BYTES, Binary },
    { TQELEMENT_DATETIME, TQELEMENT_REMARK, Simple },
    { TQELEMENT_LENGTHS, TQELEMENT_LENGTHS, NumberArray },
    { TQELEMENT_PATH, TQELEMENT_INTEGER4, Simple },
    { TQELEMENT_BITSETS, TQELEMENT_INTEGERS4, NumberArray },
};

Form formOf(unsigned int type)
{
    for (const Span &span : SPANS) {
        if (type >= span.first && type <= span.last) {
            return span.form;
        }
    }
    return NoForm;
}

bool isBefore(const FieldTable::Field &field, unsigned int tag) { return field.tag < tag; }

unsigned int countParts(QStringView text, char16_t separator)
{
    unsigned int count = 0;
    forEachPart(text, separator, [&](QStringView) { ++count; });
    return count;
}

void setText(QDomElement &e, const QString &attribute, QStringView value)
{
    if (!value.isEmpty()) {
        e.setAttribute(attribute, value.toString());
    }
}

void appendValue(QDomDocument &document, QDomElement &array, QStringView text)
{
    QDomElement value = document.createElement(VALUE);
    value.appendChild(document.createTextNode(text.toString()));
    array.appendChild(value);
}

void startLine(LineBuffer &out, QStringView tag)
{
    append(out, tag);
    out += BLANK;
}

void writeArray(LineBuffer &out, QStringView tag, const QDomElement &e, char16_t separator)
{
    startLine(out, tag);
    const size_t countAt = out.size();
    qint64 count = 0;
    for (QDomNode node = e.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (node.toElement().tagName() == VALUE) {
            out += count++ == 0 ? BLANK : separator;
            append(out, textBelow(node));
        }
    }
    if (count == 0) {
        out += BLANK;
    }
    const QString size = numberText(count, 16);
    out.insert(countAt, QStringView(size).utf16(), size_t(size.size()));
    out += LINE_FEED;
}

FieldContent readSimple(QStringView text)
{
    FieldContent content;
    content.value = text;
    return content;
}

void writeSimple(LineBuffer &out, QStringView tag, const QDomElement &e)
{
    const QString value = e.attribute(VALUE);
    if (!value.isEmpty()) {
        startLine(out, tag);
        append(out, value);
        out += LINE_FEED;
    }
}

FieldContent readKey(QStringView text)
{
    FieldContent content;
    if (countParts(text, BLANK) == 2) {
        content.key = takePart(text, BLANK);
        content.hkey = takePart(text, BLANK);
    }
    return content;
}

void writeKey(LineBuffer &out, QStringView tag, const QDomElement &e)
{
    startLine(out, tag);
    append(out, e.attribute(KEY));
    out += BLANK;
    append(out, e.attribute(HKEY));
    out += LINE_FEED;
}

// Empty unless the size is the number of numbers.
FieldContent readNumberArray(QStringView text)
{
    FieldContent content;
    const unsigned int parts = countParts(text, BLANK);
    unsigned int size = 0;
    if (readNumber(takePart(text, BLANK), 16, size) && size == parts - 1) {
        content.count = size;
        content.values = text;
    }
    return content;
}

void writeNumberArray(LineBuffer &out, QStringView tag, const QDomElement &e)
{
    writeArray(out, tag, e, BLANK);
}

// Has the size if that is a number, and the strings only if there are that many.
FieldContent readStringArray(QStringView text)
{
    FieldContent content;
    content.separator = STRING_SEPARATOR;
    QStringView rest = text;
    unsigned int size = 0;
    if (!readNumber(takePart(rest, BLANK), 16, size)) {
        return content;
    }
    content.count = size;
    // The strings start after the first blank. If the text starts with a blank, the size itself
    // counts as a string.
    const QStringView strings = text.mid(indexOf(text, BLANK) + 1);
    if (countParts(strings, STRING_SEPARATOR) == size) {
        content.values = strings;
    }
    return content;
}

void writeStringArray(LineBuffer &out, QStringView tag, const QDomElement &e)
{
    writeArray(out, tag, e, STRING_SEPARATOR);
}

// Without a blank, the whole text is both size and data.
FieldContent readBinary(QStringView text)
{
    const qsizetype blank = indexOf(text, BLANK);
    FieldContent content;
    content.size = blank < 0 ? text : text.left(blank);
    content.text = text.mid(blank + 1);
    return content;
}

void writeBinary(LineBuffer &out, QStringView tag, const QDomElement &e)
{
    startLine(out, tag);
    append(out, e.attribute(SIZE));
    out += BLANK;
    append(out, textBelow(e));
    out += LINE_FEED;
}

// How a form is read and written.
struct Conversion
{
    FieldContent (*read)(QStringView value);
    void (*write)(LineBuffer &out, QStringView tag, const QDomElement &e);
};
// By form; a field without a form has neither element nor line.
constexpr Conversion CONVERSIONS[] = {
    { nullptr, nullptr },
    { readSimple, writeSimple },
    { readKey, writeKey },
    { readNumberArray, writeNumberArray },
    { readStringArray, writeStringArray },
    { readBinary, writeBinary },
};
static_assert(std::size(CONVERSIONS) == Binary + 1, "one row for each form");

}  // namespace

FieldTable::FieldTable(const CONVERTSTRUCTELEMENTINFO *records)
{
    const CONVERTSTRUCTELEMENTINFO *end = records;
    for (; end->type != 0; ++end) {
        m_fields.push_back({ end->tag, end->type, formOf(end->type), fieldName(int(end->tag)) });
    }
    m_records.assign(records, end + 1);
    std::stable_sort(m_fields.begin(), m_fields.end(),
        [](const Field &a, const Field &b) { return a.tag < b.tag; });
}

bool FieldTable::isMadeFrom(const CONVERTSTRUCTELEMENTINFO *records) const
{
    // Stops at the first difference: a table that is shorter now is not read past its end.
    return std::all_of(m_records.begin(), m_records.end(), [&](const auto &known) {
        const CONVERTSTRUCTELEMENTINFO &record = *records++;
        return record.type == known.type && (record.type == 0 || record.tag == known.tag);
    });
}

std::shared_ptr<const FieldTable> FieldTable::of(unsigned int datatype)
{
    const CONVERTSTRUCTELEMENTINFO *records =
        datatype == UNCONVERTED ? nullptr : TQGetSystemStorageClassConv(PACKETDATATYPES(datatype));
    if (!records) {
        return nullptr;
    }
    thread_local std::unordered_map<const void *, std::shared_ptr<const FieldTable>> tables;
    if (tables.size() > MAX_TABLES) {
        tables.clear();
    }
    std::shared_ptr<const FieldTable> &table = tables[records];
    if (!table || !table->isMadeFrom(records)) {
        table.reset(new FieldTable(records));
    }
    return table;
}

const FieldTable::Field *FieldTable::find(unsigned int tag) const
{
    const auto field = std::lower_bound(m_fields.begin(), m_fields.end(), tag, isBefore);
    return field != m_fields.end() && field->tag == tag ? &*field : nullptr;
}

QString fieldName(int tag) { return QLatin1Char('_') + numberText(tag, 16); }

std::shared_ptr<const FieldTable> fieldsOfType(QStringView type)
{
    unsigned int datatype = 0;
    readNumber(type, 16, datatype);
    return FieldTable::of(datatype);
}

FieldContent readField(Form form, QStringView value)
{
    return form == NoForm ? FieldContent() : CONVERSIONS[form].read(value);
}

bool operator==(const FieldContent &a, const FieldContent &b)
{
    if (a.value != b.value || a.key != b.key || a.hkey != b.hkey || a.size != b.size ||
        a.count != b.count || a.text != b.text) {
        return false;
    }
    QStringView left = a.values;
    QStringView right = b.values;
    for (;;) {
        const QStringView part = takePart(left, a.separator);
        if (part != takePart(right, b.separator)) {
            return false;
        }
        if (part.isEmpty()) {
            return true;
        }
    }
}

QDomElement buildField(
    QDomDocument &document, QDomElement &parent, const QString &name, const FieldContent &content)
{
    QDomElement e = document.createElement(name);
    setText(e, VALUE, content.value);
    setText(e, KEY, content.key);
    setText(e, HKEY, content.hkey);
    setText(e, SIZE, content.size);
    if (content.count) {
        e.setAttribute(SIZE, numberText(*content.count, 16));
    }
    forEachPart(content.values, content.separator,
        [&](QStringView part) { appendValue(document, e, part); });
    if (content.text) {
        e.appendChild(document.createTextNode(content.text->toString()));
    }
    parent.appendChild(e);
    return e;
}

void writeField(LineBuffer &out, Form form, QStringView tag, const QDomElement &e)
{
    if (form != NoForm) {
        CONVERSIONS[form].write(out, tag, e);
    }
}

QDomElement makeElement(
    QDomDocument &document, const QString &name, const QString &attribute, QStringView value)
{
    QDomElement e = document.createElement(name);
    setText(e, attribute, value);
    return e;
}

}  // namespace TQXmlInternal

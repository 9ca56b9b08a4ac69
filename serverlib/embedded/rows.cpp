// Reads rows of the store into list records: each column becomes a line of packet text, in the form
// that the field's type code requires.

#include "rows_p.h"

#include "elementcodes_p.h"
#include "itemtext_p.h"

#include <QStringView>

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <iterator>

namespace TQServerInternal {

namespace {

// Columns before the fields: id, name, then publication name, publication id and page, which
// StorageClass::Source::head selects.
enum HeadColumn { Id, Name, PublicationName, PublicationId, Page, FirstField };

// Most texts are ASCII, which needs no buffer on its way.
void appendUtf8(std::string &line, QStringView text)
{
    const auto isAscii = [](QChar c) { return c.unicode() < 0x80; };
    if (std::all_of(text.begin(), text.end(), isAscii)) {
        const size_t size = line.size();
        line.resize(size + size_t(text.size()));
        std::transform(text.begin(), text.end(), line.begin() + std::ptrdiff_t(size),
            [](QChar c) { return char(c.unicode()); });
    } else {
        const QByteArray utf8 = text.toUtf8();
        line.append(utf8.constData(), size_t(utf8.size()));
    }
}

template<typename Number>
void appendNumber(std::string &line, Number number)
{
    char digits[32];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    line.append(digits, end);
}

// Each of these appends a column's value in one form of packet text; nothing if it has none.

// One line: line feeds become blanks; outer white space is trimmed, as readers would do.
void appendText(std::string &line, const QVariant &value)
{
    const QString text = value.toString();
    const auto start = std::ptrdiff_t(line.size());
    appendUtf8(line, QStringView(text).trimmed());
    std::replace(line.begin() + start, line.end(), '\n', ' ');
}

void appendInteger(std::string &line, const QVariant &value)
{
    bool isNumber = false;
    const qlonglong number = value.toLongLong(&isNumber);
    if (isNumber) {
        appendNumber(line, number);
    }
}

void appendReal(std::string &line, const QVariant &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (isNumber) {
        appendNumber(line, number);
    }
}

// The column holds the id; the key's type comes from the field definition.
void appendKey(std::string &line, const QVariant &value, const TQSTORAGEFIELD &field)
{
    line.append(hexText(value.toUInt())).append(1, ' ').append(hexText(field.refers));
}

// "<hex count> <entries>". Entries are stored with one character between them and written with
// another; empty ones are left out.
void appendArray(std::string &line, const QVariant &value, char stored, char written)
{
    const QString text = value.toString();
    const size_t start = line.size();
    unsigned count = 0;
    for (qsizetype from = 0; from <= text.size();) {
        const qsizetype found = QStringView(text).indexOf(QLatin1Char(stored), from);
        const qsizetype end = found < 0 ? text.size() : found;
        const QStringView entry = QStringView(text).mid(from, end - from).trimmed();
        if (!entry.isEmpty()) {
            line.append(count > 0 ? 1 : 0, written);
            appendUtf8(line, entry);
            ++count;
        }
        from = end + 1;
    }
    if (count > 0) {
        line.insert(start, hexText(count) + ' ');
    }
}

std::string binaryText(const QByteArray &bytes)
{
    return hexText(static_cast<unsigned>(bytes.size())) + ' ' + bytes.toBase64().toStdString();
}

void appendValue(std::string &line, const QVariant &value, const TQSTORAGEFIELD &field)
{
    switch (formOf(field.type)) {
    case Form::Text:
        return appendText(line, value);
    case Form::Integer:
        return appendInteger(line, value);
    case Form::Real:
        return appendReal(line, value);
    case Form::Key:
        return appendKey(line, value, field);
    case Form::IntegerArray:
    case Form::RealArray:
        return appendArray(line, value, ' ', ' ');
    case Form::StringArray:
        return appendArray(line, value, '\n', '\r');
    case Form::Binary:  // see readBinaryField()
    case Form::None:
    case Form::Count:
        break;
    }
}

// Binary columns are not part of lists; see readBinaryField().
bool isInSelect(const TQSTORAGEFIELD &field)
{
    return field.column && formOf(field.type) != Form::Binary;
}

// The columns of a record.
std::string columnsOf(const StorageClass &type)
{
    std::string columns = "A.id, A.name, " + std::string(type.source()->head);
    for (const TQSTORAGEFIELD &field : type.fields()) {
        if (isInSelect(field)) {
            columns.append(", ").append(field.column);
        }
    }
    return columns;
}

// Columns and a selection write "A." for the type's own table. In the whole statement, "A." is
// replaced by the alias of that table.
QString selectStatement(
    const StorageClass &type, const std::string &columns, const Selection &selection)
{
    const StorageClass::Source &source = *type.source();
    std::string text = "SELECT " + columns + " FROM " + source.tables;
    if (*selection.where) {
        text.append(" WHERE ").append(selection.where);
    }
    if (*selection.order) {
        text.append(" ORDER BY ").append(selection.order);
    }
    return QString::fromStdString(text).replace(
        QLatin1String("A."), QLatin1String(source.alias) + QLatin1Char('.'));
}

std::string utf8(const QVariant &value)
{
    const QString text = value.toString();
    std::string utf8;
    appendUtf8(utf8, text);
    return utf8;
}

// Makes records of the rows of a query.
class RecordReader
{
public:
    RecordReader(const StorageClass &type, OpenStore::Number store) : m_type(type), m_store(store)
    {
        for (const TQSTORAGEFIELD &field : type.fields()) {
            if (isInSelect(field)) {
                m_columns.push_back({ &field, hexText(field.tag) + ' ' });
            }
        }
    }

    ListRecord *read(const Statement &row)
    {
        ListRecord *record = ListRecord::create(m_type.type(), m_store);
        record->key = { row.value(Id).toUInt(), m_type.type() };
        record->name = utf8(row.value(Name));
        record->publication = utf8(row.value(PublicationName));
        record->publicationId = row.value(PublicationId).toUInt();
        record->page = row.value(Page).toInt();
        m_lines.clear();
        int number = FirstField;
        for (const Column &column : m_columns) {
            appendLine(column, row.value(number));
            ++number;
        }
        record->fields = m_lines;
        record->fillDeclaredPart();
        return record;
    }

private:
    struct Column
    {
        const TQSTORAGEFIELD *field;
        std::string lineStart;  // the tag and a blank
    };

    // A value that does not have the field's form is left out.
    void appendLine(const Column &column, const QVariant &value)
    {
        if (value.isNull()) {
            return;
        }
        const size_t line = m_lines.size();
        m_lines += column.lineStart;
        appendValue(m_lines, value, *column.field);
        const auto text = std::string_view(m_lines).substr(line + column.lineStart.size());
        if (!text.empty() && isValue(*column.field, text)) {
            m_lines += '\n';
        } else {
            m_lines.resize(line);
        }
    }

    const StorageClass &m_type;
    const OpenStore::Number m_store;
    std::vector<Column> m_columns;
    std::string m_lines;  // of one record
};

}  // namespace

bool readRecords(OpenStore &store, const StorageClass &type, const Selection &selection,
    const QVariantList &values, TQLISTRECORD **list)
{
    *list = nullptr;
    Database &database = store.database();
    Statement *query = database.run(selectStatement(type, columnsOf(type), selection), values);
    if (!query) {
        return false;
    }
    RecordReader reader(type, store.number());
    TQLISTRECORD *last = nullptr;
    while (query->next()) {
        TQLISTRECORD *record = reader.read(*query)->asListRecord();
        if (last) {
            last->next = record;
        } else {
            *list = record;
        }
        last = record;
    }
    if (!database.finish(*query)) {
        TQPacketFreeList(list, type.type());
        return false;
    }
    return true;
}

bool readKeys(OpenStore &store, const StorageClass &type, std::vector<TQNAMEDKEY> &keys)
{
    Database &database = store.database();
    Statement *query = database.run(selectStatement(type, "A.id, A.name", { "", "A.name, A.id" }));
    if (!query) {
        return false;
    }
    while (query->next()) {
        keys.push_back({ { query->value(Id).toUInt(), type.type() },
            query->value(Name).toString().toStdString() });
    }
    if (!database.finish(*query)) {
        keys.clear();
        return false;
    }
    return true;
}

std::optional<BinaryField> readBinaryField(
    OpenStore &store, const StorageClass &type, const char *keyColumn, const QVariant &keyValue)
{
    for (const TQSTORAGEFIELD &field : type.fields()) {
        if (formOf(field.type) != Form::Binary || !field.column) {
            continue;
        }
        const StorageClass::Source &source = *type.source();
        const QString statement =
            QStringLiteral("SELECT %1 FROM %2 WHERE %3.%4 = ?")
                .arg(QLatin1String(field.column), QLatin1String(source.tables),
                    QLatin1String(source.alias), QLatin1String(keyColumn));
        const std::optional<QVariant> bytes = store.database().ask(statement, { keyValue });
        if (!bytes) {
            // The caller cannot tell this from a row without bytes, so the failure is counted here.
            // readRecords() returns false instead, and its caller counts.
            store.fail();
            return {};
        }
        if (!bytes->isNull()) {  // the first binary field that is not null
            return BinaryField { field.tag, binaryText(bytes->toByteArray()) };
        }
    }
    return {};
}

}  // namespace TQServerInternal

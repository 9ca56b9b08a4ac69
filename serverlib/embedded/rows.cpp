// Reads rows of the store into list records: each column becomes a line of packet text, in the form
// that the field's type code requires.

#include "rows_p.h"

#include "elementcodes_p.h"
#include "itemtext_p.h"

#include <charconv>
#include <iterator>

namespace TQServerInternal {

namespace {

// Columns before the fields: id, name, then publication name, publication id and page, which
// StorageClass::Source::head selects.
enum HeadColumn { Id, Name, PublicationName, PublicationId, Page, FirstField };

// "<hex count> <entries>", or empty if there are none.
std::string arrayText(const QString &text, char stored, char written)
{
    std::string entries;
    unsigned count = 0;
    for (const QString &part : text.split(QLatin1Char(stored))) {
        const std::string entry = part.trimmed().toStdString();
        if (entry.empty()) {
            continue;
        }
        if (count > 0) {
            entries += written;
        }
        entries += entry;
        ++count;
    }
    return count > 0 ? hexText(count) + ' ' + entries : std::string();
}

std::string binaryText(const QByteArray &bytes)
{
    return hexText(static_cast<unsigned>(bytes.size())) + ' ' + bytes.toBase64().toStdString();
}

// One line: line feeds become blanks; outer white space is trimmed, as readers would do.
std::string textOf(const QVariant &value)
{
    QString line = value.toString().trimmed();
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return line.toStdString();
}

std::string integerOf(const QVariant &value)
{
    bool isNumber = false;
    const qlonglong number = value.toLongLong(&isNumber);
    return isNumber ? std::to_string(number) : std::string();
}

std::string realOf(const QVariant &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    if (!isNumber) {
        return {};
    }
    char digits[32];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    return std::string(digits, end);
}

// The column holds the id; the key's type comes from the field definition.
std::string keyOf(const TQSTORAGEFIELD &field, const QVariant &value)
{
    return hexText(value.toUInt()) + ' ' + hexText(field.refers);
}

// The packet text of a stored value; empty if it has none.
std::string valueText(const TQSTORAGEFIELD &field, const QVariant &value)
{
    if (value.isNull()) {
        return {};
    }
    switch (familyOf(field.type)) {
    case Family::Text:
        return textOf(value);
    case Family::Integer:
        return integerOf(value);
    case Family::Real:
        return realOf(value);
    case Family::Key:
        return keyOf(field, value);
    case Family::IntegerArray:
    case Family::RealArray:
        return arrayText(value.toString(), ' ', ' ');
    case Family::StringArray:
        return arrayText(value.toString(), '\n', '\r');
    case Family::Binary:
        return binaryText(value.toByteArray());
    case Family::None:
    case Family::Count:
        break;
    }
    return {};
}

// Binary columns are not part of lists; see readBinaryField().
bool isInSelect(const TQSTORAGEFIELD &field)
{
    return field.column && familyOf(field.type) != Family::Binary;
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

ListRecord *readRecord(const QSqlQuery &row, const StorageClass &type, OpenStore::Number store)
{
    ListRecord *record = ListRecord::create(type.type(), store);
    record->key = { row.value(Id).toUInt(), type.type() };
    record->name = row.value(Name).toString().toStdString();
    record->publication = row.value(PublicationName).toString().toStdString();
    record->publicationId = row.value(PublicationId).toUInt();
    record->page = row.value(Page).toInt();
    int column = FirstField;
    for (const TQSTORAGEFIELD &field : type.fields()) {
        if (!isInSelect(field)) {
            continue;
        }
        const std::string text = valueText(field, row.value(column));
        ++column;
        // A value that does not have the field's form is left out.
        if (!text.empty() && isValue(field, text)) {
            appendField(record->fields, field.tag, text);
        }
    }
    record->fillDeclaredPart();
    return record;
}

}  // namespace

bool readRecords(OpenStore &store, const StorageClass &type, const Selection &selection,
    const QVariantList &values, TQLISTRECORD **list)
{
    *list = nullptr;
    Database &database = store.database();
    QSqlQuery *query = database.run(selectStatement(type, columnsOf(type), selection), values);
    if (!query) {
        return false;
    }
    TQLISTRECORD *last = nullptr;
    while (database.next(*query)) {
        TQLISTRECORD *record = readRecord(*query, type, store.number())->asListRecord();
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
    QSqlQuery *query = database.run(selectStatement(type, "A.id, A.name", { "", "A.name, A.id" }));
    if (!query) {
        return false;
    }
    while (database.next(*query)) {
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
        if (familyOf(field.type) != Family::Binary || !field.column) {
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

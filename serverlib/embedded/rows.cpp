// Reads rows of the store into list records: each column becomes a line of packet text, in the form
// that the field's type code has.

#include "rows_p.h"

#include "elementcodes_p.h"
#include "itemtext_p.h"

#include <charconv>
#include <iterator>

namespace TQServerInternal {

namespace {

// The columns before those of the fields.
enum HeadColumn { Id, Name, PublicationName, PublicationId, Page, FirstField };

// Count and entries; empty without entries.
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

// Without line feeds, and without the blanks at its ends that readers drop.
std::string textOf(const TQSTORAGEFIELD &, const QVariant &value)
{
    QString line = value.toString().trimmed();
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return line.toStdString();
}

std::string integerOf(const TQSTORAGEFIELD &, const QVariant &value)
{
    bool isNumber = false;
    const qlonglong number = value.toLongLong(&isNumber);
    return isNumber ? std::to_string(number) : std::string();
}

std::string realOf(const TQSTORAGEFIELD &, const QVariant &value)
{
    bool isNumber = false;
    const double number = value.toDouble(&isNumber);
    char digits[32];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), number).ptr;
    return isNumber ? std::string(digits, end) : std::string();
}

// A column of keys holds ids; the type that they are of stands in the field.
std::string keyOf(const TQSTORAGEFIELD &field, const QVariant &value)
{
    return hexText(value.toUInt()) + ' ' + hexText(field.refers);
}

std::string numbersOf(const TQSTORAGEFIELD &, const QVariant &value)
{
    return arrayText(value.toString(), ' ', ' ');
}

std::string textsOf(const TQSTORAGEFIELD &, const QVariant &value)
{
    return arrayText(value.toString(), '\n', '\r');
}

std::string bytesOf(const TQSTORAGEFIELD &, const QVariant &value)
{
    return binaryText(value.toByteArray());
}

// The packet text of a stored value, one function for each family. It is empty for what has none.
using Writer = std::string (*)(const TQSTORAGEFIELD &field, const QVariant &value);
constexpr Writer WRITERS[] = { nullptr, textOf, integerOf, realOf, keyOf, numbersOf, numbersOf,
    textsOf, bytesOf };
static_assert(std::size(WRITERS) == size_t(Family::Count), "one writer per family");

std::string valueText(const TQSTORAGEFIELD &field, const QVariant &value)
{
    const Writer write = WRITERS[size_t(familyOf(field.type))];
    return write && !value.isNull() ? write(field, value) : std::string();
}

// Bytes are read for one item at a time; see readBinaryField().
bool isListed(const TQSTORAGEFIELD &field)
{
    return field.column && familyOf(field.type) != Family::Binary;
}

// Each "A." becomes the alias of the type's own table.
QString selectStatement(const StorageClass &type, const Selection &selection)
{
    const StorageClass::Source &source = *type.source();
    std::string text = "SELECT A.id, A.name, " + std::string(source.head);
    for (const TQSTORAGEFIELD &field : type.fields()) {
        if (isListed(field)) {
            text.append(", ").append(field.column);
        }
    }
    text.append(" FROM ").append(source.tables);
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
        if (!isListed(field)) {
            continue;
        }
        const std::string text = valueText(field, row.value(column));
        ++column;
        // A value that does not have the field's form is left out.
        if (!text.empty() && isValue(field, text)) {
            appendField(record->fields, field.tag, text);
        }
    }
    record->show();
    return record;
}

}  // namespace

bool readRecords(OpenStore &store, const StorageClass &type, const Selection &selection,
    const QVariantList &values, TQLISTRECORD **list)
{
    *list = nullptr;
    Database &database = store.database();
    QSqlQuery *query = database.run(selectStatement(type, selection), values);
    if (!query) {
        return false;
    }
    TQLISTRECORD *last = nullptr;
    while (database.next(*query)) {
        TQLISTRECORD *record = readRecord(*query, type, store.number())->shown();
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

std::optional<BinaryField> readBinaryField(
    OpenStore &store, const StorageClass &type, const char *column, const QVariant &value)
{
    for (const TQSTORAGEFIELD &field : type.fields()) {
        if (familyOf(field.type) != Family::Binary || !field.column) {
            continue;
        }
        const StorageClass::Source &source = *type.source();
        const QString statement =
            QStringLiteral("SELECT %1 FROM %2 WHERE %3.%4 = ?")
                .arg(QLatin1String(field.column), QLatin1String(source.tables),
                    QLatin1String(source.alias), QLatin1String(column));
        const std::optional<QVariant> bytes = store.database().ask(statement, { value });
        if (!bytes) {
            store.fail();
            return {};
        }
        if (!bytes->isNull()) {
            return BinaryField { field.tag, binaryText(bytes->toByteArray()) };
        }
    }
    return {};
}

}  // namespace TQServerInternal

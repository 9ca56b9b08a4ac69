#include "columns.h"

#include "xmlpacketable.h"

#include "tqregistry.h"
#include "tqstorageclass.h"

#include <algorithm>
#include <iterator>

namespace {

constexpr QLatin1Char LINE_FEED('\n');

// States of jobs, by their stored numbers.
constexpr const char *STATES[] = { "waiting", "in progress", "done" };

struct CodeKind
{
    unsigned code;
    Kind kind;
    bool isList;
};
// Element type codes that do not hold a plain text.
constexpr CodeKind CODE_KINDS[] = {
    { TQELEMENT_DATE, Kind::Date, false },
    { TQELEMENT_INTEGER8, Kind::Number, false },
    { TQELEMENT_INTEGER2, Kind::Number, false },
    { TQELEMENT_INTEGER1, Kind::Number, false },
    { TQELEMENT_NUMBER, Kind::Number, false },
    { TQELEMENT_LENGTH, Kind::Number, false },
    { TQELEMENT_INTEGER, Kind::Number, false },
    { TQELEMENT_KEY, Kind::Key, false },
    { TQELEMENT_NUMBERS, Kind::Number, true },
    { TQELEMENT_INTEGERS, Kind::Number, true },
    { TQELEMENT_INTEGERS8, Kind::Number, true },
    { TQELEMENT_INTEGERS2, Kind::Number, true },
    { TQELEMENT_INTEGERS1, Kind::Number, true },
    { TQELEMENT_CHOICE, Kind::State, false },
    { TQELEMENT_BITS, Kind::Number, false },
    { TQELEMENT_TEXTS, Kind::Text, true },
    { TQELEMENT_DATETIME, Kind::Date, false },
    { TQELEMENT_LENGTHS, Kind::Number, true },
    { TQELEMENT_INTEGER4, Kind::Number, false },
    { TQELEMENT_BITSETS, Kind::Number, true },
    { TQELEMENT_INTEGERS4, Kind::Number, true },
};

QString headingOf(PACKETDATATYPES type, unsigned tag)
{
    const char *heading = TQFieldHeading(type, tag);
    return heading ? QString::fromUtf8(heading) : XMLPacketable::getXMLTagNameFromDATATAG(int(tag));
}

// "Page size (mm)" is page_size.
QString nameFor(const QString &heading)
{
    return heading.section(QStringLiteral(" ("), 0, 0)
        .toLower()
        .replace(QLatin1Char(' '), QLatin1Char('_'));
}

Column columnOf(PACKETDATATYPES type, const CONVERTSTRUCTELEMENTINFO &field)
{
    const auto found = std::find_if(std::begin(CODE_KINDS), std::end(CODE_KINDS),
        [&field](const CodeKind &known) { return known.code == field.type; });
    const CodeKind known =
        found == std::end(CODE_KINDS) ? CodeKind { field.type, Kind::Text, false } : *found;
    const QString heading = headingOf(type, field.tag);
    return { nameFor(heading), heading, known.kind, known.isList, field.tag };
}

Column nameColumn(PACKETDATATYPES type, unsigned tag)
{
    Column column = plainColumn(headingOf(type, tag));
    column.tag = tag;
    return column;
}

QString joined(const Column &column, QString cell)
{
    const QLatin1String separator(column.kind == Kind::Text ? ", " : " ");
    return column.isList ? cell.replace(LINE_FEED, separator) : cell;
}

}  // namespace

Columns columnsOf(PACKETDATATYPES type, unsigned nameTag)
{
    Columns columns { plainColumn(QStringLiteral("Key"), Kind::Key), nameColumn(type, nameTag) };
    const CONVERTSTRUCTELEMENTINFO *field = TQGetSystemStorageClassConv(type);
    for (; field && field->type != TQELEMENT_END; ++field) {
        if (field->tag != nameTag && field->type != TQELEMENT_BYTES) {
            columns.push_back(columnOf(type, *field));
        }
    }
    return columns;
}

Column plainColumn(const QString &heading, Kind kind)
{
    return { nameFor(heading), heading, kind, false, 0 };
}

int indexOf(const Columns &columns, const QString &name)
{
    const auto found = std::find_if(columns.begin(), columns.end(),
        [&name](const Column &column) { return column.name == name; });
    return found == columns.end() ? -1 : int(found - columns.begin());
}

QStringList namesOf(const Columns &columns)
{
    QStringList names;
    for (const Column &column : columns) {
        names << column.name;
    }
    return names;
}

QString shownCell(const Column &column, const QString &cell)
{
    if (column.kind == Kind::State) {
        bool isNumber = false;
        const unsigned state = cell.toUInt(&isNumber);
        return isNumber && state < std::size(STATES) ? QString::fromLatin1(STATES[state]) : cell;
    }
    return joined(column, cell);
}

QString plainCell(const Column &column, const QString &cell) { return joined(column, cell); }

QString stateNumber(const QString &state)
{
    bool isNumber = false;
    const unsigned number = state.toUInt(&isNumber);
    const QString words = QString(state).replace(QLatin1Char('-'), QLatin1Char(' '));
    const auto found = std::find_if(std::begin(STATES), std::end(STATES),
        [&words](const char *known) { return words == QLatin1String(known); });
    if (found != std::end(STATES)) {
        return QString::number(found - std::begin(STATES));
    }
    return isNumber ? QString::number(number) : QString();
}

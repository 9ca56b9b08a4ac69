#include "texttable.h"

#include "values.h"

#include <algorithm>
#include <cwchar>

namespace {

constexpr int MAX_WIDTH = 44;
constexpr int GAP = 2;
constexpr QLatin1Char BLANK(' ');
constexpr QChar RULE(0x2500);
constexpr QChar ELLIPSIS(0x2026);

// How many columns a character takes on a terminal; 0 for combining characters.
int widthOf(uint c) { return std::max(::wcwidth(wchar_t(c)), 0); }

int widthOf(const QString &text)
{
    const auto codes = text.toUcs4();
    int width = 0;
    for (const auto c : codes) {
        width += widthOf(uint(c));
    }
    return width;
}

// The text as one line of at most MAX_WIDTH columns.
QString cellText(const QString &text)
{
    const QString line = printable(text);
    if (line.size() <= MAX_WIDTH / 2 || widthOf(line) <= MAX_WIDTH) {
        return line;
    }
    const auto codes = line.toUcs4();
    QString cut;
    int width = 1;  // the ellipsis
    for (const auto c : codes) {
        width += widthOf(uint(c));
        if (width > MAX_WIDTH) {
            break;
        }
        const auto code = char32_t(c);
        cut += QString::fromUcs4(&code, 1);
    }
    return cut + ELLIPSIS;
}

bool isNumber(const QString &text)
{
    bool ok = false;
    text.toDouble(&ok);
    return ok;
}

}  // namespace

struct TextTable::Column
{
    int index;
    int width = 0;
    bool isRight = true;
    bool isEmpty = true;

    void take(const QString &cell)
    {
        width = std::max(width, widthOf(cell));
        isRight = isRight && (cell.isEmpty() || isNumber(cell));
        isEmpty = isEmpty && cell.isEmpty();
    }

    QString pad(const QString &cell) const
    {
        const QString blanks(width - widthOf(cell), BLANK);
        return isRight ? blanks + cell : cell + blanks;
    }
};

void TextTable::addRow(const QStringList &cells)
{
    QStringList row;
    std::transform(cells.begin(), cells.end(), std::back_inserter(row), cellText);
    m_rows.push_back(row);
}

std::vector<TextTable::Column> TextTable::usedColumns() const
{
    std::vector<Column> columns;
    for (int i = 0; i < m_headings.size(); ++i) {
        Column column { i };
        for (const QStringList &row : m_rows) {
            column.take(row.at(i));
        }
        column.width = std::max(column.width, widthOf(m_headings.at(i)));
        if (!column.isEmpty) {
            columns.push_back(column);
        }
    }
    return columns;
}

QByteArray TextTable::text() const
{
    const std::vector<Column> columns = usedColumns();
    const auto line = [&columns](const auto &cellOf) {
        QString text;
        for (const Column &column : columns) {
            text += cellOf(column) + QString(GAP, BLANK);
        }
        while (text.endsWith(BLANK)) {
            text.chop(1);
        }
        return text.toUtf8() + '\n';
    };
    const auto row = [](const QStringList &cells) {
        return [&cells](const Column &column) { return column.pad(cells.at(column.index)); };
    };
    QByteArray text = line(row(m_headings));
    text += line([](const Column &column) { return QString(column.width, RULE); });
    for (const QStringList &cells : m_rows) {
        text += line(row(cells));
    }
    return text;
}

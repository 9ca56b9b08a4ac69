// A table for people: headings, a rule, and rows of aligned columns.
//
// Columns get their widths from the first rows, so that a table of any length is printed as it
// comes. A cell of a later row that is wider moves the rest of its line. Only on a terminal are
// cells cut, in their middle.

#include "rowwriter.h"

#include "streams.h"
#include "values.h"

#include <algorithm>
#include <cwchar>

namespace {

constexpr size_t ROWS_FOR_WIDTHS = 1000;
constexpr int MIN_WIDTH = 8;  // of texts that are cut, as long as something else can be cut
constexpr int LEAST_WIDTH = 4;  // of whatever is cut
constexpr int GAP = 2;
constexpr QLatin1Char BLANK(' ');
const QString UNIT_START = QStringLiteral(" (");  // in a heading
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

// The longest start of the characters that fits that width.
template<typename Iterator>
QString fitting(Iterator first, Iterator last, int width)
{
    QString text;
    for (; first != last; ++first) {
        width -= widthOf(uint(*first));
        if (width < 0) {
            break;
        }
        const auto code = char32_t(*first);
        text += QString::fromUcs4(&code, 1);
    }
    return text;
}

// The text without its middle.
QString cutTo(int width, const QString &text)
{
    if (widthOf(text) <= width) {
        return text;
    }
    const auto codes = text.toUcs4();
    const int after = (width - 1) / 2;
    auto tail = codes.end();
    for (int used = 0; tail != codes.begin() && used + widthOf(uint(tail[-1])) <= after;) {
        used += widthOf(uint(*--tail));
    }
    return fitting(codes.begin(), tail, width - 1 - after) + ELLIPSIS +
        fitting(tail, codes.end(), after);
}

class TableRows : public RowWriter
{
public:
    TableRows(const Layout &layout, Output &output)
        : m_layout(layout), m_output(output), m_terminal(terminalWidth())
    {
    }

    void write(const Row &row) override
    {
        QStringList cells;
        for (size_t i = 0; i < m_layout.columns.size(); ++i) {
            cells << printable(shownCell(m_layout.columns[i], row.cells.at(int(i))));
        }
        if (!m_places.empty()) {
            writeLine(cells);
            return;
        }
        m_held.push_back(cells);
        if (m_held.size() == ROWS_FOR_WIDTHS) {
            writeHeld(false);
        }
    }

    void finish() override
    {
        if (m_places.empty() && !m_held.empty()) {
            writeHeld(!m_layout.areChosen);
        }
    }

private:
    // A column that is shown.
    struct Place
    {
        int index;
        int width;
        int cellWidth;  // without the heading
        bool isRight;
        bool isCut;  // on a terminal, when there is no room
    };

    void writeHeld(bool leavesOutEmpty)
    {
        for (int i = 0; i < int(m_layout.columns.size()); ++i) {
            const auto isEmpty = [i](const QStringList &row) { return row.at(i).isEmpty(); };
            if (!leavesOutEmpty || !std::all_of(m_held.begin(), m_held.end(), isEmpty)) {
                m_places.push_back(placeOf(i));
            }
        }
        fitTerminal();
        if (m_layout.hasHeaders) {
            writeHeadings();
        }
        for (const QStringList &row : m_held) {
            writeLine(row);
        }
        std::vector<QStringList>().swap(m_held);
    }

    Place placeOf(int index) const
    {
        const Column &column = m_layout.columns[size_t(index)];
        const bool isNumber = column.kind == Kind::Number && !column.isList;
        const bool isText = column.kind == Kind::Text;
        const int heading = m_layout.hasHeaders ? widthOf(column.heading) : 0;
        int width = 0;
        for (const QStringList &row : m_held) {
            width = std::max(width, widthOf(row.at(index)));
        }
        return { index, std::max(heading, width), width, isNumber, isText };
    }

    // Narrows columns until a line fits: long texts, then headings that are wider than the cells
    // below, which lose their unit first, then texts further. What cannot fit stays readable.
    void fitTerminal()
    {
        if (m_terminal == 0) {
            return;
        }
        const auto shortText = [](const Place &place) {
            return std::min(place.width, place.isCut ? MIN_WIDTH : place.width);
        };
        const auto shortHeading = [](const Place &place) {
            const int cells = place.isCut ? std::min(place.cellWidth, MIN_WIDTH) : place.cellWidth;
            return std::min(place.width, std::max(cells, LEAST_WIDTH));
        };
        const auto shortest = [shortHeading](const Place &place) {
            return std::min(shortHeading(place), place.isCut ? LEAST_WIDTH : place.width);
        };
        narrow(shortText);
        if (lineWidth(shortest) <= m_terminal) {
            narrow(shortHeading);
            narrow(shortest);
        }
    }

    template<typename Width>
    int lineWidth(const Width &widthOfPlace) const
    {
        int total = -GAP;
        for (const Place &place : m_places) {
            total += widthOfPlace(place) + GAP;
        }
        return total;
    }

    // Narrows the widest columns, none below its least width.
    template<typename LeastWidth>
    void narrow(const LeastWidth &leastWidth)
    {
        int total = lineWidth([](const Place &place) { return place.width; });
        const auto room = [&leastWidth](const Place &place) {
            return place.width > leastWidth(place) ? place.width : 0;
        };
        for (; total > m_terminal; --total) {
            const auto widest = std::max_element(m_places.begin(), m_places.end(),
                [&room](const Place &a, const Place &b) { return room(a) < room(b); });
            if (room(*widest) == 0) {
                return;
            }
            --widest->width;
        }
    }

    void writeHeadings()
    {
        QStringList headings;
        QStringList rules;
        for (const Column &column : m_layout.columns) {
            headings << column.heading;
            rules << QString();
        }
        for (const Place &place : m_places) {
            QString &heading = headings[place.index];
            if (widthOf(heading) > place.width) {
                heading = cutTo(place.width, heading.section(UNIT_START, 0, 0));
            }
            rules[place.index] = QString(place.width, RULE);
        }
        writeLine(headings);
        writeLine(rules);
    }

    void writeLine(const QStringList &cells)
    {
        QString line;
        for (const Place &place : m_places) {
            const QString &whole = cells.at(place.index);
            const bool isCut = m_terminal > 0 && place.isCut;
            const QString cell = isCut ? cutTo(place.width, whole) : whole;
            const QString blanks(std::max(place.width - widthOf(cell), 0), BLANK);
            line += place.isRight ? blanks + cell : cell + blanks;
            line += QString(GAP, BLANK);
        }
        while (line.endsWith(BLANK)) {
            line.chop(1);
        }
        m_output.write(line.toUtf8() + '\n');
    }

    const Layout m_layout;
    Output &m_output;
    const int m_terminal;  // columns of it; 0 if there is none
    std::vector<Place> m_places;  // empty until the widths are known
    std::vector<QStringList> m_held;  // rows until then
};

}  // namespace

std::unique_ptr<RowWriter> createTableWriter(const Layout &layout, Output &output)
{
    return std::make_unique<TableRows>(layout, output);
}

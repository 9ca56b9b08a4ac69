// Sorts rows for --sort. Cells are texts, but each column has its own order: numbers and keys by
// value, texts and dates in natural order, empty cells last. So a value to compare is made of each
// cell once, when its row is added. With a limit, rows that cannot be among the first ones are
// dropped from time to time, so that memory depends on the limit and not on the number of rows.

#include "sortedrows.h"

#include "values.h"

#include <algorithm>

namespace {

constexpr QLatin1Char SEPARATOR('\x1f');  // which XML cannot hold, and so no cell
// Keys are sorted by hkey, then by key, which has 32 bits. Both are one double, like every number.
// It is exact, as the hkey of a key in a store is its data type: far below 2 to the 21st.
constexpr double HKEY_UNIT = 4294967296.0;
constexpr size_t MIN_ROWS = 1000;  // until there are twice as many, none are dropped

int compare(double a, double b) { return a < b ? -1 : int(a > b); }

}  // namespace

QCollator naturalCollator()
{
    QCollator collator(QLocale(QLocale::English, QLocale::UnitedKingdom));
    collator.setNumericMode(true);
    collator.setCaseSensitivity(Qt::CaseInsensitive);
    return collator;
}

SortedRows::SortedRows(const std::vector<Order> &orders, size_t limit)
    : m_orders(orders), m_limit(limit), m_collator(naturalCollator())
{
}

SortedRows::Value SortedRows::valueOf(const Order &order, const QString &cell) const
{
    if (cell.isEmpty()) {
        return {};
    }
    if (order.kind == Kind::Key) {
        const auto key = readKey(cell);
        return { key ? key->hkey * HKEY_UNIT + key->key : 0.0, {} };
    }
    bool isNumber = false;
    const double number = cell.toDouble(&isNumber);
    const bool isText = order.kind == Kind::Text || order.kind == Kind::Date || !isNumber;
    return isText ? Value { {}, m_collator.sortKey(cell) } : Value { number, {} };
}

void SortedRows::add(const Row &row)
{
    Held held;
    held.values.reserve(m_orders.size());
    for (const Order &order : m_orders) {
        held.values.push_back(valueOf(order, row.cells.at(order.column)));
    }
    held.cells = row.cells.join(SEPARATOR).toUtf8();
    held.cells.squeeze();
    held.xml = QByteArray(row.xml.constData(), row.xml.size());  // its own copy
    m_rows.push_back(std::move(held));
    if (m_rows.size() / 2 > std::max(m_limit, MIN_ROWS)) {
        sort();
    }
}

bool SortedRows::isBefore(const Held &a, const Held &b) const
{
    for (size_t i = 0; i < m_orders.size(); ++i) {
        const Value &left = a.values[i];
        const Value &right = b.values[i];
        const bool isLeftAbsent = !left.number && !left.text;
        const bool isRightAbsent = !right.number && !right.text;
        if (isLeftAbsent || isRightAbsent) {
            if (isLeftAbsent != isRightAbsent) {
                return isRightAbsent;
            }
            continue;
        }
        // Numbers come before texts.
        int order = int(right.number.has_value()) - int(left.number.has_value());
        if (left.number && right.number) {
            order = compare(*left.number, *right.number);
        } else if (left.text && right.text) {
            order = left.text->compare(*right.text);
        }
        if (order != 0) {
            return m_orders[i].isDescending ? order > 0 : order < 0;
        }
    }
    return false;
}

void SortedRows::sort()
{
    std::stable_sort(m_rows.begin(), m_rows.end(),
        [this](const Held &a, const Held &b) { return isBefore(a, b); });
    if (m_rows.size() > m_limit) {
        m_rows.erase(m_rows.begin() + std::ptrdiff_t(m_limit), m_rows.end());
    }
}

void SortedRows::takeEach(const std::function<bool(const Row &row)> &take)
{
    sort();
    bool wantsMore = true;
    for (Held &held : m_rows) {
        wantsMore = wantsMore && take({ QString::fromUtf8(held.cells).split(SEPARATOR), held.xml });
        held = Held();
    }
    m_rows.clear();
}

#ifndef SORTEDROWS_H
#define SORTEDROWS_H

#include "rowwriter.h"

#include <QCollator>

#include <functional>
#include <optional>
#include <vector>

/// A column to sort by.
struct Order
{
    int column;
    Kind kind;
    bool isDescending;
};

/// Compares texts in natural order, "p. 12" before "p. 116", the same in every locale.
QCollator naturalCollator();

/// Rows that are held until all are there, then sorted. Texts are in natural order. Rows that are
/// equal stay in their order. Only the first rows are held, up to twice the limit.
class SortedRows
{
public:
    SortedRows(const std::vector<Order> &orders, size_t limit);

    void add(const Row &row);
    /// Sorts the rows, hands them over and forgets them. The first ones until take returns false.
    void takeEach(const std::function<bool(const Row &row)> &take);

private:
    // A value to sort by. An absent one has neither a number nor a text.
    struct Value
    {
        std::optional<double> number;
        std::optional<QCollatorSortKey> text;
    };
    // Compact, since there may be millions.
    struct Held
    {
        std::vector<Value> values;
        QByteArray cells;
        QByteArray xml;
    };

    Value valueOf(const Order &order, const QString &cell) const;
    bool isBefore(const Held &a, const Held &b) const;
    void sort();

    const std::vector<Order> m_orders;
    const size_t m_limit;
    const QCollator m_collator;
    std::vector<Held> m_rows;
};

#endif

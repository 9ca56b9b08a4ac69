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

/// Rows that are held until all are there, then sorted. Texts are in natural order, "p. 12" before
/// "p. 116", the same in every locale. Rows that are equal stay in their order.
class SortedRows
{
public:
    explicit SortedRows(const std::vector<Order> &orders);

    void add(const Row &row);
    /// Sorts the rows and forgets them one after another; stops when take returns false.
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

    const std::vector<Order> m_orders;
    QCollator m_collator;
    std::vector<Held> m_rows;
};

#endif

#ifndef TEXTTABLE_H
#define TEXTTABLE_H

#include <QStringList>

#include <vector>

/// A table for people: headings, a rule, and rows of aligned columns.
///
/// Empty columns are left out. Columns of numbers are aligned to the right. Long texts end in an
/// ellipsis.
class TextTable
{
public:
    explicit TextTable(const QStringList &headings) : m_headings(headings) {}

    /// One cell for each heading.
    void addRow(const QStringList &cells);
    /// The table as UTF-8; lines end with a line feed and have no trailing blanks.
    QByteArray text() const;

private:
    struct Column;

    std::vector<Column> usedColumns() const;

    const QStringList m_headings;
    std::vector<QStringList> m_rows;
};

#endif

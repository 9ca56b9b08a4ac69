#ifndef TEXTTABLE_H
#define TEXTTABLE_H

#include <QStringList>

#include <vector>

/// A table for people: headings, a rule, and rows of aligned columns.
///
/// Columns that have no text in any row are left out; columns that hold nothing but numbers are
/// aligned to the right. Long texts are cut, with an ellipsis.
class TextTable
{
public:
    explicit TextTable(const QStringList &headings) : m_headings(headings) {}

    /// One cell for each heading.
    void addRow(const QStringList &cells);
    /// UTF-8, with a line feed at the end of each line and no blanks before it.
    QByteArray text() const;

private:
    struct Column;

    std::vector<Column> usedColumns() const;

    const QStringList m_headings;
    std::vector<QStringList> m_rows;
};

#endif

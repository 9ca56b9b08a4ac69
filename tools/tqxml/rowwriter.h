#ifndef ROWWRITER_H
#define ROWWRITER_H

#include "columns.h"

#include <QByteArray>

#include <memory>

class Output;

/// A row as it was read.
struct Row
{
    QStringList cells;  ///< one for each column; further ones are not printed
    QByteArray xml;  ///< the item itself, where it is known
};

/// How rows are printed.
struct Layout
{
    QString format;  ///< a word of --format
    Columns columns;
    bool hasHeaders = true;
    bool areChosen = false;  ///< the columns, by the user
};

/// Prints rows in one format.
class RowWriter
{
public:
    RowWriter() = default;
    virtual ~RowWriter() = default;
    RowWriter(const RowWriter &) = delete;
    RowWriter &operator=(const RowWriter &) = delete;

    static std::unique_ptr<RowWriter> create(const Layout &layout, Output &output);

    /// Whether the cells of rows are used, or only their XML.
    virtual bool needsCells() const { return true; }
    virtual void write(const Row &row) = 0;
    /// The end of the document. Without it, as after a failure, what was printed is not whole.
    virtual void finish() = 0;
};

/// Prints rows that are no items to standard output; returns the exit code.
int printRows(const Layout &layout, const std::vector<QStringList> &rows);

/// The writers of the formats. The output is not owned.
/// @{
std::unique_ptr<RowWriter> createTableWriter(const Layout &layout, Output &output);
std::unique_ptr<RowWriter> createXmlWriter(const Layout &layout, Output &output);
std::unique_ptr<RowWriter> createJsonWriter(const Layout &layout, Output &output);
std::unique_ptr<RowWriter> createJsonLinesWriter(const Layout &layout, Output &output);
std::unique_ptr<RowWriter> createCsvWriter(const Layout &layout, Output &output);
std::unique_ptr<RowWriter> createTsvWriter(const Layout &layout, Output &output);
/// @}

#endif

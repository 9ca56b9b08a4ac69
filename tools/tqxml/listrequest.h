#ifndef LISTREQUEST_H
#define LISTREQUEST_H

#include "rowsource.h"
#include "rowwriter.h"
#include "sortedrows.h"

#include <limits>

class CommandLine;
class TQCommServer;

/// Which rows are printed, by one of their cells.
struct Filter
{
    int column;
    QStringList texts;  ///< one of which the cell is; any if there are none
    QStringList parts;  ///< one of which the cell has in it; any if there are none

    bool matches(const QStringList &cells) const;
};

/// A listing as the command line asks for it.
struct ListRequest
{
    RowSource::Query query;
    Layout layout;
    Columns read;  ///< those of the layout, then further ones to filter and to sort by
    std::vector<Filter> filters;
    std::vector<Order> orders;
    bool isSortedAsWhole = false;  ///< else reply by reply, if there are orders
    size_t limit = std::numeric_limits<size_t>::max();

    /// The position of a column in the rows, which is read from now on.
    int use(const Column &column);
};

/// Reads the options of "tqxml list". Returns what is wrong with them, or an empty text.
QString readRequest(const CommandLine &line, ListRequest &request);

/// Looks up in the store what --key, --output and --book name. Returns which of them does not
/// exist, or an empty text, also when a query failed (see TQCommServer::failures()).
QString lookUp(TQCommServer &server, const CommandLine &line, ListRequest &request);

#endif

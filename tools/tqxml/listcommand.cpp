#include "command.h"

#include "commandline.h"
#include "nearest.h"
#include "rowsource.h"
#include "rowwriter.h"
#include "sortedrows.h"
#include "streams.h"
#include "values.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <QCoreApplication>

#include <algorithm>
#include <limits>
#include <memory>
#include <optional>

namespace {

constexpr QLatin1String ALL_COLUMNS("all");
constexpr QLatin1Char COLON(':');
const QString ASCENDING = QStringLiteral("asc");
const QString DESCENDING = QStringLiteral("desc");
constexpr QLatin1String TABLE("table");
constexpr size_t NAME_COLUMN = 1;  // of the columns of a listing

// Fields of jobs.
constexpr unsigned BOOK_TAG = 0x3;
constexpr unsigned STATE_TAG = 0x7;

// Which rows are printed, by one of their cells.
struct Filter
{
    int column;
    QStringList texts;  // one of which the cell is
    QString part;  // which the cell has in it

    bool matches(const QStringList &cells) const
    {
        const QString &cell = cells.at(column);
        return (texts.isEmpty() || texts.contains(cell)) &&
            cell.contains(part, Qt::CaseInsensitive);
    }
};

// A listing as it was asked for.
struct Request
{
    RowSource::Query query;
    Layout layout;
    Columns read;  // those of the layout, then further ones to filter and to sort by
    std::vector<Filter> filters;
    std::vector<Order> orders;
    size_t limit = std::numeric_limits<size_t>::max();

    // The position of a column in the rows, which is read from now on.
    int use(const Column &column)
    {
        if (indexOf(read, column.name) < 0) {
            read.push_back(column);
        }
        return indexOf(read, column.name);
    }
};

// Prints the rows of a request, from first to last or sorted.
class Printer
{
public:
    Printer(const Request &request, Output &output)
        : m_request(request), m_output(output), m_reader(request.read), m_sorted(request.orders),
          m_writer(RowWriter::create(request.layout, output)),
          m_needsCells(m_writer->needsCells() || !request.filters.empty() || isSorted())
    {
    }

    // False when enough is printed.
    bool take(const QByteArray &xml)
    {
        Row row { m_needsCells ? m_reader.cellsOf(xml) : QStringList(),
            m_writer->needsCells() ? QByteArray() : xml };
        const bool isWanted = std::all_of(m_request.filters.begin(), m_request.filters.end(),
            [&row](const Filter &filter) { return filter.matches(row.cells); });
        if (!isWanted || m_request.limit == 0) {
            return m_request.limit > 0;
        }
        if (isSorted()) {
            m_sorted.add(row);
            return true;
        }
        return print(row);
    }

    void finish()
    {
        m_sorted.takeEach([this](const Row &row) { return m_request.limit > 0 && print(row); });
        if (m_printed > 0 || m_request.layout.format != TABLE) {
            m_writer->finish();
        }
        m_output.flush();
    }

    size_t printed() const { return m_printed; }

private:
    bool isSorted() const { return !m_request.orders.empty(); }

    bool print(const Row &row)
    {
        m_writer->write(row);
        return ++m_printed < m_request.limit && m_output.isOpen();
    }

    const Request &m_request;
    Output &m_output;
    ItemReader m_reader;
    SortedRows m_sorted;
    const std::unique_ptr<RowWriter> m_writer;
    const bool m_needsCells;
    size_t m_printed = 0;
};

// A filter by a field that the listing has.
Filter filterBy(Request &request, unsigned tag, const QStringList &texts)
{
    const Columns all = columnsOf(*request.query.listing);
    const auto column = std::find_if(
        all.begin(), all.end(), [tag](const Column &candidate) { return candidate.tag == tag; });
    return { request.use(*column), texts, QString() };
}

// The keys of the items that an option names, by a key or by a name. None, with an error, if there
// are none or the query failed.
QStringList keysOf(TQCommServer &server, PACKETDATATYPES type, const QString &text, QString &error)
{
    const std::optional<TQKEY_ELEMENT> key = readKey(text);
    if (key) {
        return { keyText(*key) };
    }
    std::vector<TQNAMEDKEY> items;
    TQListKeys(server, type, items);
    QStringList keys;
    QStringList names;
    for (const TQNAMEDKEY &item : items) {
        names << QString::fromStdString(item.name);
        if (names.last().compare(text, Qt::CaseInsensitive) == 0) {
            keys << keyText(item.key);
        }
    }
    if (keys.isEmpty()) {
        error = noSuch(typeText(type), text, names);
    }
    return keys;
}

// Looks up what --output and --book name. Returns what is wrong with it, or an empty text.
QString lookUp(TQCommServer &server, const CommandLine &line, Request &request)
{
    QString error;
    if (line.isSet("output")) {
        const QStringList keys = keysOf(server, PACKETDATATYPE_OUTPUT, line.value("output"), error);
        for (const QString &key : keys) {
            request.query.keys.push_back(*readKey(key));
        }
    }
    if (line.isSet("book") && error.isEmpty()) {
        const QStringList books = keysOf(server, PACKETDATATYPE_BOOK, line.value("book"), error);
        request.filters.push_back(filterBy(request, BOOK_TAG, books));
    }
    return error;
}

// Reads and prints everything. A store is checked for damage when the transaction ends. Whoever
// wants no more rows does not wait for that: then the connection is closed before. Returns what is
// wrong with an item, or an empty text.
QString printAll(
    std::unique_ptr<TQCommServer> &server, const Request &request, Printer &printer, Output &output)
{
    const unsigned failures = server->failures();
    ProgressBar bar(QStringLiteral("reading"));
    const bool isSilent = terminalWidth() == 0;
    QString wrong;
    const auto take = [&](const QByteArray &xml) {
        if (const char foreign = foreignCharacter(xml)) {
            const QByteArray code = QByteArray::number(int(foreign), 16).toUpper();
            wrong = QStringLiteral("a value holds the character U+%1, which XML cannot hold")
                        .arg(QString::fromLatin1(code.rightJustified(4, '0')));
        }
        return wrong.isEmpty() && printer.take(xml);
    };
    const auto showProgress = [&](size_t done, size_t total) {
        output.flush();
        if (isSilent) {
            bar.show(done, total);
        }
    };
    const bool isWhole = RowSource(*server, request.query).run(take, showProgress);
    if (!isWhole && server->failures() == failures) {
        server.reset();
    }
    return wrong;
}

int list(const CommandLine &line, Request &request)
{
    auto server = std::make_unique<TQCommServer>(line.store().constData());
    Output output;
    std::optional<Printer> printer;
    QString wrong;
    if (server->failures() == 0) {
        const TQReadTransaction oneMoment(*server);
        wrong = lookUp(*server, line, request);
        if (!wrong.isEmpty() && server->failures() == 0) {
            return fail(wrong);
        }
        printer.emplace(request, output);
        wrong = printAll(server, request, *printer, output);
    }
    if (server && server->failures() != 0) {
        wrong = QString::fromUtf8(server->errorText());
    }
    if (!wrong.isEmpty()) {
        output.flush();  // the rows before the failure, but no end
        return fail(wrong);
    }
    printer->finish();
    if (printer->printed() == 0 && output.isOpen() && request.limit > 0) {
        remark(QStringLiteral("no %1 found").arg(QLatin1String(request.query.listing->name)));
    }
    return output.code();
}

// The functions below read a part of the command line each. They return what is wrong with it, or
// an empty text.

QString noColumn(const QString &name, const Columns &columns)
{
    return noSuch(QStringLiteral("column"), name, namesOf(columns));
}

QString readLayout(const CommandLine &line, Request &request)
{
    const Listing &listing = *request.query.listing;
    const Columns all = columnsOf(listing);
    request.layout = layoutOf(line);
    request.layout.columns = usualColumnsOf(listing);
    if (request.layout.areChosen) {
        const QStringList names = line.value("columns").split(QLatin1Char(','));
        request.layout.columns = names.contains(ALL_COLUMNS) ? all : Columns();
        for (const QString &name : names) {
            const int index = indexOf(all, name);
            if (index < 0 && name != ALL_COLUMNS) {
                return noColumn(name, all);
            }
            if (index >= 0 && indexOf(request.layout.columns, name) < 0) {
                request.layout.columns.push_back(all[size_t(index)]);
            }
        }
    }
    request.read = request.layout.columns;
    return QString();
}

QString readOrders(const CommandLine &line, Request &request)
{
    const Columns all = columnsOf(*request.query.listing);
    const QStringList texts = line.values("sort");
    for (const QString &text : texts) {
        const QString name = text.section(COLON, 0, 0);
        const QString direction = text.section(COLON, 1);
        if (text.contains(COLON) && direction != ASCENDING && direction != DESCENDING) {
            return noSuch(QStringLiteral("direction"), direction, { DESCENDING, ASCENDING });
        }
        const int index = indexOf(all, name);
        if (index < 0) {
            return noColumn(name, all);
        }
        const Column &column = all[size_t(index)];
        request.orders.push_back({ request.use(column), column.kind, direction == DESCENDING });
    }
    return QString();
}

QString readLimit(const CommandLine &line, Request &request)
{
    if (!line.isSet("limit")) {
        return QString();
    }
    bool isNumber = false;
    request.limit = line.value("limit").toUInt(&isNumber);
    return isNumber ? QString()
                    : QStringLiteral("\"%1\" is no number of rows").arg(line.value("limit"));
}

QString readFilters(const CommandLine &line, Request &request)
{
    const Listing &listing = *request.query.listing;
    for (const char *option : { "state", "book", "output" }) {
        if (line.isSet(option) && listing.type != PACKETDATATYPE_JOB) {
            return QStringLiteral("only jobs and publications have a --%1")
                .arg(QLatin1String(option));
        }
    }
    constexpr std::pair<const char *, PACKETDATATYPES> KINDS[] = {
        { "output", PACKETDATATYPE_OUTPUT }, { "book", PACKETDATATYPE_BOOK }
    };
    for (const auto &[option, type] : KINDS) {
        const std::optional<TQKEY_ELEMENT> key = readKey(line.value(option));
        if (key && !wrongKey(*key, type).isEmpty()) {
            return wrongKey(*key, type);
        }
    }
    if (line.isSet("key") && line.isSet("output")) {
        return QStringLiteral("give --key or --output, not both");
    }
    if (line.isSet("name")) {
        const Column name = columnsOf(listing)[NAME_COLUMN];
        request.filters.push_back({ request.use(name), {}, line.value("name") });
    }
    if (line.isSet("state")) {
        request.filters.push_back(
            filterBy(request, STATE_TAG, { stateNumber(line.value("state")) }));
    }
    return QString();
}

QString readKeys(const CommandLine &line, Request &request)
{
    const Listing &listing = *request.query.listing;
    const QStringList texts = line.values("key");
    for (const QString &text : texts) {
        if (listing.owner == PACKETDATATYPE_NONE) {
            return QStringLiteral("%1 are not listed by key").arg(QLatin1String(listing.name));
        }
        const std::optional<TQKEY_ELEMENT> key = readKey(text);
        const QString wrong = key ? wrongKey(*key, listing.owner) : noKey(text);
        if (!wrong.isEmpty()) {
            return wrong;
        }
        request.query.keys.push_back(*key);
    }
    return QString();
}

// What can be listed, in a sentence.
QString kindsOf(const CommandLine &line)
{
    return QString::fromStdString(sentenceOf(line.verb()->arguments.front().words));
}

using ReadPart = QString (*)(const CommandLine &line, Request &request);
constexpr ReadPart PARTS[] = { readLayout, readOrders, readLimit, readFilters, readKeys };

}  // namespace

int runList(const CommandLine &line)
{
    Request request;
    request.query.listing = findListing(line.arguments().value(0));
    request.query.includesPublications = line.isSet("include-publications");
    if (line.arguments().size() != 1) {
        return misuse(line, QStringLiteral("name one thing to list: ") + kindsOf(line));
    }
    for (const ReadPart read : PARTS) {
        const QString wrong = read(line, request);
        if (!wrong.isEmpty()) {
            return misuse(line, wrong);
        }
    }
    return list(line, request);
}

#include "command.h"

#include "commandline.h"
#include "listrequest.h"
#include "streams.h"
#include "xmlwriter.h"

#include "tqcommserver.h"
#include "tqstore.h"

#include <algorithm>
#include <memory>
#include <optional>

namespace {

constexpr QLatin1String TABLE("table");

// Prints the rows of a request: as they come, or sorted, each reply or all of them.
class Printer
{
public:
    Printer(const ListRequest &request, Output &output)
        : m_request(request), m_output(output), m_reader(request.read),
          m_sorted(request.orders, request.limit),
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

    // False when enough is printed.
    bool endReply() { return m_request.isSortedAsWhole || printSorted(); }

    void finish()
    {
        printSorted();
        if (m_printed > 0 || m_request.layout.format != TABLE) {
            m_writer->finish();
        }
        m_output.flush();
    }

    size_t printed() const { return m_printed; }

private:
    bool isSorted() const { return !m_request.orders.empty(); }

    bool printSorted()
    {
        bool wantsMore = true;
        m_sorted.takeEach([&](const Row &row) { return wantsMore = print(row); });
        return wantsMore;
    }

    bool print(const Row &row)
    {
        m_writer->write(row);
        return ++m_printed < m_request.limit && m_output.isOpen();
    }

    const ListRequest &m_request;
    Output &m_output;
    ItemReader m_reader;
    SortedRows m_sorted;
    const std::unique_ptr<RowWriter> m_writer;
    const bool m_needsCells;
    size_t m_printed = 0;
};

// Reads and prints everything. A store is checked for damage when the transaction ends. Whoever
// wants no more rows does not wait for that: then the connection is closed before. Returns what is
// wrong with an item, or an empty text.
QString printAll(std::unique_ptr<TQCommServer> &server, const ListRequest &request,
    Printer &printer, Output &output)
{
    const unsigned failures = server->failures();
    ProgressBar bar(QStringLiteral("reading"));
    const bool isSilent = terminalWidth() == 0;
    QString wrong;
    const auto take = [&](const QByteArray &xml) {
        if (const char foreign = foreignCharacter(xml)) {
            wrong = unwritableIn(QString(QLatin1Char(foreign)));
        }
        return wrong.isEmpty() && printer.take(xml);
    };
    const auto endReply = [&](size_t done, size_t total) {
        const bool wantsMore = printer.endReply();
        output.flush();
        if (isSilent) {
            bar.show(done, total);
        }
        return wantsMore;
    };
    const bool isWhole = RowSource(*server, request.query).run(take, endReply);
    if (!isWhole && server->failures() == failures) {
        server.reset();
    }
    return wrong;
}

int list(const CommandLine &line, ListRequest &request)
{
    auto server = std::make_unique<TQCommServer>(line.store().constData());
    Output output;
    std::optional<Printer> printer;
    QString wrong;
    if (server->failures() == 0) {
        const TQReadTransaction oneMoment(*server);
        wrong = lookUp(*server, line, request);
        if (wrong.isEmpty() && server->failures() == 0) {
            printer.emplace(request, output);
            wrong = printAll(server, request, *printer, output);
        }
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

}  // namespace

int runList(const CommandLine &line)
{
    ListRequest request;
    const QString wrong = readRequest(line, request);
    return wrong.isEmpty() ? list(line, request) : misuse(line, wrong);
}

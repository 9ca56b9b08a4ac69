#include "rowwriter.h"

#include "streams.h"

#include <algorithm>
#include <iterator>

namespace {

struct Format
{
    const char *name;
    std::unique_ptr<RowWriter> (*create)(const Layout &layout, Output &output);
};
constexpr Format FORMATS[] = {
    { "table", createTableWriter },
    { "xml", createXmlWriter },
    { "json", createJsonWriter },
    { "jsonl", createJsonLinesWriter },
    { "csv", createCsvWriter },
    { "tsv", createTsvWriter },
};

}  // namespace

std::unique_ptr<RowWriter> RowWriter::create(const Layout &layout, Output &output)
{
    const auto found = std::find_if(std::begin(FORMATS), std::end(FORMATS),
        [&layout](const Format &format) { return layout.format == QLatin1String(format.name); });
    Q_ASSERT(found != std::end(FORMATS));
    return found->create(layout, output);
}

int printRows(const Layout &layout, const std::vector<QStringList> &rows)
{
    Output output;
    const std::unique_ptr<RowWriter> writer = RowWriter::create(layout, output);
    for (const QStringList &row : rows) {
        writer->write({ row, QByteArray() });
    }
    writer->finish();
    output.flush();
    return output.code();
}

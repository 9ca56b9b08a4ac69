#include "rowwriter.h"

#include "streams.h"

namespace {

// RFC 4180.
struct Csv
{
    static constexpr char SEPARATOR = ',';
    static constexpr char LINE_END[] = "\r\n";

    static QByteArray field(const QString &text)
    {
        QByteArray field = text.toUtf8();
        const bool isPlain = !field.contains(SEPARATOR) && !field.contains('"') &&
            !field.contains('\n') && !field.contains('\r');
        return isPlain ? field : '"' + field.replace('"', "\"\"") + '"';
    }
};

// Tabs and line ends of values are escaped, so that a tab always separates, and a line is a row.
struct Tsv
{
    static constexpr char SEPARATOR = '\t';
    static constexpr char LINE_END[] = "\n";

    static QByteArray field(const QString &text)
    {
        return text.toUtf8()
            .replace('\\', "\\\\")
            .replace('\t', "\\t")
            .replace('\n', "\\n")
            .replace('\r', "\\r");
    }
};

template<typename Form>
class LineRows : public RowWriter
{
public:
    LineRows(const Layout &layout, Output &output)
        : m_columns(layout.columns), m_output(output), m_hasHeader(layout.hasHeaders)
    {
    }

    void write(const Row &row) override
    {
        writeHeader();
        QStringList fields;
        for (int i = 0; i < int(m_columns.size()); ++i) {
            fields << plainCell(m_columns[size_t(i)], row.cells.at(i));
        }
        writeLine(fields);
    }

    void finish() override { writeHeader(); }

private:
    void writeHeader()
    {
        if (m_hasHeader) {
            m_hasHeader = false;
            writeLine(namesOf(m_columns));
        }
    }

    void writeLine(const QStringList &fields)
    {
        QByteArray line;
        for (const QString &field : fields) {
            line += Form::field(field) + Form::SEPARATOR;
        }
        line.chop(1);
        m_output.write(line + Form::LINE_END);
    }

    const Columns m_columns;
    Output &m_output;
    bool m_hasHeader;  // which is still to be written
};

}  // namespace

std::unique_ptr<RowWriter> createCsvWriter(const Layout &layout, Output &output)
{
    return std::make_unique<LineRows<Csv>>(layout, output);
}

std::unique_ptr<RowWriter> createTsvWriter(const Layout &layout, Output &output)
{
    return std::make_unique<LineRows<Tsv>>(layout, output);
}

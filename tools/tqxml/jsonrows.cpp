#include "rowwriter.h"

#include "streams.h"

#include <nlohmann/json.hpp>

#include <string>

namespace {

using Json = nlohmann::ordered_json;

// A number as a number, also in a text that says more than a double holds.
Json numberOf(const QString &text)
{
    bool isInteger = false;
    const qlonglong integer = text.toLongLong(&isInteger);
    if (isInteger) {
        return integer;
    }
    bool isNumber = false;
    const double number = text.toDouble(&isNumber);
    return isNumber ? Json(number) : Json(text.toStdString());
}

Json valueOf(const Column &column, const QString &text)
{
    const bool isNumber = column.kind == Kind::Number || column.kind == Kind::State;
    return isNumber ? numberOf(text) : Json(text.toStdString());
}

Json cellOf(const Column &column, const QString &cell)
{
    if (column.isList) {
        Json values = Json::array();
        const QStringList texts = cell.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        for (const QString &text : texts) {
            values.push_back(valueOf(column, text));
        }
        return values;
    }
    return cell.isEmpty() ? Json() : valueOf(column, cell);
}

// One object a line: alone, or as an array.
class JsonRows : public RowWriter
{
public:
    JsonRows(const Layout &layout, Output &output, bool isArray)
        : m_layout(layout), m_output(output), m_isArray(isArray)
    {
        for (const Column &column : layout.columns) {
            m_names.push_back(column.name.toStdString());
        }
    }

    void write(const Row &row) override
    {
        Json object = Json::object();
        for (size_t i = 0; i < m_names.size(); ++i) {
            object[m_names[i]] = cellOf(m_layout.columns[i], row.cells.at(int(i)));
        }
        const QByteArray start = m_isArray ? (m_hasRows ? ",\n" : "[\n") : "";
        m_output.write(start + QByteArray::fromStdString(object.dump()) + (m_isArray ? "" : "\n"));
        m_hasRows = true;
    }

    void finish() override
    {
        if (m_isArray) {
            m_output.write(m_hasRows ? "\n]\n" : "[]\n");
        }
    }

private:
    const Layout m_layout;
    Output &m_output;
    const bool m_isArray;
    std::vector<std::string> m_names;
    bool m_hasRows = false;
};

}  // namespace

std::unique_ptr<RowWriter> createJsonWriter(const Layout &layout, Output &output)
{
    return std::make_unique<JsonRows>(layout, output, true);
}

std::unique_ptr<RowWriter> createJsonLinesWriter(const Layout &layout, Output &output)
{
    return std::make_unique<JsonRows>(layout, output, false);
}

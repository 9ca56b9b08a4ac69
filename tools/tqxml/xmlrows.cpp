#include "rowwriter.h"

#include "items.h"
#include "rowsource.h"
#include "streams.h"

namespace {

constexpr char EMPTY_BODY[] = " <body/>\n";

// One packet of all items, the same bytes as XMLPacket::write() makes of it.
class XmlRows : public RowWriter
{
public:
    XmlRows(const Layout &layout, Output &output)
        : m_layout(layout), m_output(output), m_packet(RowSource::emptyPacket())
    {
    }

    bool needsCells() const override { return false; }

    void write(const Row &row) override
    {
        if (!m_hasItems) {
            m_hasItems = true;
            m_output.write(m_packet.left(m_packet.indexOf(EMPTY_BODY)) + " <body>\n");
        }
        m_output.write(m_layout.areChosen ? itemWith(m_layout.columns, row.xml) : row.xml);
    }

    void finish() override
    {
        const QByteArray end =
            m_packet.mid(m_packet.indexOf(EMPTY_BODY) + int(sizeof EMPTY_BODY) - 1);
        m_output.write(m_hasItems ? " </body>\n" + end : m_packet);
    }

private:
    const Layout m_layout;
    Output &m_output;
    const QByteArray m_packet;  // without items
    bool m_hasItems = false;
};

}  // namespace

std::unique_ptr<RowWriter> createXmlWriter(const Layout &layout, Output &output)
{
    return std::make_unique<XmlRows>(layout, output);
}

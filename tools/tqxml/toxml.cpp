// Converts packet text to XML. The text is cut into its top-level items, which are converted one by
// one:
//
//     SI 15       opens an item of data type 15
//     1 Page one  data tag and value of a field
//     SL 2        opens a list of two items
//     TL 0        closes the list
//     TI 0        closes the item

#include "command.h"
#include "comparison.h"
#include "conversion.h"
#include "packetfaults.h"
#include "spool.h"
#include "streams.h"
#include "xmlwriter.h"

#include "xmlpacket.h"
#include "xmlpacketable.h"

#include <algorithm>
#include <limits>
#include <vector>

namespace {

constexpr int PACKETABLE_LEVEL = 2;  // depth of packetables in a packet
constexpr QLatin1Char BLANK(' ');

// One block of the top level: an item, a list, or a line outside of both.
struct Block
{
    QByteArray text;
    QStringList lines;
    qint64 firstLine = 0;
    qint64 values = 0;

    bool isEmpty() const { return text.isEmpty(); }
    bool isItem() const { return lines.first().trimmed().startsWith(XMLPacketable::START_ITEM); }

    bool isTooLarge() const { return text.size() > MAX_ITEM_BYTES || values > MAX_ITEM_VALUES; }

    void add(const QByteArray &line)
    {
        text += line;
        lines += QString::fromUtf8(line);
        values += std::count_if(
            line.begin(), line.end(), [](char c) { return c == ' ' || c == '\r' || c == '\n'; });
    }
};

// Takes one block after the other from a text.
class BlockReader
{
public:
    explicit BlockReader(const Conversion &conversion)
        : m_lines(conversion.input),
          m_most(conversion.isLimited ? MAX_ITEM_BYTES : std::numeric_limits<qint64>::max())
    {
    }

    // Returns an empty block at the end. A block that is too large may be cut.
    Block take()
    {
        Block block;
        std::vector<int> open { NO_TAG };  // length of the last tag, by level
        do {
            const QByteArray line = m_lines.take(m_most);
            if (line.isEmpty()) {
                break;
            }
            block.add(line);
            block.firstLine = block.firstLine == 0 ? m_lines.number() : block.firstLine;
            follow(block.lines.last().trimmed(), open);
        } while (open.size() > 1 && block.text.size() <= m_most);
        return block;
    }

private:
    static constexpr int NO_TAG = -1;

    // The library cuts a line without a blank where it cut the line before it on the same level.
    static void follow(const QString &line, std::vector<int> &open)
    {
        const auto blank = line.indexOf(BLANK);
        open.back() = blank < 0 ? open.back() : int(blank);
        const QString tag = open.back() == NO_TAG ? QString() : line.left(open.back());
        if (tag == XMLPacketable::START_ITEM || tag == XMLPacketable::START_LIST) {
            open.push_back(NO_TAG);
        } else if (open.size() > 1 &&
            (tag == XMLPacketable::END_ITEM || tag == XMLPacketable::END_LIST)) {
            open.pop_back();
        }
    }

    LineReader m_lines;
    const qint64 m_most;
};

// The packet's text before and after its packetables.
struct Frame
{
    Frame()
    {
        XMLPacket packet;
        XMLPacketable placeholder;
        packet.appendV(placeholder);
        QString error;
        const QDomElement root = placeholder.getNodeConst();
        const QByteArray text = xmlText(root.ownerDocument().documentElement(), error);
        const QByteArray line = xmlText(root, error, REFUSED, PACKETABLE_LEVEL);
        const auto at = text.indexOf(line);
        before = text.left(at);
        after = text.mid(at + line.size());
    }

    QByteArray before;
    QByteArray after;
};

class XmlConverter
{
public:
    explicit XmlConverter(const Conversion &conversion) : m_conversion(conversion) {}

    int run()
    {
        const Frame frame;
        BlockReader reader(m_conversion);
        m_spool.write(frame.before);
        for (Block block = reader.take(); !block.isEmpty() && m_error.isEmpty();
             block = reader.take()) {
            convert(block);
        }
        if (!m_conversion.input.readError().isEmpty()) {
            m_error = m_conversion.input.readError();
        }
        if (m_error.isEmpty() && !m_hasItems) {
            m_error = QStringLiteral("there is no item in it");
        }
        if (!m_error.isEmpty()) {
            return m_conversion.fail(m_error);
        }
        return m_spool.write(frame.after) ? m_spool.print() : fail(m_spool.error());
    }

private:
    void convert(const Block &block)
    {
        if (m_conversion.isLimited && block.isTooLarge()) {
            m_error = tooLarge(block.firstLine);
            return;
        }
        QByteArray xml;
        QByteArray again;
        if (block.isItem()) {
            XMLPacketable all;
            const QDomElement root = readItems(all, block.lines);
            again = m_conversion.isRaw ? QByteArray() : all.toPacket(root).toUtf8();
            xml = xmlOf(root);
            m_error = m_error.isEmpty() ? QString() : unwritableIn(block);
        }
        if (!m_conversion.isRaw) {
            check(block, again);
        }
        if (m_error.isEmpty() && !m_spool.write(xml)) {
            m_error = m_spool.error();
        }
    }

    // Each item becomes a packetable.
    QByteArray xmlOf(const QDomElement &root)
    {
        QByteArray xml;
        QDomElement item = root.firstChildElement(XMLPacketable::ITEM);
        while (!item.isNull() && m_error.isEmpty()) {
            const QDomElement next = item.nextSiblingElement(XMLPacketable::ITEM);
            XMLPacketable packetable;
            packetable.setType(XMLPacketable::getType(item));
            QDomElement element = packetable.getNodeConst();
            element.appendChild(item);
            xml += xmlText(
                element, m_error, m_conversion.isRaw ? LEFT_OUT : REFUSED, PACKETABLE_LEVEL);
            m_hasItems = true;
            item = next;
        }
        return xml;
    }

    // The first line with a character that XML does not allow.
    static QString unwritableIn(const Block &block)
    {
        qint64 line = block.firstLine;
        for (const QString &text : block.lines) {
            const QString reason = ::unwritableIn(text);
            if (!reason.isEmpty()) {
                return lineMessage(line, reason);
            }
            ++line;
        }
        return QString();
    }

    // Packet text is converted only if converting back gives the same text.
    void check(const Block &block, const QByteArray &again)
    {
        const Comparison comparison(block.text, again);
        if (comparison.isEqual()) {
            return;
        }
        const QString reason = comparison.levels() >= TQMAX_NESTING
            ? QStringLiteral("items are nested deeper than %1 levels").arg(TQMAX_NESTING)
            : faultOf(block.text, comparison.line(), block.firstLine == 1);
        m_error = lineMessage(block.firstLine + comparison.line() - 1, reason);
    }

    const Conversion &m_conversion;
    Spool m_spool;
    bool m_hasItems = false;
    QString m_error;
};

}  // namespace

int convertToXml(const Conversion &conversion) { return XmlConverter(conversion).run(); }

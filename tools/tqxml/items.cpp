// Items are read from the text that XMLPacket::write() makes: one element a line, and one blank of
// indentation for each level. "<" in a value is escaped, so a line that starts with a tag is one.

#include "items.h"

#include "values.h"

#include "xmlpacketable.h"

#include <algorithm>

namespace {

constexpr char ITEM_START[] = "  <packetable ";
constexpr char ITEM_END[] = "  </packetable>\n";
constexpr char EMPTY_END[] = "/>\n";
constexpr int FIELD_LEVEL = 4;

// The part of a text between two positions, without a copy.
QByteArray part(const QByteArray &text, qsizetype start, qsizetype end)
{
    return QByteArray::fromRawData(text.constData() + start, int(end - start));
}

QString elementName(const Column &column)
{
    return XMLPacketable::getXMLTagNameFromDATATAG(int(column.tag));
}

}  // namespace

qint64 ItemSplitter::writeData(const char *data, qint64 size)
{
    m_text.append(data, int(size));
    while (!m_isDone) {
        const qsizetype feed = m_text.indexOf('\n', int(m_line));
        if (feed < 0) {
            break;
        }
        m_isDone = !takeLine(m_line, feed + 1);
        m_line = feed + 1;
    }
    const qsizetype kept = m_item >= 0 ? m_item : m_line;
    m_text.remove(0, int(kept));
    m_line -= kept;
    m_item = std::min<qsizetype>(m_item, 0);
    return m_isDone ? -1 : size;
}

bool ItemSplitter::takeLine(qsizetype start, qsizetype end)
{
    const QByteArray line = part(m_text, start, end);
    if (m_item < 0 && line.startsWith(ITEM_START)) {
        m_item = start;
    }
    const bool isItem = m_item == start && line.endsWith(EMPTY_END);
    if (m_item < 0 || (!isItem && line != ITEM_END)) {
        return true;
    }
    const bool wantsMore = m_take(part(m_text, m_item, end));
    m_item = -1;
    return wantsMore;
}

ItemReader::ItemReader(const Columns &columns) : m_columns(int(columns.size()))
{
    for (int i = 0; i < m_columns; ++i) {
        const Column &column = columns[size_t(i)];
        if (column.tag == 0) {
            m_key = i;
        } else {
            m_fields.insert(elementName(column), i);
        }
    }
}

QStringList ItemReader::cellsOf(const QByteArray &xml)
{
    QStringList cells;
    for (int i = 0; i < m_columns; ++i) {
        cells << QString();
    }
    m_xml.clear();
    m_xml.addData(xml);
    m_xml.readNextStartElement();
    const QXmlStreamAttributes own = m_xml.attributes();
    if (m_key >= 0 && own.hasAttribute(XMLPacketable::KEY)) {
        cells[m_key] = keyText(
            own.value(XMLPacketable::KEY).toString(), own.value(XMLPacketable::HKEY).toString());
    }
    m_xml.readNextStartElement();  // the item
    while (m_xml.readNextStartElement()) {
        const int column = m_fields.value(m_xml.name().toString(), -1);
        if (column < 0) {
            m_xml.skipCurrentElement();
        } else {
            readField(cells[column]);
        }
    }
    return cells;
}

void ItemReader::readField(QString &cell)
{
    const QXmlStreamAttributes attributes = m_xml.attributes();
    if (attributes.hasAttribute(XMLPacketable::VALUE)) {
        cell = attributes.value(XMLPacketable::VALUE).toString();
    } else if (attributes.hasAttribute(XMLPacketable::KEY)) {
        cell = keyText(attributes.value(XMLPacketable::KEY).toString(),
            attributes.value(XMLPacketable::HKEY).toString());
    } else {
        QStringList entries;
        while (m_xml.readNextStartElement()) {
            entries << m_xml.readElementText(QXmlStreamReader::SkipChildElements);
        }
        cell = entries.join(QLatin1Char('\n'));
        return;
    }
    m_xml.skipCurrentElement();
}

char foreignCharacter(const QByteArray &xml)
{
    const auto found = std::find_if(xml.begin(), xml.end(),
        [](char c) { return uchar(c) < ' ' && c != '\t' && c != '\n' && c != '\r'; });
    return found == xml.end() ? '\0' : *found;
}

QByteArray itemWith(const Columns &columns, const QByteArray &xml)
{
    QByteArray text;
    bool isKept = true;
    for (qsizetype start = 0; start < xml.size();) {
        const qsizetype end = xml.indexOf('\n', int(start)) + 1;
        const QByteArray line = part(xml, start, end);
        const QByteArray tag = line.mid(FIELD_LEVEL);
        if (line.startsWith("    <_")) {
            const QByteArray name = tag.mid(1, int(tag.toStdString().find_first_of(" />", 1)) - 1);
            isKept = std::any_of(columns.begin(), columns.end(), [&name](const Column &column) {
                return column.tag != 0 && elementName(column).toUtf8() == name;
            });
        } else if (!line.startsWith("    ")) {
            isKept = true;
        }
        text += isKept ? line : QByteArray();
        start = end;
    }
    return text;
}

#include "rowreader.h"

#include "xmlpacketable.h"

namespace {

constexpr int BASE = 16;

// How deep the elements of a reply are: tqxml/body/packetable/item/FIELD/value.
enum Depth { Document = 1, Body, Packetable, ItemNode, FieldNode, Entry };

QString attribute(const QXmlStreamReader &xml, const QString &name)
{
    return xml.attributes().value(name).toString();
}

TQKEY_ELEMENT key(const QXmlStreamReader &xml)
{
    return { attribute(xml, XMLPacketable::KEY).toUInt(nullptr, BASE),
        attribute(xml, XMLPacketable::HKEY).toUInt(nullptr, BASE) };
}

}  // namespace

RowReader::RowReader(std::function<void(const ReadItem &item)> take) : m_take(std::move(take))
{
    QIODevice::open(QIODevice::WriteOnly | QIODevice::Unbuffered);
}

bool RowReader::isWhole() const { return m_xml.atEnd() && !m_xml.hasError(); }

qint64 RowReader::writeData(const char *data, qint64 length)
{
    m_xml.addData(QByteArray(data, int(length)));
    while (!m_xml.atEnd()) {
        const auto token = m_xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            startElement();
        } else if (token == QXmlStreamReader::EndElement) {
            endElement();
        } else if (token == QXmlStreamReader::Characters && m_depth == Entry) {
            m_text += m_xml.text();
        }
    }
    return length;
}

void RowReader::startElement()
{
    ++m_depth;
    if (m_depth == Packetable) {
        // The header has elements of this depth, too.
        m_isItem = m_xml.name() == XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE);
        m_item = { attribute(m_xml, XMLPacketable::NAME), key(m_xml), {} };
    } else if (m_depth == FieldNode) {
        m_value = { attribute(m_xml, XMLPacketable::VALUE), key(m_xml), {} };
    } else if (m_depth == Entry) {
        m_text.clear();
    }
}

void RowReader::endElement()
{
    if (m_depth == Entry) {
        m_value.entries << m_text;
    } else if (m_depth == FieldNode) {
        const QString tag = XMLPacketable::getDATATAGFromXMLTagName(m_xml.name().toString());
        m_item.fields.insert(tag.toUInt(nullptr, BASE), m_value);
    } else if (m_depth == Packetable && m_isItem) {
        m_take(m_item);
    }
    --m_depth;
}

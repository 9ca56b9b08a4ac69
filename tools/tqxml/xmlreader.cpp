#include "xmlreader.h"

#include "xmlpacketable.h"

#include <QXmlStreamReader>

namespace {

constexpr int MAX_DEPTH = 1000;  // levels of elements; inlined items take three each

class Reader
{
public:
    Reader(const QByteArray &text, Reading reading) : m_xml(text), m_reading(reading)
    {
        m_xml.setNamespaceProcessing(false);  // elements are told by name alone
    }

    XmlInput read()
    {
        while (!m_xml.atEnd()) {
            switch (m_xml.readNext()) {
            case QXmlStreamReader::StartElement:
                open();
                break;
            case QXmlStreamReader::EndElement:
                close();
                break;
            case QXmlStreamReader::Characters:
                m_text += m_xml.text();
                break;
            default:
                break;
            }
        }
        if (m_xml.hasError()) {
            m_input.error = QStringLiteral("line %1, column %2: %3")
                                .arg(m_xml.lineNumber())
                                .arg(m_xml.columnNumber())
                                .arg(m_xml.errorString());
        }
        return m_input;
    }

private:
    QString value(QString text)
    {
        const QLatin1Char lineFeed('\n');
        if (m_reading == BlankLineFeeds) {
            return text.replace(lineFeed, QLatin1Char(' '));
        }
        m_input.hasLineFeeds = m_input.hasLineFeeds || text.contains(lineFeed);
        return text;
    }

    void open()
    {
        addText();
        const QString name = m_xml.qualifiedName().toString();
        const bool isBlock = name == XMLPacketable::ITEM || name == XMLPacketable::LIST;
        const int nesting = isBlock ? (m_nesting.isEmpty() ? 0 : m_nesting.last()) + 1 : 0;
        if (nesting > MAX_NESTING) {
            return leaveOut(
                QStringLiteral("items are nested deeper than %1 levels").arg(MAX_NESTING));
        }
        if (m_nesting.size() == MAX_DEPTH) {
            return leaveOut(
                QStringLiteral("elements are nested deeper than %1 levels").arg(MAX_DEPTH));
        }
        QDomElement e = m_input.document.createElement(name);
        const QXmlStreamAttributes attributes = m_xml.attributes();
        for (const QXmlStreamAttribute &attribute : attributes) {
            e.setAttribute(
                attribute.qualifiedName().toString(), value(attribute.value().toString()));
        }
        m_nesting.append(nesting);
        m_current.isNull() ? m_input.document.appendChild(e) : m_current.appendChild(e);
        m_current = e;
    }

    void leaveOut(const QString &error)
    {
        m_reading == ReadRaw ? m_xml.skipCurrentElement() : m_xml.raiseError(error);
    }

    void close()
    {
        addText();
        m_nesting.removeLast();
        m_current = m_current.parentNode().toElement();
    }

    void addText()
    {
        const bool isLayout = m_text.trimmed().isEmpty() &&
            (m_current.tagName() != XMLPacketable::VALUE || m_current.hasChildNodes());
        if (!isLayout) {
            m_current.appendChild(m_input.document.createTextNode(value(m_text)));
        }
        m_text.clear();
    }

    QXmlStreamReader m_xml;
    const Reading m_reading;
    XmlInput m_input;
    QDomElement m_current;  // the open element
    QList<int> m_nesting;  // of items and lists, for each open element
    QString m_text;  // since the last tag
};

}  // namespace

XmlInput readXml(const QByteArray &text, Reading reading) { return Reader(text, reading).read(); }

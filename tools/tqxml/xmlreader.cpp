#include "xmlreader.h"

#include "conversion.h"

#include "xmlpacket.h"
#include "xmlpacketable.h"

#include <utility>

namespace {

constexpr int MAX_DEPTH = 1000;  // levels of elements; inlined items take three each

bool isPacketable(const QString &name)
{
    return name == XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE);
}

bool isBlock(const QString &name)
{
    return name == XMLPacketable::ITEM || name == XMLPacketable::LIST;
}

}  // namespace

XmlReader::XmlReader(Input &input, Options options)
    : m_input(input), m_options(options), m_xml(&input)
{
    m_xml.setNamespaceProcessing(false);  // the library looks at names only
    limit();
}

QDomDocument XmlReader::next()
{
    while (!m_xml.atEnd()) {
        const QXmlStreamReader::TokenType token = m_xml.readNext();
        if (token == QXmlStreamReader::StartElement && isAtPacketable()) {
            return readPacketable();
        }
        if (token == QXmlStreamReader::StartElement) {
            enter();
        } else if (token == QXmlStreamReader::EndElement) {
            leave();
        } else if (token == QXmlStreamReader::Characters && isWhole() && !m_xml.isWhitespace()) {
            m_xml.raiseError(QStringLiteral("packet text has no place for text outside of items"));
        }
        limit();
    }
    return QDomDocument();
}

QString XmlReader::error() const
{
    if (m_input.isOverLimit() || (m_options.isLimited && m_values > MAX_ITEM_VALUES)) {
        return tooLarge(m_line);
    }
    if (!m_input.readError().isEmpty()) {
        return m_input.readError();
    }
    const QString encoding = m_xml.documentEncoding().toString().toUpper();
    const bool isUtf8 = encoding.isEmpty() || encoding == QLatin1String("UTF-8");
    if (m_xml.error() == QXmlStreamReader::NotWellFormedError && isUtf8 &&
        m_input.lineNotInUtf8() > 0) {
        return lineMessage(m_input.lineNotInUtf8(),
            QStringLiteral("this is not UTF-8, and the document declares no other encoding"));
    }
    if (m_xml.error() == QXmlStreamReader::PrematureEndOfDocumentError &&
        m_xml.characterOffset() == 0) {
        return QStringLiteral("there is no item in it");
    }
    return m_xml.hasError() ? QStringLiteral("line %1, column %2: %3")
                                  .arg(QString::number(m_xml.lineNumber()),
                                      QString::number(m_xml.columnNumber()), m_xml.errorString())
                            : QString();
}

qint64 XmlReader::lineOf(const QDomElement &element) const
{
    // In the order of the document, each element after its parent.
    QDomElement at = element.ownerDocument().documentElement();
    int index = 0;
    while (at != element) {
        QDomElement next = at.firstChildElement();
        for (; next.isNull(); at = at.parentNode().toElement()) {
            next = at.nextSiblingElement();
        }
        at = next;
        ++index;
    }
    return m_lines.value(index, m_line);
}

bool XmlReader::isAtPacketable() const
{
    const QString name = m_xml.qualifiedName().toString();
    return m_depth == 0 ? isPacketable(name) || name == XMLPacketable::ITEM
                        : m_depth == 2 && m_isInBody && isPacketable(name);
}

void XmlReader::enter()
{
    if (m_depth == MAX_DEPTH) {
        return leaveOut(QStringLiteral("elements are nested deeper than %1 levels").arg(MAX_DEPTH));
    }
    const QString reason = isWhole() ? reasonAgainstFrame() : QString();
    if (!reason.isEmpty()) {
        return m_xml.raiseError(reason);
    }
    ++m_depth;
    if (m_depth == 2 && !m_hasBody && m_xml.qualifiedName() == XMLPacket::BODY) {
        m_hasBody = m_isInBody = true;
    }
}

// Why packet text has no place for this element, which is no packetable; empty if it is part of
// every packet and says nothing.
QString XmlReader::reasonAgainstFrame() const
{
    const QString name = m_xml.qualifiedName().toString();
    if (m_depth == 0 && name != XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKET)) {
        return QStringLiteral("\"%1\" is no packet, packetable or item").arg(name);
    }
    const bool isHeader = name == XMLPacket::HEADER;
    const bool isFirstBody = name == XMLPacket::BODY && !m_hasBody;
    const bool isAgent =
        !m_isInBody && (name == XMLPacket::SOURCE || name == XMLPacket::DESTINATION);
    const QString leaveOut = QStringLiteral("; --fields-only leaves it out");
    if ((m_depth == 1 && !isHeader && !isFirstBody) || (m_depth == 2 && !isAgent) || m_depth > 2) {
        return QStringLiteral("packet text has no place for \"%1\"").arg(name) + leaveOut;
    }
    const QXmlStreamAttributes attributes = m_xml.attributes();
    for (const QXmlStreamAttribute &attribute : attributes) {
        const QString attributeName = attribute.qualifiedName().toString();
        if (!attributeName.startsWith(QLatin1String("xmlns"))) {
            return QStringLiteral("packet text has no place for \"%1\" of \"%2\"")
                       .arg(attributeName, name) +
                leaveOut;
        }
    }
    return QString();
}

void XmlReader::leave()
{
    m_isInBody = m_isInBody && m_depth > 2;
    --m_depth;
}

// Starts counting for the next packetable.
void XmlReader::limit()
{
    m_line = m_xml.lineNumber();
    m_values = 0;
    if (m_options.isLimited) {
        m_input.allow(MAX_ITEM_BYTES);
    }
}

QDomDocument XmlReader::readPacketable()
{
    limit();
    m_document = QDomDocument();
    m_current = QDomElement();
    m_lines.clear();
    if (!isPacketable(m_xml.qualifiedName().toString())) {
        m_current =
            m_document.createElement(XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE));
        m_document.appendChild(m_current);
        m_lines.append(m_line);
    }
    open();
    while (!m_nesting.isEmpty() && !m_xml.atEnd()) {
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
    return m_xml.hasError() ? QDomDocument() : std::exchange(m_document, QDomDocument());
}

void XmlReader::open()
{
    addText();
    const QString name = m_xml.qualifiedName().toString();
    const int nesting = isBlock(name) ? (m_nesting.isEmpty() ? 0 : m_nesting.last()) + 1 : 0;
    if (nesting > TQMAX_NESTING) {
        return leaveOut(
            QStringLiteral("items are nested deeper than %1 levels").arg(TQMAX_NESTING));
    }
    if (m_depth + m_nesting.size() >= MAX_DEPTH) {
        return leaveOut(QStringLiteral("elements are nested deeper than %1 levels").arg(MAX_DEPTH));
    }
    if (m_options.isFieldsOnly && isPacketable(name) && !m_nesting.isEmpty()) {
        return m_xml.skipCurrentElement();
    }
    QDomElement e = m_document.createElement(name);
    const QXmlStreamAttributes attributes =
        m_options.isFieldsOnly && isPacketable(name) ? QXmlStreamAttributes() : m_xml.attributes();
    for (const QXmlStreamAttribute &attribute : attributes) {
        e.setAttribute(attribute.qualifiedName().toString(), attribute.value().toString());
    }
    m_lines.append(m_xml.lineNumber());
    m_nesting.append(nesting);
    m_current.isNull() ? m_document.appendChild(e) : m_current.appendChild(e);
    m_current = e;
    m_values += 1 + attributes.size();
    if (m_options.isLimited && m_values > MAX_ITEM_VALUES) {
        m_xml.raiseError();
    }
}

void XmlReader::close()
{
    addText();
    m_nesting.removeLast();
    m_current = m_current.parentNode().toElement();
}

void XmlReader::addText()
{
    const bool isLayout = m_text.trimmed().isEmpty() &&
        (m_current.tagName() != XMLPacketable::VALUE || m_current.hasChildNodes());
    if (!isLayout) {
        m_current.appendChild(m_document.createTextNode(m_text));
    }
    m_text.clear();
}

void XmlReader::leaveOut(const QString &error)
{
    if (m_options.isRaw) {
        m_xml.skipCurrentElement();
    } else {
        m_xml.raiseError(error);
    }
}

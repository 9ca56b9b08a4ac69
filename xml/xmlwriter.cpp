#include "xmlwriter_p.h"

#include "domtree_p.h"

#include <QIODevice>

#include <algorithm>
#include <array>
#include <vector>

namespace TQXmlInternal {

namespace {

// How many bytes are collected before they are written to the device.
constexpr size_t BUFFER_SIZE = 1 << 16;

// ASCII characters that may need an escape.
constexpr std::array<bool, 128> makeSpecial()
{
    std::array<bool, 128> special {};
    for (const char c : { '<', '>', '&', '"', '\n', '\r', '\t' }) {
        special[size_t(c)] = true;
    }
    return special;
}
constexpr std::array<bool, 128> SPECIAL = makeSpecial();

bool isPlain(char16_t c) { return c < SPECIAL.size() && !SPECIAL[c]; }

// The escape for the character at that position; empty if it needs none.
QLatin1String escapeAt(QStringView text, qsizetype at, bool isAttribute)
{
    switch (text.at(at).unicode()) {
    case u'<':
        return QLatin1String("&lt;");
    case u'&':
        return QLatin1String("&amp;");
    case u'>':
        return QLatin1String(text.left(at).endsWith(QLatin1String("]]")) ? "&gt;" : "");
    case u'"':
        return QLatin1String(isAttribute ? "&quot;" : "");
    case u'\r':
        return QLatin1String("&#xd;");
    case u'\n':
        return QLatin1String(isAttribute ? "&#xa;" : "");
    case u'\t':
        return QLatin1String(isAttribute ? "&#x9;" : "");
    }
    return QLatin1String();
}

}  // namespace

XmlWriter::XmlWriter(QIODevice *device) : m_device(device) {}

void XmlWriter::openElement(QStringView name)
{
    startNode();
    m_buffer += '<';
    append(name);
    m_inStartTag = true;
    ++m_depth;
}

void XmlWriter::attribute(QStringView name, QStringView value)
{
    m_buffer += ' ';
    append(name);
    m_buffer += "=\"";
    appendEscaped(value, true);
    m_buffer += '"';
}

void XmlWriter::rawAttribute(QStringView text)
{
    m_buffer += ' ';
    append(text);
}

void XmlWriter::optionalAttribute(QStringView name, QStringView value)
{
    if (!value.isEmpty()) {
        attribute(name, value);
    }
}

void XmlWriter::closeElement(QStringView name)
{
    --m_depth;
    if (m_inStartTag) {
        m_inStartTag = false;
        m_buffer += "/>";
    } else {
        startLine();
        m_buffer += "</";
        append(name);
        m_buffer += '>';
    }
    m_space = LineBreak;
}

void XmlWriter::text(QStringView text)
{
    closeStartTag();
    appendEscaped(text, false);
    m_space = Nothing;
}

void XmlWriter::cdata(QStringView text)
{
    closeStartTag();
    m_buffer += "<![CDATA[";
    append(text);
    m_buffer += "]]>";
    m_space = Nothing;
}

void XmlWriter::comment(QStringView text)
{
    startNode();
    m_buffer += "<!--";
    append(text);
    m_buffer += text.endsWith(QLatin1Char('-')) ? " -->" : "-->";
    m_space = LineBreak;
}

void XmlWriter::processingInstruction(QStringView target, QStringView data)
{
    closeStartTag();
    if (m_space == LineBreak) {
        m_buffer += '\n';
    }
    m_buffer += "<?";
    append(target);
    m_buffer += ' ';
    append(data);
    m_buffer += "?>\n";
    m_space = Indentation;
}

void XmlWriter::entityReference(QStringView name)
{
    closeStartTag();
    if (m_space == LineBreak) {
        m_buffer += '\n';
    }
    m_buffer += '&';
    append(name);
    m_buffer += ';';
    m_space = Indentation;
}

bool XmlWriter::finish()
{
    if (m_space == LineBreak) {
        m_buffer += '\n';
    }
    flush();
    return m_isComplete;
}

// The start tag is closed when the first node inside it is written.
void XmlWriter::closeStartTag()
{
    if (m_inStartTag) {
        m_inStartTag = false;
        m_buffer += '>';
        m_space = LineBreak;
    }
}

void XmlWriter::startNode()
{
    closeStartTag();
    startLine();
    if (m_buffer.size() >= BUFFER_SIZE) {
        flush();
    }
}

void XmlWriter::startLine()
{
    if (m_space == LineBreak) {
        m_buffer += '\n';
    }
    if (m_space != Nothing) {
        m_buffer.append(size_t(m_depth), ' ');
    }
}

void XmlWriter::append(QStringView text)
{
    const size_t size = m_buffer.size();
    m_buffer.resize(size + size_t(text.size()));
    char16_t bits = 0;
    std::transform(text.begin(), text.end(), m_buffer.begin() + qsizetype(size), [&bits](QChar c) {
        bits |= c.unicode();
        return char(c.unicode());
    });
    if (bits >= SPECIAL.size()) {
        m_buffer.resize(size);
        m_buffer += text.toUtf8().constData();
    }
}

void XmlWriter::appendEscaped(QStringView text, bool isAttribute)
{
    qsizetype begin = 0;
    for (qsizetype at = 0; at < text.size(); ++at) {
        if (isPlain(text.at(at).unicode())) {
            continue;
        }
        const QLatin1String escape = escapeAt(text, at, isAttribute);
        if (!escape.isEmpty()) {
            append(text.mid(begin, at - begin));
            m_buffer.append(escape.data(), size_t(escape.size()));
            begin = at + 1;
        }
    }
    append(text.mid(begin));
}

void XmlWriter::flush()
{
    const auto size = qint64(m_buffer.size());
    m_isComplete = m_isComplete && m_device->write(m_buffer.data(), size) == size;
    m_buffer.clear();
}

namespace {

// The attributes of an element, sorted by name; QtXml does not sort them.
std::vector<QDomNode> sortedAttributes(const QDomElement &e)
{
    const QDomNamedNodeMap attributes = e.attributes();
    std::vector<QDomNode> sorted;
    sorted.reserve(size_t(attributes.length()));
    for (int i = 0; i < attributes.length(); ++i) {
        sorted.push_back(attributes.item(i));
    }
    std::sort(sorted.begin(), sorted.end(),
        [](const QDomNode &a, const QDomNode &b) { return a.nodeName() < b.nodeName(); });
    return sorted;
}

void writeNamespace(XmlWriter &writer, const QString &prefix, const QString &space)
{
    const QString name = QStringLiteral("xmlns");
    writer.attribute(prefix.isEmpty() ? name : name + QLatin1Char(':') + prefix, space);
}

// Each prefix is declared once, at its first use.
void writeAttributes(XmlWriter &writer, const QDomElement &e)
{
    QStringList declared { e.prefix() };
    for (const QDomNode &attribute : sortedAttributes(e)) {
        writer.attribute(attribute.nodeName(), attribute.nodeValue());
        if (!attribute.namespaceURI().isNull() && !declared.contains(attribute.prefix())) {
            writeNamespace(writer, attribute.prefix(), attribute.namespaceURI());
            declared.append(attribute.prefix());
        }
    }
}

void openElement(XmlWriter &writer, const QDomElement &e)
{
    writer.openElement(e.tagName());
    if (!e.namespaceURI().isNull()) {
        writeNamespace(writer, e.prefix(), e.namespaceURI());
    }
    if (e.attributes().length() > MANY_ATTRIBUTES) {
        for (const QString &text : attributeTexts(e)) {
            writer.rawAttribute(text);
        }
    } else if (e.hasAttributes()) {
        writeAttributes(writer, e);
    }
}

// Writes a node; of an element, the start tag.
void beginNode(XmlWriter &writer, const QDomNode &node)
{
    switch (node.nodeType()) {
    case QDomNode::ElementNode:
        return openElement(writer, node.toElement());
    case QDomNode::TextNode:
        return writer.text(node.nodeValue());
    case QDomNode::CDATASectionNode:
        return writer.cdata(node.nodeValue());
    case QDomNode::CommentNode:
        return writer.comment(node.nodeValue());
    case QDomNode::ProcessingInstructionNode:
        return writer.processingInstruction(node.nodeName(), node.nodeValue());
    case QDomNode::EntityReferenceNode:
        return writer.entityReference(node.nodeName());
    default:  // the document itself, and what cannot be inside it
        return;
    }
}

void endNode(XmlWriter &writer, const QDomNode &node)
{
    if (node.isElement()) {
        writer.closeElement(node.nodeName());
    }
}

}  // namespace

void writeTree(XmlWriter &writer, const QDomNode &root)
{
    const QDomNode top = withinDepth(root);
    QDomNode node = top;
    while (!node.isNull()) {
        beginNode(writer, node);
        QDomNode next = node.firstChild();
        while (next.isNull()) {
            endNode(writer, node);
            if (node == top) {
                return;
            }
            next = node.nextSibling();
            if (next.isNull()) {
                node = node.parentNode();
            }
        }
        node = next;
    }
}

}  // namespace TQXmlInternal

#include "xmlwriter.h"

#include "streams.h"

#include <QDomNamedNodeMap>
#include <QList>
#include <QVector>

#include <algorithm>
#include <map>

namespace {

constexpr QLatin1Char LINE_FEED('\n');

enum Place { InText, InAttribute };

bool isXmlCharacter(uint c)
{
    return c == '\t' || c == '\n' || c == '\r' || (c >= 0x20 && c < 0xd800) ||
        (c > 0xdfff && c < 0xfffe) || c > 0xffff;
}

QString unwritable(uint code)
{
    const QString number = QString::number(code, 16).toUpper().rightJustified(4, QLatin1Char('0'));
    return QStringLiteral("a value holds the character U+%1, which XML cannot hold").arg(number);
}

class Writer
{
public:
    Writer(QString &error, Unwritable unwritable) : m_error(error), m_unwritable(unwritable) {}

    void write(const QDomElement &e, int depth)
    {
        m_out += QString(depth, QLatin1Char(' ')) + QLatin1Char('<') + e.tagName();
        for (const auto &[name, value] : attributesOf(e)) {
            m_out += QLatin1Char(' ') + name + QLatin1String("=\"");
            writeText(value, InAttribute);
            m_out += QLatin1Char('"');
        }
        if (!e.hasChildNodes()) {
            m_out += QLatin1String("/>");
        } else {
            m_out += QLatin1Char('>');
            writeContent(e, depth);
            m_out += QLatin1String("</") + e.tagName() + QLatin1Char('>');
        }
    }

    QByteArray text() const { return (m_out + LINE_FEED).toUtf8(); }

private:
    static std::map<QString, QString> attributesOf(const QDomElement &e)
    {
        std::map<QString, QString> sorted;
        const QDomNamedNodeMap attributes = e.attributes();
        for (int i = 0; i < attributes.size(); ++i) {
            const QDomAttr attribute = attributes.item(i).toAttr();
            sorted.emplace(attribute.name(), attribute.value());
        }
        if (!e.namespaceURI().isEmpty()) {
            sorted.emplace(QStringLiteral("xmlns"), e.namespaceURI());
        }
        return sorted;
    }

    // Indent between elements only: next to text, white space would become part of the text.
    void writeContent(const QDomElement &e, int depth)
    {
        bool isBesideText = false;
        for (QDomNode node = e.firstChild(); !node.isNull(); node = node.nextSibling()) {
            if (node.isText()) {
                isBesideText = true;
                writeText(node.nodeValue(), InText);
            } else if (node.isElement()) {
                m_out += isBesideText ? QString() : QString(LINE_FEED);
                write(node.toElement(), isBesideText ? 0 : depth + 1);
            }
        }
        m_out += isBesideText ? QString() : LINE_FEED + QString(depth, QLatin1Char(' '));
    }

    void writeText(const QString &text, Place place)
    {
        for (const QChar *c = text.begin(), *end = text.end(); c != end; ++c) {
            uint code = c->unicode();
            if (c->isHighSurrogate() && c + 1 != end && c[1].isLowSurrogate()) {
                m_out += *c++;
                code = QChar::surrogateToUcs4(c[-1], *c);
            }
            if (isXmlCharacter(code)) {
                writeCharacter(*c, place);
            } else if (m_unwritable == REFUSED) {
                m_error = unwritable(code);
            }
        }
    }

    void writeCharacter(QChar c, Place place)
    {
        switch (c.unicode()) {
        case '<':
            m_out += QLatin1String("&lt;");
            break;
        case '>':
            m_out += QLatin1String("&gt;");
            break;
        case '&':
            m_out += QLatin1String("&amp;");
            break;
        case '"':
            m_out += place == InAttribute ? QLatin1String("&quot;") : QLatin1String("\"");
            break;
        case '\t':
        case '\n':
            // Parsers replace these with blanks in attributes, and a carriage return everywhere.
            if (place == InText) {
                m_out += c;
                break;
            }
            Q_FALLTHROUGH();
        case '\r':
            m_out += QLatin1String("&#x") + QString::number(c.unicode(), 16) + QLatin1Char(';');
            break;
        default:
            m_out += c;
        }
    }

    QString m_out;
    QString &m_error;
    const Unwritable m_unwritable;
};

}  // namespace

QByteArray xmlText(const QDomElement &element, QString &error, Unwritable unwritable, int level)
{
    Writer writer(error, unwritable);
    writer.write(element, level);
    return error.isEmpty() ? writer.text() : QByteArray();
}

QString unwritableIn(const QString &text)
{
    const auto codes = text.toUcs4();
    const auto found =
        std::find_if(codes.begin(), codes.end(), [](auto code) { return !isXmlCharacter(code); });
    return found == codes.end() ? QString() : unwritable(*found);
}

int printXml(const QDomElement &element)
{
    QString error;
    const QByteArray text = xmlText(element, error);
    return error.isEmpty() ? writeOutput(text) : fail(error);
}

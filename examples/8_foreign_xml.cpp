// Checks untrusted XML before it is converted to packet text.

#include <QCoreApplication>
#include <QXmlStreamReader>
#include <cstdio>
#include <xmlpacketable.h>

bool breaksLine(const QString &text)
{
    return text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
}

// Refuses a document type, deep nesting and line breaks in values. White space between elements is
// allowed: QDomDocument drops it.
bool isSafe(const QByteArray &text)
{
    QXmlStreamReader xml(text);
    int depth = 0;
    while (!xml.atEnd()) {
        xml.readNext();
        if (xml.isStartElement()) {
            ++depth;
        } else if (xml.isEndElement()) {
            --depth;
        }
        if (xml.isDTD() || depth > TQMAX_NESTING ||
            (xml.isCharacters() && !xml.isWhitespace() && breaksLine(xml.text().toString()))) {
            return false;
        }
        const QXmlStreamAttributes attributes = xml.attributes();
        for (const QXmlStreamAttribute &attribute : attributes) {
            if (breaksLine(attribute.value().toString())) {
                return false;
            }
        }
    }
    return !xml.hasError();
}

int main(int argc, char *argv[])
{
    const QCoreApplication application(argc, argv);
    for (const char *title : { "Emma", "Emma&#10;TI 0" }) {
        const QByteArray text = QByteArray("<packetable datatype=\"56\"><item datatype=\"56\">\n") +
            "<_1 value=\"" + title + "\"/>\n</item></packetable>";
        QDomDocument document;
        if (isSafe(text) && document.setContent(text)) {
            XMLPacketable book;
            book.setData(document.documentElement());
            std::printf("%s", qPrintable(book.toPacket(book.getNodeConst())));
        } else {
            std::puts("refused");
        }
    }
    return 0;
}

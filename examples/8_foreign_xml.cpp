// XML from outside: what to check before it becomes packet text.

#include <QCoreApplication>
#include <QXmlStreamReader>
#include <cstdio>
#include <xmlpacketable.h>

//! [check]

bool breaksLine(const QString &text)
{
    return text.contains(QLatin1Char('\n')) || text.contains(QLatin1Char('\r'));
}

// No document type, no endless nesting, and no line break in a value. White space between elements
// is layout, which QDomDocument drops.
bool isSafe(const QByteArray &text)
{
    QXmlStreamReader xml(text);
    int depth = 0;
    while (!xml.atEnd()) {
        xml.readNext();
        depth += int(xml.isStartElement()) - int(xml.isEndElement());
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
//! [check]

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

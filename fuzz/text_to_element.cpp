#include "fuzz.h"

#include "xmlpacketable.h"

// Packet text to element, by bytes and by lines: both must build the same.

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray text(reinterpret_cast<const char *>(data), static_cast<int>(size));
    QStringList lines = linesOf(QString::fromUtf8(text.constData(), text.size()));
    TextItem item;
    item.text = text;

    XMLPacketable fromBytes;
    fromBytes.setData(item);

    XMLPacketable fromLines;
    QDomElement root = fromLines.getNodeConst();
    const unsigned int end = fromLines.toDom(root, lines, 0);
    require(haveSameContent(fromBytes.getNodeConst(), root), "bytes and lines read alike");
    require(end <= 2 * unsigned(lines.size()), "reading stops at the end of the lines");
    return 0;
}

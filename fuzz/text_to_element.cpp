#include "fuzz.h"

#include "tqpacketable.h"
#include "xmlpacketable.h"

#include <cstdlib>
#include <cstring>

// Packet text to element, by bytes and by lines: both must build the same.

namespace {

// A server item whose packet text is whatever it is given.
class TextItem : public TQPacketable
{
public:
    TextItem(const uint8_t *text, size_t length, PACKETDATATYPES type)
        : TQPacketable(type), m_text(text), m_length(length)
    {
    }
    char *toPacket(unsigned int &length) const override
    {
        length = static_cast<unsigned int>(m_length);
        const auto buffer = static_cast<char *>(std::malloc(m_length));
        if (buffer && m_length > 0) {
            std::memcpy(buffer, m_text, m_length);
        }
        return buffer;
    }

private:
    const uint8_t *m_text;
    size_t m_length;
};

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QStringList lines =
        linesOf(QString::fromUtf8(reinterpret_cast<const char *>(data), static_cast<int>(size)));

    XMLPacketable fromBytes;
    fromBytes.setData(TextItem(data, size, typeOf(lines)));

    XMLPacketable fromLines;
    QDomElement root = fromLines.getNodeConst();
    const unsigned int end = fromLines.toDom(root, lines, 0);
    require(haveSameContent(fromBytes.getNodeConst(), root), "bytes and lines read alike");
    require(end <= 2 * unsigned(lines.size()), "reading stops at the end of the lines");
    return 0;
}

#include "fuzz.h"

#include "xmlpacketable.h"

#include <algorithm>
#include <memory>

// There and back: text, element, text, element; and text through an item of the server library.

namespace {

std::unique_ptr<XMLPacketable> read(const QString &text)
{
    auto item = std::make_unique<XMLPacketable>();
    QStringList lines = linesOf(text);
    QDomElement root = item->getNodeConst();
    item->toDom(root, lines, 0);
    return item;
}

QString write(const XMLPacketable &item) { return item.toPacket(item.getNodeConst()); }

// A line without a blank is read by the positions of the one before it.
bool standsAlone(const QString &line) { return line.trimmed().contains(QLatin1Char(' ')); }

void checkText(const QString &text)
{
    const auto first = read(text);
    const QString written = write(*first);
    const QStringList lines = linesOf(written);
    if (!std::all_of(lines.begin(), lines.end(), standsAlone)) {
        return;
    }
    const auto second = read(written);
    const auto third = read(write(*second));
    require(haveSameContent(second->getNodeConst(), third->getNodeConst()),
        "what was written reads back");
}

QByteArray packetOf(const TQPacketable &item)
{
    unsigned int length = 0;
    char *const text = item.toPacket(length);
    const QByteArray copy(text, int(length));
    TQ_free(text);
    return copy;
}

// Data type of the first item in a packet text; none without an item.
PACKETDATATYPES typeOf(const QStringList &lines)
{
    const auto line = std::find_if(lines.begin(), lines.end(),
        [](const QString &each) { return each.startsWith(QLatin1String("SI ")); });
    return line == lines.end() ? PACKETDATATYPE_NONE
                               : PACKETDATATYPES(line->mid(3).toUInt(nullptr, 16));
}

// An item takes a text or refuses it. What it gives is what it took, or less; it takes that again,
// and so it does after a way through XML.
void checkServerItem(QByteArray text, const QStringList &lines)
{
    const std::unique_ptr<TQPacketable> item(PacketableUtil::getPacketable(typeOf(lines)));
    if (!item || !item->fromPacket(text.data(), unsigned(text.size()), false, true)) {
        return;
    }
    QByteArray kept = packetOf(*item);
    require(kept == text || kept.size() < text.size(), "lines are left out at most");
    require(item->fromPacket(kept.data(), unsigned(kept.size()), false, true) &&
            packetOf(*item) == kept,
        "the same bytes come back");
    XMLPacketable copy;
    copy.setData(TQPacketable(*item));
    require(copy.getDataConst(), "what an item takes it takes again");
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const auto bytes = reinterpret_cast<const char *>(data);
    const QString text = QString::fromUtf8(bytes, static_cast<int>(size));
    checkText(text);
    checkServerItem(QByteArray(bytes, static_cast<int>(size)), linesOf(text));
    return 0;
}

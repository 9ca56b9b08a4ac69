#include "../xml/qtcompat_p.h"
#include "fuzz.h"

#include "xmlpacketable.h"

#include <QDomDocument>

// Elements to packet text: what XML text holds, or what no text could hold, built node by node.

namespace {

constexpr const char *NAMES[] = { "packetable", "item", "list", "value", "_101", "_304", "_902",
    "_c01", "_e04", "_f08", "_1604", "_1701", "_1b08", "_1f04", "_6", "_-1", "_", "x:y" };
constexpr const char *KEYS[] = { "datatype", "size", "value", "key", "hkey", "name" };
constexpr const char *VALUES[] = { "63", "8", "15", "6", "0", "ffffffff", "-1", " ", "%1 %2" };
constexpr size_t SHORT = 2 * 384;  // so few bytes make fewer levels than a copy may have

QString anyName(Bytes &bytes) { return QString::fromLatin1(bytes.oneOf(NAMES)); }

void addAttribute(QDomElement &e, Bytes &bytes)
{
    const QString key = QString::fromLatin1(bytes.oneOf(KEYS));
    e.setAttribute(key, bytes.flag() ? bytes.text(16) : QString::fromLatin1(bytes.oneOf(VALUES)));
}

// A child that is no element.
void addLeaf(QDomDocument &document, QDomElement &parent, Bytes &bytes)
{
    QDomNode leaf;
    switch (bytes.below(5)) {
    case 0:
        leaf = document.createCDATASection(bytes.text(16));
        break;
    case 1:
        leaf = document.createComment(bytes.text(16));
        break;
    case 2:
        leaf = document.createProcessingInstruction(anyName(bytes), bytes.text(16));
        break;
    case 3:
        leaf = document.createEntityReference(anyName(bytes));
        break;
    default:
        leaf = document.createTextNode(bytes.text(16));
        break;
    }
    parent.appendChild(leaf);
}

// Each byte opens an element, closes one or adds to the one that is open.
void build(QDomDocument &document, Bytes &bytes)
{
    const auto open = [&](QDomNode parent) {
        return parent.appendChild(document.createElement(anyName(bytes))).toElement();
    };
    QDomElement e = open(document);
    while (!bytes.isEmpty()) {
        switch (bytes.below(6)) {
        case 0:
        case 1:
            e = open(e);
            break;
        case 2:
            e = e.parentNode().isElement() ? e.parentNode().toElement() : e;
            break;
        case 3:
            addLeaf(document, e, bytes);
            break;
        default:
            addAttribute(e, bytes);
            break;
        }
    }
}

}  // namespace

int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    QDomDocument document;
    if (size > 0 && data[0] == '<') {
        document.setContent(
            QByteArray(reinterpret_cast<const char *>(data), static_cast<int>(size)),
            TQXmlInternal::WITH_NAMESPACES);
    } else {
        Bytes bytes(data, size);
        build(document, bytes);
    }
    const QDomElement root = document.documentElement();

    XMLPacketable item;
    const QString text = item.toPacket(root);
    require(text.isEmpty() || text.endsWith(QLatin1Char('\n')), "packet text is made of lines");
    item.setData(root);
    require(size >= SHORT || item.toPacket(item.getNodeConst()) == text,
        "a copy is written like its original");
    if (TQPacketable *built = item.getDataConst()) {
        require(built->datatype == item.getType(), "the server item has the element's type");
    }
    return 0;
}

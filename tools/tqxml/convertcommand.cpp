#include "command.h"
#include "streams.h"
#include "xmlreader.h"
#include "xmlwriter.h"

#include "xmlpacket.h"
#include "xmlpacketable.h"

#include <QCommandLineParser>
#include <QFile>

#include "tqstorageclass.h"

#include <algorithm>
#include <string_view>

#include <unistd.h>

namespace {

const QString TO_OPTION = QStringLiteral("to");
const QString RAW_OPTION = QStringLiteral("raw");
const QString TO_XML = QStringLiteral("xml");
const QString TO_PACKET = QStringLiteral("packet");
const QString STANDARD_INPUT = QStringLiteral("-");
constexpr char LINE_FEED = '\n';

struct Input
{
    QString name;
    QByteArray bytes;
    bool isRaw = false;  // convert what can be converted

    int fail(const QString &message) const
    {
        return ::fail(QStringLiteral("%1: %2").arg(name, message));
    }
};

// Reads the items of a packet text into one packetable, whose element it returns.
QDomElement readItems(XMLPacketable &all, const QString &text)
{
    QDomElement root = all.getNodeConst();
    QStringList lines = text.split(QLatin1Char(LINE_FEED));
    const auto count = unsigned(lines.size());
    for (unsigned index = 0; index < count; ++index) {
        index = all.toDom(root, lines, index);
    }
    return root;
}

// Appends one packetable for each item of a packet text.
void readPacketText(XMLPacket &packet, const QString &text)
{
    XMLPacketable all;
    const QDomElement root = readItems(all, text);
    for (QDomElement item = root.firstChildElement(XMLPacketable::ITEM); !item.isNull();) {
        const QDomElement next = item.nextSiblingElement(XMLPacketable::ITEM);
        XMLPacketable packetable;
        packetable.setType(XMLPacketable::getType(item));
        QDomElement element = packetable.getNodeConst();
        element.appendChild(item);
        packet.appendV(packetable);
        item = next;
    }
}

// The packet texts of all, one behind the other.
QString packetText(const std::list<QDomNode> &packetables)
{
    const XMLPacketable converter;
    QString text;
    for (const QDomNode &packetable : packetables) {
        text += converter.toPacket(packetable.toElement());
    }
    return text;
}

std::list<QDomNode> packetablesOf(const XMLPacket &packet)
{
    std::list<QDomNode> packetables;
    packet.getNodesOfType(XMLObject::XMLOBJECT_PACKETABLE, packetables);
    return packetables;
}

// The packetables of a document: a packet, one packetable, or one item, which gets one.
std::list<QDomNode> packetablesOf(QDomDocument &document)
{
    std::list<QDomNode> packetables;
    const QDomElement root = document.documentElement();
    if (XMLObject::isXMLPacketable(root)) {
        packetables.push_back(root);
    } else if (root.tagName() == XMLPacketable::ITEM) {
        packetables.push_back(
            document.createElement(XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE)));
        packetables.back().appendChild(root);
    } else {
        XMLObject::getNodesOfType(
            root.firstChildElement(XMLPacket::BODY), XMLObject::XMLOBJECT_PACKETABLE, packetables);
    }
    return packetables;
}

// Both texts as bytes, and where they part.
class Comparison
{
public:
    Comparison(const QByteArray &text, const QByteArray &other)
        : m_text(text.constData(), size_t(text.size())), m_isEqual(text == other)
    {
        const std::string_view with(other.constData(), size_t(other.size()));
        const size_t shorter = std::min(m_text.size(), with.size());
        m_at = size_t(std::mismatch(m_text.begin(), m_text.begin() + shorter, with.begin()).first -
            m_text.begin());
    }

    bool isEqual() const { return m_isEqual; }

    /// Number of the first line that differs.
    size_t line() const
    {
        return 1 + size_t(std::count(m_text.begin(), m_text.begin() + m_at, LINE_FEED));
    }

    /// First word of that line.
    QString word() const
    {
        const size_t start = lineStart();
        const size_t end = std::min(m_text.find(' ', start), m_text.size());
        return QString::fromUtf8(m_text.data() + start, int(end - start));
    }

    /// Levels of items and lists that are open before that line.
    int levels() const
    {
        int levels = 0;
        for (size_t at = 0; at < lineStart(); at = m_text.find(LINE_FEED, at) + 1) {
            const std::string_view word = m_text.substr(at, 3);
            levels += (word == "SI " || word == "SL ") - (word == "TI " || word == "TL ");
        }
        return levels;
    }

private:
    size_t lineStart() const
    {
        const size_t end = m_at == 0 ? std::string_view::npos : m_text.rfind(LINE_FEED, m_at - 1);
        return end == std::string_view::npos ? 0 : end + 1;
    }

    const std::string_view m_text;
    const bool m_isEqual;
    size_t m_at;
};

// Empty when a packet text is what its conversion gives back, else where and why not.
QString damageOf(const QByteArray &text, const QByteArray &again)
{
    const Comparison comparison(text, again);
    if (comparison.isEqual()) {
        return QString();
    }
    const QString reason = comparison.levels() >= MAX_NESTING
        ? QStringLiteral("items are nested deeper than %1 levels").arg(MAX_NESTING)
        : QStringLiteral("not packet text, or nothing that comes back the same");
    return QStringLiteral("line %1: %2").arg(comparison.line()).arg(reason);
}

int convertToXml(const Input &input)
{
    XMLPacket packet;
    readPacketText(packet, QString::fromUtf8(input.bytes));
    const std::list<QDomNode> packetables = packetablesOf(packet);
    if (!input.isRaw) {
        const QString damage = damageOf(input.bytes, packetText(packetables).toUtf8());
        if (!damage.isEmpty()) {
            return input.fail(damage);
        }
    }
    if (packetables.empty()) {
        return input.fail(QStringLiteral("there is no item in it"));
    }
    QString error;
    const QDomElement root = packetables.front().ownerDocument().documentElement();
    const QByteArray text = xmlText(root, error, input.isRaw);
    return error.isEmpty() ? writeOutput(text) : input.fail(error);
}

bool isBlock(const QDomElement &e)
{
    return e.tagName() == XMLPacketable::ITEM || e.tagName() == XMLPacketable::LIST;
}

// The element behind, or with none its parent's first one; items that are inlined do not count.
QDomElement nextPart(const QDomElement &parent, const QDomElement &e = QDomElement())
{
    QDomElement next = e.isNull() ? parent.firstChildElement() : e.nextSiblingElement();
    while (XMLObject::isXMLPacketable(next)) {
        next = next.nextSiblingElement();
    }
    return next;
}

QString ownText(const QDomElement &e)
{
    QString text;
    for (QDomNode node = e.firstChild(); !node.isNull(); node = node.nextSibling()) {
        text += node.isText() ? node.nodeValue() : QString();
    }
    return text;
}

// Whether b is a; it may tell a size that a leaves to be counted.
bool isSame(const QDomElement &a, const QDomElement &b)
{
    const QDomNamedNodeMap attributes = a.attributes();
    const int counted =
        b.hasAttribute(XMLPacketable::SIZE) && !a.hasAttribute(XMLPacketable::SIZE) ? 1 : 0;
    bool same = a.tagName() == b.tagName() && ownText(a) == ownText(b) &&
        attributes.count() + counted == b.attributes().count();
    for (int i = 0; same && i < attributes.count(); ++i) {
        const QDomAttr attribute = attributes.item(i).toAttr();
        same =
            b.hasAttribute(attribute.name()) && b.attribute(attribute.name()) == attribute.value();
    }
    QDomElement inA = nextPart(a);
    QDomElement inB = nextPart(b);
    for (; same && !inA.isNull(); inA = nextPart(a, inA), inB = nextPart(b, inB)) {
        same = isSame(inA, inB);
    }
    return same && inB.isNull();
}

// True for a field that packet text does not carry: the data type has none such, or it is empty.
bool isLeftOut(const QDomElement &field, const QDomElement &item)
{
    const unsigned tag =
        XMLPacketable::getDATATAGFromXMLTagName(field.tagName()).toUInt(nullptr, 16);
    auto *table = TQGetSystemStorageClassConv(XMLPacketable::getType(item));
    return !XMLPacketable::getConvStructFromDataTag(table, tag) ||
        (!field.hasAttributes() && ownText(field).isEmpty() && nextPart(field).isNull());
}

// Name of the first field that is not the same in what was read back; empty when there is none.
QString firstLoss(const QDomElement &written, const QDomElement &read)
{
    QDomElement inRead = nextPart(read);
    for (QDomElement e = nextPart(written); !e.isNull(); e = nextPart(written, e)) {
        const bool isOther = e.tagName() != inRead.tagName();
        if (isOther && !isBlock(e) && isLeftOut(e, written)) {
            continue;
        }
        const QString lost = isOther ? e.tagName()
            : isBlock(e)             ? firstLoss(e, inRead)
            : isSame(e, inRead)      ? QString()
                                     : e.tagName();
        if (!lost.isEmpty()) {
            return lost;
        }
        inRead = nextPart(read, inRead);
    }
    return QString();
}

struct PacketText
{
    QByteArray text;
    bool hasLineFeeds;  // in values of the document
    QString error;
};

// The document goes at once: it takes many times the room of its text.
PacketText packetTextOf(const QByteArray &xml, Reading reading)
{
    XmlInput input = readXml(xml, reading);
    return { packetText(packetablesOf(input.document)).toUtf8(), input.hasLineFeeds, input.error };
}

// Empty when the packet text of a document can be read back as it is meant, else why not.
QString lossOf(const PacketText &packet, const QByteArray &xml)
{
    if (packet.hasLineFeeds) {
        const PacketText blanked = packetTextOf(xml, BlankLineFeeds);
        const Comparison lineFeeds(packet.text, blanked.text);
        if (!lineFeeds.isEqual()) {
            return QStringLiteral(
                "a line feed in the value of \"%1\", which packet text cannot carry")
                .arg(lineFeeds.word());
        }
    }
    XMLPacketable again;
    const QDomElement read = readItems(again, QString::fromUtf8(packet.text));
    const Comparison reread(packet.text, again.toPacket(read).toUtf8());
    QString lost = reread.isEqual() ? QString() : reread.word();
    if (lost.isEmpty()) {
        QDomDocument document = readXml(xml, KeepLineFeeds).document;
        QDomElement written = document.createElement(read.tagName());
        for (const QDomNode &packetable : packetablesOf(document)) {
            for (QDomNode node = packetable.firstChild(); !node.isNull();
                 node = packetable.firstChild()) {
                written.appendChild(node);
            }
        }
        lost = firstLoss(written, read);
    }
    return lost.isEmpty() ? QString()
                          : QStringLiteral("\"%1\" would not come back the same").arg(lost);
}

int convertToPacket(const Input &input)
{
    const PacketText packet = packetTextOf(input.bytes, input.isRaw ? ReadRaw : KeepLineFeeds);
    if (!packet.error.isEmpty()) {
        return input.fail(packet.error);
    }
    if (packet.text.isEmpty()) {
        return input.fail(QStringLiteral("there is no item in it"));
    }
    const QString loss = input.isRaw ? QString() : lossOf(packet, input.bytes);
    return loss.isEmpty() ? writeOutput(packet.text) : input.fail(loss);
}

// Reads a file; false when that fails, with the reason in the file's error string.
bool read(QFile &file, QByteArray &bytes)
{
    const bool isOpen = file.fileName() == STANDARD_INPUT
        ? file.open(STDIN_FILENO, QIODevice::ReadOnly)
        : file.open(QIODevice::ReadOnly);
    if (isOpen) {
        bytes = file.readAll();
    }
    return isOpen && file.error() == QFileDevice::NoError;
}

void declareOptions(QCommandLineParser &parser)
{
    parser.addOption({ TO_OPTION, QString(), TO_OPTION });
    parser.addOption({ RAW_OPTION, QString() });
}

int run(const Command &command, const QCommandLineParser &parser)
{
    const QString to = parser.value(TO_OPTION);
    if (to != TO_XML && to != TO_PACKET) {
        return misuse(command, QStringLiteral("say --to xml or --to packet"));
    }
    const QStringList files = parser.positionalArguments();
    if (files.size() > 1) {
        return misuse(command, QStringLiteral("give one file, or none for standard input"));
    }
    QFile file(files.value(0, STANDARD_INPUT));
    Input input;
    input.name = file.fileName() == STANDARD_INPUT ? QStringLiteral("standard input")
        : file.fileName().isEmpty()                ? QStringLiteral("\"\"")
                                                   : file.fileName();
    input.isRaw = parser.isSet(RAW_OPTION);
    if (!read(file, input.bytes)) {
        return input.fail(file.errorString());
    }
    return to == TO_XML ? convertToXml(input) : convertToPacket(input);
}

}  // namespace

const Command CONVERT_COMMAND = {
    "convert",
    "--to xml|packet [--raw] [FILE]",
    "Turns packet text into a packet document and back, from FILE or standard input. Back from\n"
    "XML, a packet document, a packetable or an item will do; packet text carries no names, keys\n"
    "and flags of items. What would not come back the same is refused.\n\n"
    "  --to xml|packet        What to make.\n"
    "  --raw                  Convert what can be converted, and leave out the rest.\n",
    declareOptions,
    run,
};

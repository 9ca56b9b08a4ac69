#include "itemfields.h"

#include "xmlpacketable.h"

#include "tqregistry.h"

#include <QLocale>
#include <QStringList>

#include <algorithm>
#include <iterator>

namespace {

constexpr int BASE = 16;
constexpr const char *STATES[] = { "Waiting", "In progress", "Done" };
constexpr const char *OPTIONS[] = { "trapped", "overprinted", "proofed" };  // by bit
const QStringList PROCESS_COLOURS { QStringLiteral("Cyan"), QStringLiteral("Magenta"),
    QStringLiteral("Yellow"), QStringLiteral("Black") };

struct DeviceClass
{
    const char *code;
    const char *name;
};
constexpr DeviceClass DEVICE_CLASSES[] = { { "mntr", "monitor" }, { "prtr", "printer" },
    { "scnr", "scanner" }, { "spac", "colour space" }, { "abst", "abstract" }, { "link", "link" } };

QStringList entriesOf(const QDomElement &field)
{
    QStringList entries;
    for (QDomElement e = field.firstChildElement(XMLPacketable::VALUE); !e.isNull();
         e = e.nextSiblingElement(XMLPacketable::VALUE)) {
        entries << e.text();
    }
    return entries;
}

QString valueOf(const QDomElement &field) { return field.attribute(XMLPacketable::VALUE); }

QString state(const QDomElement &field)
{
    const unsigned number = valueOf(field).toUInt();
    return number < std::size(STATES) ? QLatin1String(STATES[number]) : valueOf(field);
}

QString options(const QDomElement &field)
{
    const int bits = valueOf(field).toInt();
    QStringList names;
    for (size_t i = 0; i < std::size(OPTIONS); ++i) {
        if (bits & (1 << i)) {
            names << QLatin1String(OPTIONS[i]);
        }
    }
    return names.isEmpty() ? QStringLiteral("none") : names.join(QLatin1String(", "));
}

// Width and height of a box of left, bottom, right and top.
QString box(const QDomElement &field)
{
    const QStringList edges = entriesOf(field);
    if (edges.size() != 4) {
        return edges.join(QLatin1Char(' '));
    }
    const auto length = [&edges](int from, int to) {
        return QString::number(edges.at(to).toDouble() - edges.at(from).toDouble(), 'f', 1);
    };
    return length(0, 2) + QStringLiteral(" × ") + length(1, 3);
}

QString inks(const QDomElement &field)
{
    QStringList names = entriesOf(field);
    if (names.mid(0, PROCESS_COLOURS.size()) == PROCESS_COLOURS) {
        names = QStringList(QStringLiteral("CMYK")) + names.mid(PROCESS_COLOURS.size());
    }
    return names.join(QStringLiteral(" + "));
}

QString sides(const QDomElement &field) { return entriesOf(field).join(QStringLiteral(" × ")); }

QString time(const QDomElement &field)
{
    return valueOf(field).left(16).replace(QLatin1Char('T'), QLatin1Char(' '));
}

QString deviceClass(const QDomElement &field)
{
    const QString code = valueOf(field);
    const auto found = std::find_if(std::begin(DEVICE_CLASSES), std::end(DEVICE_CLASSES),
        [&code](const DeviceClass &known) { return code == QLatin1String(known.code); });
    return found == std::end(DEVICE_CLASSES) ? code : QLatin1String(found->name);
}

// Fields whose values are not shown as their text.
struct Format
{
    PACKETDATATYPES type;
    unsigned tag;
    QString (*text)(const QDomElement &field);
};
constexpr Format FORMATS[] = {
    { PACKETDATATYPE_JOB, JobField::State, state },
    { PACKETDATATYPE_JOB, JobField::Options, options },
    { PACKETDATATYPE_JOB, JobField::TrimBox, box },
    { PACKETDATATYPE_JOB, JobField::Colours, inks },
    { PACKETDATATYPE_JOB, JobField::Created, time },
    { PACKETDATATYPE_OUTPUT, 0x6, inks },
    { PACKETDATATYPE_BOOK, 0x7, sides },  // page size
    { PACKETDATATYPE_ICCPROFILE, 0x3, deviceClass },
};

QString referredText(const QDomElement &field)
{
    const QDomElement inlined =
        field.firstChildElement(XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE));
    return inlined.isNull() ? QStringLiteral("not in this store") : XMLPacketable::getName(inlined);
}

QString plainText(const QDomElement &field)
{
    if (field.hasAttribute(XMLPacketable::VALUE)) {
        return valueOf(field).simplified();
    }
    if (field.hasAttribute(XMLPacketable::KEY)) {
        return referredText(field);
    }
    if (field.firstChild().isText()) {
        const qint64 size = field.attribute(XMLPacketable::SIZE).toLongLong(nullptr, BASE);
        return QLocale().formattedDataSize(size);
    }
    return entriesOf(field).join(QLatin1String(", "));
}

}  // namespace

void visitFields(const QDomElement &packetable,
    const std::function<void(unsigned tag, const QDomElement &field)> &visit)
{
    const QDomNode item = XMLPacketable::getPacketableItemNode(packetable);
    for (QDomElement e = item.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        bool isField = false;
        const unsigned tag =
            XMLPacketable::getDATATAGFromXMLTagName(e.tagName()).toUInt(&isField, BASE);
        if (isField) {
            visit(tag, e);
        }
    }
}

QString fieldHeading(PACKETDATATYPES type, unsigned tag)
{
    const char *heading = TQFieldHeading(type, tag);
    return heading ? QString::fromUtf8(heading) : QStringLiteral("Field %1").arg(tag);
}

QString fieldText(PACKETDATATYPES type, unsigned tag, const QDomElement &field)
{
    const auto format = std::find_if(std::begin(FORMATS), std::end(FORMATS),
        [type, tag](const Format &f) { return f.type == type && f.tag == tag; });
    return format == std::end(FORMATS) ? plainText(field) : format->text(field);
}

TQKEY_ELEMENT fieldKey(const QDomElement &field) { return XMLPacketable::getDBkey(field); }

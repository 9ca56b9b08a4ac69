#include "itemfields.h"

#include "xmlpacketable.h"

#include "tqregistry.h"

#include <QCoreApplication>
#include <QLocale>

#include <algorithm>
#include <iterator>

namespace {

constexpr int BASE = 16;
constexpr const char *STATES[] = { QT_TRANSLATE_NOOP("Field", "Waiting"),
    QT_TRANSLATE_NOOP("Field", "In progress"), QT_TRANSLATE_NOOP("Field", "Done") };
constexpr const char *OPTIONS[] = { QT_TRANSLATE_NOOP("Field", "trapped"),
    QT_TRANSLATE_NOOP("Field", "overprinted"), QT_TRANSLATE_NOOP("Field", "proofed") };  // by bit
const QStringList PROCESS_COLOURS { QStringLiteral("Cyan"), QStringLiteral("Magenta"),
    QStringLiteral("Yellow"), QStringLiteral("Black") };

struct DeviceClass
{
    const char *code;
    const char *name;
};
constexpr DeviceClass DEVICE_CLASSES[] = { { "mntr", QT_TRANSLATE_NOOP("Field", "monitor") },
    { "prtr", QT_TRANSLATE_NOOP("Field", "printer") },
    { "scnr", QT_TRANSLATE_NOOP("Field", "scanner") },
    { "spac", QT_TRANSLATE_NOOP("Field", "colour space") },
    { "abst", QT_TRANSLATE_NOOP("Field", "abstract") },
    { "link", QT_TRANSLATE_NOOP("Field", "link") } };

QString translated(const char *text) { return QCoreApplication::translate("Field", text); }

QString state(const QString &value, const QStringList &)
{
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    return isNumber ? stateName(number) : value;
}

QString options(const QString &value, const QStringList &)
{
    const int bits = value.toInt();
    QStringList names;
    for (size_t i = 0; i < std::size(OPTIONS); ++i) {
        if (bits & (1 << i)) {
            names << translated(OPTIONS[i]);
        }
    }
    return names.isEmpty() ? translated(QT_TRANSLATE_NOOP("Field", "none"))
                           : names.join(QLatin1String(", "));
}

// Width and height of a box of left, bottom, right and top.
QString box(const QString &, const QStringList &edges)
{
    if (edges.size() != 4) {
        return edges.join(QLatin1Char(' '));
    }
    const auto length = [&edges](int from, int to) {
        return QString::number(edges.at(to).toDouble() - edges.at(from).toDouble(), 'f', 1);
    };
    return length(0, 2) + QStringLiteral(" × ") + length(1, 3);
}

QString inks(const QString &, const QStringList &entries)
{
    QStringList names = entries;
    if (names.mid(0, PROCESS_COLOURS.size()) == PROCESS_COLOURS) {
        names = QStringList(QStringLiteral("CMYK")) + names.mid(PROCESS_COLOURS.size());
    }
    return names.join(QStringLiteral(" + "));
}

QString sides(const QString &, const QStringList &entries)
{
    return entries.join(QStringLiteral(" × "));
}

QString time(const QString &value, const QStringList &)
{
    return value.left(16).replace(QLatin1Char('T'), QLatin1Char(' '));
}

QString deviceClass(const QString &code, const QStringList &)
{
    const auto found = std::find_if(std::begin(DEVICE_CLASSES), std::end(DEVICE_CLASSES),
        [&code](const DeviceClass &known) { return code == QLatin1String(known.code); });
    return found == std::end(DEVICE_CLASSES) ? code : translated(found->name);
}

// Fields whose values are not shown as their text.
struct Format
{
    PACKETDATATYPES type;
    unsigned tag;
    QString (*text)(const QString &value, const QStringList &entries);
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

QDomElement inlinedItem(const QDomElement &field)
{
    return field.firstChildElement(XMLObject::rootNodeName(XMLObject::XMLOBJECT_PACKETABLE));
}

QStringList entriesOf(const QDomElement &field)
{
    QStringList entries;
    for (QDomElement e = field.firstChildElement(XMLPacketable::VALUE); !e.isNull();
         e = e.nextSiblingElement(XMLPacketable::VALUE)) {
        entries << e.text();
    }
    return entries;
}

QString textOf(PACKETDATATYPES type, unsigned tag, const QDomElement &field)
{
    const bool isValue = field.hasAttribute(XMLPacketable::VALUE);
    if (!isValue && field.hasAttribute(XMLPacketable::KEY)) {
        const QDomElement item = inlinedItem(field);
        return item.isNull() ? translated(QT_TRANSLATE_NOOP("Field", "not in this store"))
                             : XMLPacketable::getName(item);
    }
    if (!isValue && field.firstChild().isText()) {
        const qint64 size = field.attribute(XMLPacketable::SIZE).toLongLong(nullptr, BASE);
        return QLocale().formattedDataSize(size);
    }
    return fieldText(type, tag, field.attribute(XMLPacketable::VALUE), entriesOf(field));
}

}  // namespace

std::vector<Field> fieldsOf(const QDomElement &packetable)
{
    const PACKETDATATYPES type = XMLPacketable::getType(packetable);
    std::vector<Field> fields;
    const QDomNode item = XMLPacketable::getPacketableItemNode(packetable);
    for (QDomElement e = item.firstChildElement(); !e.isNull(); e = e.nextSiblingElement()) {
        bool isField = false;
        const unsigned tag =
            XMLPacketable::getDATATAGFromXMLTagName(e.tagName()).toUInt(&isField, BASE);
        if (isField) {
            fields.push_back(
                { fieldHeading(type, tag), textOf(type, tag, e), fieldsOf(inlinedItem(e)) });
        }
    }
    std::stable_partition(
        fields.begin(), fields.end(), [](const Field &field) { return field.fields.empty(); });
    return fields;
}

QString fieldHeading(PACKETDATATYPES type, unsigned tag)
{
    const char *heading = TQFieldHeading(type, tag);
    return heading ? translated(heading)
                   : translated(QT_TRANSLATE_NOOP("Field", "Field %1")).arg(tag);
}

QString fieldText(
    PACKETDATATYPES type, unsigned tag, const QString &value, const QStringList &entries)
{
    const auto format = std::find_if(std::begin(FORMATS), std::end(FORMATS),
        [type, tag](const Format &f) { return f.type == type && f.tag == tag; });
    if (format != std::end(FORMATS)) {
        return format->text(value, entries);
    }
    return entries.isEmpty() ? value.simplified() : entries.join(QLatin1String(", "));
}

QStringList stateNames()
{
    QStringList names;
    for (const char *name : STATES) {
        names << translated(name);
    }
    return names;
}

QString stateName(int state)
{
    if (state == JobRow::ABSENT) {
        return QString();
    }
    const bool isKnown = state >= 0 && size_t(state) < std::size(STATES);
    return isKnown ? translated(STATES[state]) : QString::number(state);
}

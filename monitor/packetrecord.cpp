#include "packetrecord.h"

#include <QCoreApplication>
#include <QXmlStreamReader>

#include <cstring>

namespace TQXmlInternal {

namespace {

// XMLPacket::write() indents by one blank a level, so this is where the first item of a body is.
constexpr char FIRST_ITEM[] = "\n <body>\n  <";
constexpr char ITEM_LINE[] = "\n  <packetable";

struct Element
{
    const char *name;
    PacketRecord::Kind kind;
    const char *attribute;  // which says what the element is about
    const char *summary;
};
constexpr Element ELEMENTS[] = {
    { "action", PacketRecord::Action, "name", QT_TRANSLATE_NOOP("XMLMonitor", "action %1") },
    { "ui", PacketRecord::Page, "name", QT_TRANSLATE_NOOP("XMLMonitor", "page %1") },
    { "img", PacketRecord::Image, "name", QT_TRANSLATE_NOOP("XMLMonitor", "image %1") },
    { "msg", PacketRecord::Message, "msg", QT_TRANSLATE_NOOP("XMLMonitor", "message %1") },
    { "packetable", PacketRecord::Items, nullptr, nullptr },
};

// Where the tag of the first item begins; -1 without items.
int firstTag(const QByteArray &text)
{
    const int found = int(text.indexOf(FIRST_ITEM));
    return found < 0 ? -1 : found + int(std::strlen(FIRST_ITEM)) - 1;
}

const Element *elementAt(const QByteArray &text, int tag)
{
    for (const Element &element : ELEMENTS) {
        const size_t length = std::strlen(element.name);
        if (std::strncmp(text.constData() + tag + 1, element.name, length) == 0) {
            return &element;
        }
    }
    return nullptr;
}

QString attributeAt(const QByteArray &text, int tag, const char *name)
{
    QXmlStreamReader reader(text.mid(tag));
    reader.readNextStartElement();
    return reader.attributes().value(QLatin1String(name)).toString();
}

QString translated(const char *text) { return QCoreApplication::translate("XMLMonitor", text); }

QString itemsIn(const PacketRecord &record)
{
    const int count = int(record.text.count(ITEM_LINE));
    if (record.isCut()) {
        return translated(QT_TRANSLATE_NOOP("XMLMonitor", "at least %1 items")).arg(count);
    }
    return count == 1 ? translated(QT_TRANSLATE_NOOP("XMLMonitor", "1 item"))
                      : translated(QT_TRANSLATE_NOOP("XMLMonitor", "%1 items")).arg(count);
}

}  // namespace

PacketRecord::Kind PacketRecord::kindOf(const QByteArray &text)
{
    const int tag = firstTag(text);
    if (tag < 0) {
        return Empty;
    }
    const Element *element = elementAt(text, tag);
    return element ? element->kind : Other;
}

QString PacketRecord::summary() const
{
    switch (kind) {
    case Items:
        return itemsIn(*this);
    case Empty:
        return translated(QT_TRANSLATE_NOOP("XMLMonitor", "empty"));
    case NotKept:
        return translated(QT_TRANSLATE_NOOP("XMLMonitor", "(too many at once to keep the text)"));
    case Agent:
    case Other:
        return QString();
    default:
        break;
    }
    const int tag = firstTag(text);
    const Element *element = tag < 0 ? nullptr : elementAt(text, tag);
    return element && element->summary
        ? translated(element->summary).arg(attributeAt(text, tag, element->attribute))
        : QString();
}

}  // namespace TQXmlInternal

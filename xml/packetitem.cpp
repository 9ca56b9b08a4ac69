#include "packetitem_p.h"

#include "fields_p.h"
#include "packetreader_p.h"
#include "packettext_p.h"
#include "probes_p.h"
#include "text_p.h"
#include "vocabulary_p.h"
#include "xmlwriter_p.h"

#include "tqpacketable.h"

#include <algorithm>
#include <climits>
#include <cstring>
#include <vector>

// An item can be turned into an element, written as XML, or compared with another item. All three
// read the same steps of its packet text, so they agree on what it contains.

namespace TQXmlInternal {

namespace {

const QString TRUE_TEXT = QStringLiteral("1");

// An output without a name has the name of its sub-record.
const char *nameOf(const TQPacketable &item)
{
    if (item.name) {
        return item.name;
    }
    const bool usesSubrecord = item.datatype == PACKETDATATYPE_OUTPUT && item.subrecord;
    const char *name = usesSubrecord ? item.subrecord->name : nullptr;
    return name ? name : "";
}

// Frees our own copies of texts. Those of the server library are freed by TQ_free().
void deleteText(void *text) { delete[] static_cast<char *>(text); }

QString toText(const std::string &utf8) { return QString::fromUtf8(utf8.c_str()); }

bool isAscii(const std::string &text)
{
    return std::all_of(text.begin(), text.end(), [](char c) { return (c & 0x80) == 0; });
}

// Different bytes may be the same text: invalid UTF-8, or a byte order mark at the start.
bool sameText(const std::string &a, const std::string &b)
{
    if (a == b || (isAscii(a) && isAscii(b))) {
        return a == b;
    }
    return toText(a) == toText(b);
}

void writeField(XmlWriter &writer, const QString &name, const FieldContent &content)
{
    writer.openElement(name);
    writer.optionalAttribute(HKEY, content.hkey);
    writer.optionalAttribute(KEY, content.key);
    writer.optionalAttribute(SIZE, content.size);
    if (content.count) {
        writer.attribute(SIZE, numberText(*content.count, 16));
    }
    writer.optionalAttribute(VALUE, content.value);
    forEachPart(content.values, content.separator, [&writer](QStringView part) {
        writer.openElement(VALUE);
        writer.text(part);
        writer.closeElement(VALUE);
    });
    if (content.text) {
        writer.text(*content.text);
    }
    writer.closeElement(name);
}

void writeContent(XmlWriter &writer, const char *text, size_t length)
{
    Utf8Lines lines(text, length);
    PacketReader<Utf8Lines> reader(lines, nullptr);
    std::vector<const QString *> open;  // names of the open elements
    for (PacketStep step; reader.next(step);) {
        switch (step.kind) {
        case PacketStep::OpenItem:
            writer.openElement(ITEM);
            writer.optionalAttribute(DATATYPE, step.value);
            open.push_back(&ITEM);
            break;
        case PacketStep::OpenList:
            writer.openElement(LIST);
            writer.optionalAttribute(SIZE, step.value);
            open.push_back(&LIST);
            break;
        case PacketStep::Close:
            writer.closeElement(*open.back());
            open.pop_back();
            break;
        case PacketStep::AddField:
            writeField(writer, step.field->name, readField(step.field->form, step.value));
            break;
        }
    }
    for (; !open.empty(); open.pop_back()) {
        writer.closeElement(*open.back());
    }
}

bool isSame(const PacketStep &a, const PacketStep &b)
{
    if (a.kind != b.kind) {
        return false;
    }
    if (a.kind != PacketStep::AddField) {
        return a.value == b.value;
    }
    if (a.field == b.field && a.value == b.value) {
        return true;
    }
    return a.field->name == b.field->name &&
        readField(a.field->form, a.value) == readField(b.field->form, b.value);
}

}  // namespace

PacketItem::PacketItem(const TQPacketable &item, bool isCurrent)
    : m_text(item.toPacket(m_length), TQ_free), m_type(item.datatype), m_key(item.dbkey),
      m_isCurrent(isCurrent), m_name(nameOf(item))
{
    if (!m_text || m_length > unsigned(INT_MAX)) {
        m_text.reset();
        m_length = 0;
    }
}

PacketItem::PacketItem(const PacketItem &other)
    : m_length(other.m_length), m_text(nullptr, deleteText), m_type(other.m_type),
      m_key(other.m_key), m_isCurrent(other.m_isCurrent), m_name(other.m_name)
{
    if (other.m_text) {
        m_text.reset(new char[m_length]);
        std::copy_n(other.m_text.get(), m_length, m_text.get());
    }
}

void PacketItem::fill(QDomElement &packetable) const
{
    packetable.setAttribute(DATATYPE, numberText(m_type, 16));
    packetable.setAttribute(KEY, numberText(m_key.key, 16));
    packetable.setAttribute(HKEY, numberText(m_key.hkey, 16));
    const QString name = toText(m_name);
    if (!name.isEmpty()) {
        packetable.setAttribute(NAME, name);
    }
    if (m_isCurrent) {
        packetable.setAttribute(IS_CURRENT, TRUE_TEXT);
    }
    readPacketText(packetable, m_text.get(), m_length);
}

QDomElement PacketItem::appendTo(QDomElement &parent) const
{
    QDomElement e = parent.ownerDocument().createElement(PACKETABLE);
    fill(e);
    return parent.appendChild(e).toElement();
}

void PacketItem::write(XmlWriter &writer) const
{
    writer.openElement(PACKETABLE);
    writer.attribute(DATATYPE, numberText(m_type, 16));
    writer.attribute(HKEY, numberText(m_key.hkey, 16));
    if (m_isCurrent) {
        writer.attribute(IS_CURRENT, TRUE_TEXT);
    }
    writer.attribute(KEY, numberText(m_key.key, 16));
    writer.optionalAttribute(NAME, toText(m_name));
    if (isHeard(tqxml_text_to_xml_begin_semaphore)) {
        Probe::textToXmlBegin(m_length);
    }
    writeContent(writer, m_text.get(), m_length);
    if (isHeard(tqxml_text_to_xml_end_semaphore)) {
        Probe::textToXmlEnd();
    }
    writer.closeElement(PACKETABLE);
}

bool PacketItem::operator==(const PacketItem &other) const
{
    return m_type == other.m_type && m_key.key == other.m_key.key &&
        m_key.hkey == other.m_key.hkey && m_isCurrent == other.m_isCurrent &&
        sameText(m_name, other.m_name) && hasSameContent(other);
}

bool PacketItem::hasSameContent(const PacketItem &other) const
{
    if (m_length == other.m_length &&
        (m_length == 0 || std::memcmp(m_text.get(), other.m_text.get(), m_length) == 0)) {
        return true;
    }
    Utf8Lines lines(m_text.get(), m_length);
    Utf8Lines otherLines(other.m_text.get(), other.m_length);
    PacketReader<Utf8Lines> reader(lines, nullptr);
    PacketReader<Utf8Lines> otherReader(otherLines, nullptr);
    for (;;) {
        PacketStep step;
        PacketStep otherStep;
        const bool goesOn = reader.next(step);
        const bool otherGoesOn = otherReader.next(otherStep);
        if (!goesOn && !otherGoesOn) {
            return true;
        }
        if (goesOn && otherGoesOn) {
            if (!isSame(step, otherStep)) {
                return false;
            }
        } else if ((goesOn ? step : otherStep).kind != PacketStep::Close) {
            return false;  // a text may end without closing its items
        }
    }
}

}  // namespace TQXmlInternal

#include "packettext_p.h"

#include "domtree_p.h"
#include "packetreader_p.h"
#include "probes_p.h"
#include "text_p.h"
#include "vocabulary_p.h"

#include <vector>

// Packet text, one line after the other; each ends with a line feed:
//
//   SI type     opens an item of that data type
//   TI 0        closes it
//   SL size     opens a list of that many items
//   TL 0        closes it
//   tag value   a field of the open item; its form says what the value is, see fields.cpp
//
// Numbers are hexadecimal. The reader skips what it cannot convert. A line without a blank is cut
// at the same position as the line before it. The rules for writers are in
// serverlib/tqpacketable.h.

namespace TQXmlInternal {

namespace {

const QString END_VALUE = QStringLiteral("0");  // of the lines that close an item or list

// The fields that an element's content may have.
std::shared_ptr<const FieldTable> fieldsOf(const QDomElement &e)
{
    return e.tagName() == ITEM ? fieldsOfType(e.attribute(DATATYPE)) : nullptr;
}

// Whether the element is an item of a type that is not converted. Such an item has no content.
bool isUnconverted(const QDomElement &e, const std::shared_ptr<const FieldTable> &fields)
{
    return !fields && e.tagName() == ITEM;
}

// Builds the elements of all steps below root.
template<typename Lines>
void build(const QDomElement &root, PacketReader<Lines> &reader)
{
    QDomDocument document = root.ownerDocument();
    std::vector<QDomElement> open { root };
    const auto append = [&](const QString &name, const QString &attribute, QStringView value) {
        const QDomElement e = makeElement(document, name, attribute, value);
        open.back().appendChild(e);
        open.push_back(e);
    };
    for (PacketStep step; reader.next(step);) {
        switch (step.kind) {
        case PacketStep::OpenItem:
            append(ITEM, DATATYPE, step.value);
            break;
        case PacketStep::OpenList:
            append(LIST, SIZE, step.value);
            break;
        case PacketStep::Close:
            open.pop_back();
            break;
        case PacketStep::AddField:
            buildField(
                document, open.back(), step.field->name, readField(step.field->form, step.value));
            break;
        }
    }
}

void writeContent(LineBuffer &out, const QDomNode &parent, const FieldTable *fields, int level);

void writeBlockLine(LineBuffer &out, const QString &word, QStringView value)
{
    append(out, word);
    out += BLANK;
    append(out, value);
    out += LINE_FEED;
}

// Writes an item or list with everything in it.
void writeBlock(LineBuffer &out, const QDomElement &e, bool isItem, int level)
{
    if (level > TQMAX_NESTING) {
        return;
    }
    if (isItem) {
        const QString type = e.attribute(DATATYPE);
        writeBlockLine(out, START_ITEM, type);
        if (const auto fields = fieldsOfType(type)) {
            writeContent(out, e, fields.get(), level);
        }
        writeBlockLine(out, END_ITEM, END_VALUE);
    } else {
        writeBlockLine(out, START_LIST, e.attribute(SIZE));
        writeContent(out, e, nullptr, level);
        writeBlockLine(out, END_LIST, END_VALUE);
    }
}

void writeField(
    LineBuffer &out, const QDomNode &node, const QString &name, const FieldTable &fields)
{
    unsigned int number = 0;
    const QStringView tag = tagIn(name);
    const FieldTable::Field *field = readNumber(tag, 16, number) ? fields.find(number) : nullptr;
    if (field) {
        writeField(out, field->form, tag, node.toElement());
    }
}

void writeContent(LineBuffer &out, const QDomNode &parent, const FieldTable *fields, int level)
{
    for (QDomNode node = parent.firstChild(); !node.isNull(); node = node.nextSibling()) {
        if (!node.isElement()) {
            continue;
        }
        const QString name = node.nodeName();
        const bool isItem = name == ITEM;
        if (isItem || name == LIST) {
            writeBlock(out, node.toElement(), isItem, level + 1);
        } else if (fields) {
            writeField(out, node, name, *fields);
        }
    }
}

}  // namespace

void readPacketText(const QDomElement &parent, const char *text, size_t length)
{
    const auto fields = fieldsOf(parent);
    if (parent.isNull() || isUnconverted(parent, fields)) {
        return;
    }
    if (isHeard(tqxml_text_to_dom_begin_semaphore)) {
        Probe::textToDomBegin(length);
    }
    Utf8Lines lines(text, length);
    PacketReader<Utf8Lines> reader(lines, fields);
    build(parent, reader);
    if (isHeard(tqxml_text_to_dom_end_semaphore)) {
        Probe::textToDomEnd();
    }
}

unsigned int readPacketLines(
    const QDomElement &parent, const QStringList &lines, unsigned int index)
{
    const auto fields = fieldsOf(parent);
    if (isUnconverted(parent, fields)) {
        return index;
    }
    if (isHeard(tqxml_text_to_dom_begin_semaphore)) {
        Probe::textToDomBegin(0);
    }
    ListLines source(lines, index);
    PacketReader<ListLines> reader(source, fields);
    build(parent, reader);
    if (isHeard(tqxml_text_to_dom_end_semaphore)) {
        Probe::textToDomEnd();
    }
    return source.index() - 1 + reader.openLevels();
}

void writePacketText(LineBuffer &out, const QDomElement &e)
{
    if (isHeard(tqxml_dom_to_text_begin_semaphore)) {
        Probe::domToTextBegin();
    }
    if (e.tagName() != ITEM) {
        writeContent(out, e, nullptr, 0);
    } else if (const auto fields = fieldsOfType(e.attribute(DATATYPE))) {
        writeContent(out, e, fields.get(), 0);
    }
    if (isHeard(tqxml_dom_to_text_end_semaphore)) {
        Probe::domToTextEnd(size_t(out.size()));
    }
}

}  // namespace TQXmlInternal

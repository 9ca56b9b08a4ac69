#include "packettext_p.h"

#include "domtree_p.h"
#include "qtcompat_p.h"
#include "text_p.h"
#include "vocabulary_p.h"

#include <QVarLengthArray>

#include <algorithm>
#include <cstring>
#include <vector>

// Packet text, one line after the other; each ends with a line feed:
//
//   SI type     opens an item of that data type
//   TI 0        closes it
//   SL size     opens a list of that many items
//   TL 0        closes it
//   tag value   a field of the open item; its shape says what the value is, see fields.cpp
//
// Numbers are hexadecimal. The reader is lenient: it skips what it cannot convert and goes on. A
// line without a blank is cut where the line before it was. The public headers of the server
// library say what a writer must keep to.

namespace TQXmlInternal {

namespace {

const QString END_VALUE = QStringLiteral("0");  // what the lines that close a block carry

// Hands out the lines of a UTF-8 text; empty ones do not count. A line is valid until the next.
class TextLines
{
public:
    TextLines(const char *text, size_t length) : m_begin(text), m_at(text), m_end(text + length) {}

    bool take(QStringView &line)
    {
        while (m_at != m_end) {
            const char *const start = m_at;
            const auto *feed = static_cast<const char *>(
                std::memchr(start, int(LINE_FEED), size_t(m_end - start)));
            m_at = feed ? feed + 1 : m_end;
            decode(start, feed ? feed : m_end);
            if (!m_line.isEmpty()) {
                line = QStringView(m_line.constData(), m_line.size());
                return true;
            }
        }
        return false;
    }

private:
    // One buffer serves all lines: memory for each, or for the text at once, would cost more
    // than the reading.
    void decode(const char *begin, const char *end)
    {
        m_line.resize(TextSize(end - begin));
        unsigned char bits = 0;
        std::transform(begin, end, m_line.begin(), [&bits](char c) {
            bits |= static_cast<unsigned char>(c);
            return char16_t(static_cast<unsigned char>(c));
        });
        if (bits >= 0x80) {
            decodeAll(begin, end);
        }
    }

    // Decodes a line that is not all ASCII.
    void decodeAll(const char *begin, const char *end)
    {
        QString text;
        if (begin == m_begin) {
            text = QString::fromUtf8(begin, TextSize(end - begin));
        } else {
            // With its line feed, so that a byte order mark at its start is text.
            text = QString::fromUtf8(begin - 1, TextSize(end - begin) + 1).mid(1);
        }
        m_line.resize(text.size());
        std::copy(text.utf16(), text.utf16() + text.size(), m_line.begin());
    }

    const char *m_begin;
    const char *m_at;
    const char *m_end;
    QVarLengthArray<char16_t, 512> m_line;
};

// Hands out the lines of a list; index is that of the next one.
class ListLines
{
public:
    ListLines(const QStringList &lines, unsigned int index) : m_lines(lines), m_index(index) {}

    bool take(QStringView &line)
    {
        const unsigned int index = m_index++;
        if (index >= unsigned(m_lines.size())) {
            return false;
        }
        line = m_lines.at(TextSize(index));
        return true;
    }
    unsigned int index() const { return m_index; }

private:
    const QStringList &m_lines;
    unsigned int m_index;
};

// The fields of an item whose type has that text.
std::shared_ptr<const FieldTable> fieldsOfType(QStringView type)
{
    unsigned int datatype = 0;
    readNumber(type, 16, datatype);
    return FieldTable::of(datatype);
}

// The fields that an element's content may have.
std::shared_ptr<const FieldTable> fieldsOf(const QDomElement &e)
{
    return e.tagName() == ITEM ? fieldsOfType(e.attribute(DATATYPE)) : nullptr;
}

// A part of a line, kept as positions: a line without a blank is cut where the one before it
// was.
struct Part
{
    int start = 0;
    int length = -1;  // negative until a line had a blank

    QStringView of(QStringView line) const
    {
        const auto from = qMin<qsizetype>(start, line.size());
        return line.mid(from, qMin<qsizetype>(length, line.size() - from));
    }
};

// An open element whose content is being read.
struct Level
{
    QDomElement element;  // null where the content is left out
    std::shared_ptr<const FieldTable> fields;  // of an item; null where fields are skipped
    Part tag;
    Part value;
};

enum Bracket { NoBracket, OpenItem, OpenList, Close };

Bracket bracketOf(QStringView tag)
{
    // A quick no for data tags: none ends in I or L.
    if (tag.size() != 2 || (tag.at(1) != QLatin1Char('I') && tag.at(1) != QLatin1Char('L'))) {
        return NoBracket;
    }
    if (tag == START_ITEM) {
        return OpenItem;
    }
    if (tag == START_LIST) {
        return OpenList;
    }
    return tag == END_ITEM || tag == END_LIST ? Close : NoBracket;
}

// Reads lines into the elements that they open. Items and lists may be nested without end:
// those below TQMAX_NESTING are read like all others, but build nothing.
template<typename Lines>
class Reader
{
public:
    Reader(Lines &lines, const QDomElement &root) : m_lines(lines), m_document(root.ownerDocument())
    {
        m_levels.push_back({ root, fieldsOf(root), {}, {} });
    }

    // False for an item of a type that is not converted: it has no content to be read.
    bool canRead() const
    {
        const Level &root = m_levels.front();
        return root.fields || root.element.tagName() != ITEM;
    }

    // True when a terminator ended the root, false when the lines did.
    bool read()
    {
        for (QStringView line; m_lines.take(line);) {
            line = line.trimmed();
            Level &level = m_levels.back();
            const qsizetype blank = indexOf(line, BLANK);
            if (blank >= 0) {
                level.tag = { 0, int(blank) };
                level.value = { int(blank) + 1, int(line.size() - blank) - 1 };
            } else if (level.tag.length < 0) {
                continue;
            }
            if (!readLine(level, level.tag.of(line), level.value.of(line))) {
                m_levels.pop_back();
                if (m_levels.empty()) {
                    return true;
                }
            }
        }
        return false;
    }

    // Levels left open below the root.
    size_t openLevels() const { return m_levels.size() - 1; }

private:
    // False when the line closes the level.
    bool readLine(Level &level, QStringView tag, QStringView value)
    {
        switch (bracketOf(tag)) {
        case Close:
            return false;
        case OpenItem:
            openItem(level, value);
            break;
        case OpenList:
            open(level, LIST, SIZE, value, nullptr);
            break;
        case NoBracket:
            readField(level, tag, value);
            break;
        }
        return true;
    }

    void readField(Level &level, QStringView tag, QStringView value)
    {
        unsigned int number = 0;
        if (!level.fields || level.element.isNull() || !readNumber(tag, 16, number)) {
            return;
        }
        const FieldTable::Field *field = level.fields->find(number);
        if (field) {
            TQXmlInternal::readField(field->shape, m_document, level.element, field->name, value);
        }
    }

    void openItem(Level &level, QStringView type)
    {
        std::shared_ptr<const FieldTable> fields = fieldsOfType(type);
        const bool isRead = fields != nullptr;
        open(level, ITEM, DATATYPE, type, std::move(fields));
        if (!isRead) {
            // Such an item has no content: the next line counts as its end, whatever it says.
            m_levels.pop_back();
            QStringView skipped;
            m_lines.take(skipped);
        }
    }

    void open(Level &level, const QString &name, const QString &attribute, QStringView value,
        std::shared_ptr<const FieldTable> fields)
    {
        QDomElement e;
        if (!level.element.isNull() && m_levels.size() <= size_t(TQMAX_NESTING)) {
            e = makeElement(m_document, name, attribute, value);
            level.element.appendChild(e);
        }
        m_levels.push_back({ e, std::move(fields), {}, {} });
    }

    Lines &m_lines;
    QDomDocument m_document;
    std::vector<Level> m_levels;  // from the root to what is open now
};

void writeContent(LineBuffer &out, const QDomNode &parent, const FieldTable *fields, int level);

void writeBracket(LineBuffer &out, const QString &word, QStringView value)
{
    append(out, word);
    out += BLANK;
    append(out, value);
    out += LINE_FEED;
}

// Writes an item or list with all below.
void writeBlock(LineBuffer &out, const QDomElement &e, bool isItem, int level)
{
    if (level > TQMAX_NESTING) {
        return;
    }
    if (isItem) {
        const QString type = e.attribute(DATATYPE);
        writeBracket(out, START_ITEM, type);
        if (const auto fields = fieldsOfType(type)) {
            writeContent(out, e, fields.get(), level);
        }
        writeBracket(out, END_ITEM, END_VALUE);
    } else {
        writeBracket(out, START_LIST, e.attribute(SIZE));
        writeContent(out, e, nullptr, level);
        writeBracket(out, END_LIST, END_VALUE);
    }
}

void writeField(
    LineBuffer &out, const QDomNode &node, const QString &name, const FieldTable &fields)
{
    unsigned int number = 0;
    const QStringView tag = tagIn(name);
    const FieldTable::Field *field = readNumber(tag, 16, number) ? fields.find(number) : nullptr;
    if (field) {
        writeField(out, field->shape, tag, node.toElement());
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

void readPacketText(QDomElement &parent, const char *text, size_t length)
{
    TextLines lines(text, length);
    Reader<TextLines> reader(lines, parent);
    if (reader.canRead()) {
        reader.read();
    }
}

unsigned int readPacketLines(QDomElement &parent, const QStringList &lines, unsigned int index)
{
    ListLines source(lines, index);
    Reader<ListLines> reader(source, parent);
    if (!reader.canRead()) {
        return index;
    }
    const bool terminated = reader.read();
    return source.index() - 1 + (terminated ? 0 : unsigned(reader.openLevels()));
}

void writePacketText(LineBuffer &out, const QDomElement &e)
{
    if (e.tagName() != ITEM) {
        writeContent(out, e, nullptr, 0);
    } else if (const auto fields = fieldsOfType(e.attribute(DATATYPE))) {
        writeContent(out, e, fields.get(), 0);
    }
}

}  // namespace TQXmlInternal

#ifndef TQXML_PACKETREADER_P_H
#define TQXML_PACKETREADER_P_H

#include "fields_p.h"
#include "qtcompat_p.h"
#include "text_p.h"
#include "vocabulary_p.h"

#include <QStringList>
#include <QVarLengthArray>

#include <algorithm>
#include <cstring>
#include <memory>
#include <vector>

// Reads packet text in steps; packettext.cpp describes the text. Callers turn the steps into
// elements or XML text, or compare them with those of another text.

namespace TQXmlInternal {

// The lines of a UTF-8 text, without empty ones. A line is valid until the next one is taken.
class Utf8Lines
{
public:
    Utf8Lines(const char *text, size_t length) : m_begin(text), m_at(text), m_end(text + length) {}

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
    // One buffer is used for all lines: allocating for each line, or for the whole text, would cost
    // more than the reading.
    void decode(const char *begin, const char *end)
    {
        m_line.resize(TextSize(end - begin));
        unsigned char allBits = 0;
        std::transform(begin, end, m_line.begin(), [&allBits](char c) {
            allBits |= static_cast<unsigned char>(c);
            return char16_t(static_cast<unsigned char>(c));
        });
        const bool isAscii = allBits < 0x80;
        if (!isAscii) {
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
            // Decoded with the line feed before it: only at the start of the text does a byte
            // order mark not count as text.
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

// The lines of a list, from an index on. At the end, index() is beyond the last line.
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

// The meaning of one line of packet text.
struct PacketStep
{
    enum Kind { OpenItem, OpenList, Close, AddField };

    Kind kind;
    const FieldTable::Field *field;  // of AddField
    // The field's value, the item's type or the list's size. Valid until the next step.
    QStringView value;
};

// Turns lines into steps. Each Close belongs to an OpenItem or OpenList before it, but not the
// other way round: the text may end early. No step is deeper than TQMAX_NESTING. Lines that cannot
// be converted give no step.
template<typename Lines>
class PacketReader
{
public:
    // `fields` are those of the element that the text belongs to; null if it can have none.
    PacketReader(Lines &lines, std::shared_ptr<const FieldTable> fields) : m_lines(lines)
    {
        m_levels.push_back({ std::move(fields), {}, {} });
    }

    // False at the end: there are no more lines, or a line closed the element that the text belongs
    // to. Items and lists that are still open then end there; no step closes them.
    bool next(PacketStep &step)
    {
        QStringView line;
        while (!m_levels.empty()) {
            const bool hasLine = m_lines.take(line);
            if (m_nextLineCloses) {
                m_nextLineCloses = false;
                if (close(step)) {
                    return true;
                }
            } else if (!hasLine) {
                return false;
            } else if (cut(line.trimmed()) && read(step)) {
                return true;
            }
        }
        return false;
    }

    // How many items and lists are still open at the end.
    unsigned int openLevels() const { return m_levels.empty() ? 0 : unsigned(m_levels.size()) - 1; }

private:
    // A part of a line as positions. A line without a blank is cut at the positions of the last
    // line of the same item or list that had one; writers never write such lines.
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

    // An item or list whose content is being read.
    struct Level
    {
        std::shared_ptr<const FieldTable> fields;  // of an item; null where there can be none
        Part tag;
        Part value;
    };

    enum LineKind { FieldLine, ItemBegins, ListBegins, BlockEnds };

    static LineKind kindOf(QStringView tag)
    {
        // Most lines are fields. Their tags are hexadecimal, so none ends in I or L.
        if (tag.size() != 2 || (tag.at(1) != QLatin1Char('I') && tag.at(1) != QLatin1Char('L'))) {
            return FieldLine;
        }
        if (tag == START_ITEM) {
            return ItemBegins;
        }
        if (tag == START_LIST) {
            return ListBegins;
        }
        return tag == END_ITEM || tag == END_LIST ? BlockEnds : FieldLine;
    }

    // Cuts the line into tag and value; false if that is not possible.
    bool cut(QStringView line)
    {
        Level &level = m_levels.back();
        const qsizetype blank = indexOf(line, BLANK);
        if (blank >= 0) {
            level.tag = { 0, int(blank) };
            level.value = { int(blank) + 1, int(line.size() - blank) - 1 };
        } else if (level.tag.length < 0) {
            return false;
        }
        m_tag = level.tag.of(line);
        m_value = level.value.of(line);
        return true;
    }

    // These return whether there is a step for the caller to see. A line that closes something
    // closes what was opened last, item or list.
    bool read(PacketStep &step)
    {
        switch (kindOf(m_tag)) {
        case BlockEnds:
            return close(step);
        case ItemBegins: {
            std::shared_ptr<const FieldTable> fields = fieldsOfType(m_value);
            // An item of a type that is not converted has no content: the next line, whatever it
            // is, counts as its end.
            m_nextLineCloses = !fields;
            return open(step, PacketStep::OpenItem, std::move(fields));
        }
        case ListBegins:
            return open(step, PacketStep::OpenList, nullptr);
        case FieldLine:
            break;
        }
        return addField(step);
    }

    bool open(PacketStep &step, PacketStep::Kind kind, std::shared_ptr<const FieldTable> fields)
    {
        m_levels.push_back({ std::move(fields), {}, {} });
        step = { kind, nullptr, m_value };
        return isWithinDepth();
    }

    bool close(PacketStep &step)
    {
        const bool isShown = isWithinDepth();
        m_levels.pop_back();
        step = { PacketStep::Close, nullptr, {} };
        return isShown && !m_levels.empty();
    }

    bool addField(PacketStep &step)
    {
        const Level &level = m_levels.back();
        unsigned int tag = 0;
        if (!level.fields || !isWithinDepth() || !readNumber(m_tag, 16, tag)) {
            return false;
        }
        const FieldTable::Field *field = level.fields->find(tag);
        step = { PacketStep::AddField, field, m_value };
        return field && field->form != NoForm;
    }

    bool isWithinDepth() const { return m_levels.size() <= size_t(TQMAX_NESTING) + 1; }

    Lines &m_lines;
    std::vector<Level> m_levels;  // from the element that the text belongs to, inwards
    QStringView m_tag;
    QStringView m_value;
    bool m_nextLineCloses = false;  // whatever it is; see read()
};

}  // namespace TQXmlInternal

#endif

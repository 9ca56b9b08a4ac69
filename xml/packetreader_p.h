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

// Reads packet text step by step; packettext.cpp describes the text. What the steps are for is
// the caller's affair: they become elements, XML text or one half of a comparison.

namespace TQXmlInternal {

// Hands out the lines of a UTF-8 text; empty ones do not count. A line is valid until the next.
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

// What one line of packet text does.
struct PacketStep
{
    enum Kind { OpenItem, OpenList, Close, AddField };

    Kind kind;
    const FieldTable::Field *field;  // of AddField
    QStringView value;  // the field's, the item's type or the list's size; until the next step
};

// Turns lines into steps that can be carried out as they come: each Close belongs to an OpenItem
// or OpenList, and no step lies deeper than TQMAX_NESTING. Lines that say nothing give none.
template<typename Lines>
class PacketReader
{
public:
    // The fields are those of the element that the text fills; null where it takes none.
    PacketReader(Lines &lines, std::shared_ptr<const FieldTable> fields) : m_lines(lines)
    {
        m_levels.push_back({ std::move(fields), {}, {} });
    }

    // False at the end: a line closed what was open first, or there are no more lines. What is
    // open then ends there, without a step.
    bool next(PacketStep &step)
    {
        QStringView line;
        while (!m_levels.empty()) {
            const bool hasLine = m_lines.take(line);
            if (m_closesAtOnce) {
                m_closesAtOnce = false;
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

    // What the end of the lines left open, without what the text fills.
    unsigned int openLevels() const { return m_levels.empty() ? 0 : unsigned(m_levels.size()) - 1; }

private:
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

    // An item or list whose content is being read.
    struct Level
    {
        std::shared_ptr<const FieldTable> fields;  // of an item; null where fields are skipped
        Part tag;
        Part value;
    };

    enum Bracket { NoBracket, ItemBegins, ListBegins, Ends };

    static Bracket bracketOf(QStringView tag)
    {
        // A quick no for data tags: none ends in I or L.
        if (tag.size() != 2 || (tag.at(1) != QLatin1Char('I') && tag.at(1) != QLatin1Char('L'))) {
            return NoBracket;
        }
        if (tag == START_ITEM) {
            return ItemBegins;
        }
        if (tag == START_LIST) {
            return ListBegins;
        }
        return tag == END_ITEM || tag == END_LIST ? Ends : NoBracket;
    }

    // Cuts the line into its tag and its value; false for a line that cannot be cut.
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

    // False when what was cut gives no step.
    bool read(PacketStep &step)
    {
        switch (bracketOf(m_tag)) {
        case Ends:
            return close(step);
        case ItemBegins: {
            std::shared_ptr<const FieldTable> fields = fieldsOfType(m_value);
            // An item of a type that is not converted has no content: the next line counts as its
            // end, whatever it says.
            m_closesAtOnce = !fields;
            return open(step, PacketStep::OpenItem, std::move(fields));
        }
        case ListBegins:
            return open(step, PacketStep::OpenList, nullptr);
        case NoBracket:
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
        return field && field->shape != NoShape;
    }

    bool isWithinDepth() const { return m_levels.size() <= size_t(TQMAX_NESTING) + 1; }

    Lines &m_lines;
    std::vector<Level> m_levels;  // from what the text fills to what is open now
    QStringView m_tag;
    QStringView m_value;
    bool m_closesAtOnce = false;  // what was opened last is not converted
};

}  // namespace TQXmlInternal

#endif

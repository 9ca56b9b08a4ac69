// Checks packet text, takes it apart and writes it. Text that is read may come from anywhere: an
// item keeps only what the checker has let through, and everybody else trusts what items keep.

#include "itemtext_p.h"

#include "elementcodes_p.h"
#include "storageclass_p.h"

#include <charconv>
#include <iterator>
#include <optional>

namespace TQServerInternal {

namespace {

constexpr std::string_view START_ITEM = "SI";
constexpr std::string_view END_ITEM = "TI";
constexpr std::string_view START_LIST = "SL";
constexpr std::string_view END_LIST = "TL";

// Takes the first line, without its line feed, off the text; none when no line feed is left.
std::optional<std::string_view> takeLine(std::string_view &text)
{
    const size_t end = text.find('\n');
    if (end == std::string_view::npos) {
        return {};
    }
    const std::string_view line = text.substr(0, end);
    text.remove_prefix(end + 1);
    return line;
}

// Appends a line and its line feed.
void appendLine(std::string &text, std::string_view line) { text.append(line).append(1, '\n'); }

// Checks packet text line by line. It has a stack of its own, so depth costs no recursion.
class Checker
{
public:
    explicit Checker(PACKETDATATYPES type) : m_type(type) {}

    std::optional<std::string> check(std::string_view text)
    {
        std::string kept;
        kept.reserve(text.size());
        while (!text.empty()) {
            const auto line = takeLine(text);
            const auto parts = line ? splitAtBlank(*line) : std::nullopt;
            m_isLost = false;
            if (!parts || !checkLine(parts->first, parts->second)) {
                return {};
            }
            if (!m_isLost) {
                appendLine(kept, *line);
            }
        }
        if (!m_found || m_depth > 0) {
            return {};
        }
        return kept;
    }

private:
    struct Level
    {
        bool isList;
        const StorageClass *fields;  // null for a list and for an item that must stay empty
        unsigned expected;  // items of a list
        unsigned items;
    };

    bool checkLine(std::string_view word, std::string_view value)
    {
        if (word == START_ITEM) {
            return startItem(value);
        }
        if (word == END_ITEM) {
            return value == "0" && close(false);
        }
        if (word == START_LIST) {
            return startList(value);
        }
        if (word == END_LIST) {
            return value == "0" && close(true);
        }
        return field(word, value);
    }

    bool field(std::string_view word, std::string_view value)
    {
        const StorageClass *fields = m_depth > 0 ? m_levels[m_depth - 1].fields : nullptr;
        const auto tag = fields ? readHex(word) : std::nullopt;
        const TQSTORAGEFIELD *known = tag ? fields->find(*tag) : nullptr;
        const bool isKnown = known && isValue(*known, value);
        m_isLost = isKnown && isLost(*known, value);
        return isKnown;
    }

    bool startItem(std::string_view value)
    {
        const auto type = readHex(value);
        if (!type || (m_depth == 0 && !m_found && *type != m_type)) {
            return false;
        }
        const auto known = static_cast<PACKETDATATYPES>(*type);
        const StorageClass *fields = storageClass(known);
        if (!fields && known != PACKETDATATYPE_UNCONVERTED) {
            return false;
        }
        if (m_depth == 0) {
            m_found = true;
        } else if (m_levels[m_depth - 1].isList) {
            ++m_levels[m_depth - 1].items;
        } else if (!m_levels[m_depth - 1].fields) {
            return false;
        }
        return open({ false, fields, 0, 0 });
    }

    // A list holds items only, so none lies directly in another.
    bool startList(std::string_view value)
    {
        const auto size = readHex(value);
        return size && (m_depth == 0 || m_levels[m_depth - 1].fields) &&
            open({ true, nullptr, *size, 0 });
    }

    bool open(const Level &level)
    {
        if (m_depth == TQMAX_NESTING) {
            return false;
        }
        m_levels[m_depth++] = level;
        return true;
    }

    bool close(bool isList)
    {
        if (m_depth == 0) {
            return false;
        }
        const Level &level = m_levels[--m_depth];
        return level.isList == isList && level.items == level.expected;
    }

    PACKETDATATYPES m_type;
    bool m_found = false;  // the item's own block
    bool m_isLost = false;  // the value of the line
    size_t m_depth = 0;
    Level m_levels[TQMAX_NESTING] = {};
};

// Follows the brackets of an item's text, to tell the item's own fields from those of other items.
class Walker
{
public:
    // Goes to the next line, which begins with that word; true for a field of the item itself.
    bool step(std::string_view word)
    {
        if (word == START_ITEM || word == START_LIST) {
            m_isOwn = m_isOwn || (m_depth == 0 && word == START_ITEM);
            ++m_depth;
            return false;
        }
        if (word == END_ITEM || word == END_LIST) {
            --m_depth;
            return false;
        }
        return m_isOwn && m_depth == 1;
    }
    // True from the last line of the item's own block on.
    bool done() const { return m_isOwn && m_depth == 0; }

private:
    int m_depth = 0;
    bool m_isOwn = false;  // the first item block outside any list has begun
};

}  // namespace

std::optional<std::string> checkItem(std::string_view text, PACKETDATATYPES type)
{
    return Checker(type).check(text);
}

std::string writeItem(PACKETDATATYPES type, std::string_view fieldLines)
{
    std::string text;
    text.reserve(fieldLines.size() + 24);
    text.append(START_ITEM).append(1, ' ').append(hexText(type)).append(1, '\n');
    text.append(fieldLines);
    text.append(END_ITEM).append(" 0\n");
    return text;
}

void forEachField(std::string_view text, const Visit &visit)
{
    Walker walker;
    for (auto line = takeLine(text); line; line = takeLine(text)) {
        const auto parts = splitAtBlank(*line);
        if (parts && walker.step(parts->first)) {
            visit(readHex(parts->first).value_or(0), parts->second);
        } else if (walker.done()) {
            return;
        }
    }
}

std::string withField(std::string_view text, unsigned tag, std::string_view value)
{
    std::string result;
    result.reserve(text.size() + value.size() + 16);
    Walker walker;
    bool isPut = false;
    while (const auto line = takeLine(text)) {
        const auto parts = splitAtBlank(*line);
        const bool isField = parts && walker.step(parts->first);
        const bool isReplaced = !isPut && isField && readHex(parts->first) == tag;
        if (!isPut && (isReplaced || walker.done())) {
            appendField(result, tag, value);
            isPut = true;
        }
        if (!isReplaced) {
            appendLine(result, *line);
        }
    }
    return result;
}

void appendField(std::string &text, unsigned tag, std::string_view value)
{
    text.append(hexText(tag)).append(1, ' ').append(value).append(1, '\n');
}

std::string hexText(unsigned value)
{
    char digits[8];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value, 16).ptr;
    return std::string(digits, end);
}

}  // namespace TQServerInternal

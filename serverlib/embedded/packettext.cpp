#include "packettext_p.h"

#include "elementcodes_p.h"
#include "storageclass_p.h"

#include <algorithm>
#include <charconv>
#include <iterator>
#include <optional>

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

// Checks packet text line by line; how deep it nests costs memory, not stack.
class Checker
{
public:
    explicit Checker(PACKETDATATYPES type) : m_type(type) {}

    std::optional<std::string> check(std::string_view text)
    {
        std::string kept;
        std::string_view from = text;  // not in kept yet
        while (!text.empty()) {
            const std::string_view before = text;
            const auto line = takeLine(text);
            const auto parts = line ? splitAtBlank(*line) : std::nullopt;
            m_isLost = false;
            if (!parts || !checkLine(parts->first, parts->second)) {
                return {};
            }
            if (m_isLost) {
                kept.append(from.substr(0, from.size() - before.size()));
                from = text;
            }
        }
        return m_found && m_depth == 0 ? std::make_optional(kept.append(from)) : std::nullopt;
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
        struct Bracket
        {
            std::string_view word;
            bool (Checker::*check)(std::string_view value);
        };
        static constexpr Bracket BRACKETS[] = {
            { START_ITEM, &Checker::startItem },
            { END_ITEM, &Checker::endItem },
            { START_LIST, &Checker::startList },
            { END_LIST, &Checker::endList },
        };
        const auto bracket = std::find_if(std::begin(BRACKETS), std::end(BRACKETS),
            [word](const Bracket &candidate) { return candidate.word == word; });
        return bracket == std::end(BRACKETS) ? field(word, value) : (this->*bracket->check)(value);
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

    bool endItem(std::string_view value) { return value == "0" && close(false); }

    // A list holds items only, so none lies directly in another.
    bool startList(std::string_view value)
    {
        const auto size = readHex(value);
        return size && (m_depth == 0 || m_levels[m_depth - 1].fields) &&
            open({ true, nullptr, *size, 0 });
    }

    bool endList(std::string_view value) { return value == "0" && close(true); }

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

// Whether a bracket's line is inside, on the edge of or outside the item's own block.
struct Walker
{
    int depth = 0;
    bool own = false;  // within the first item block outside any list

    // True for a line of one of the item's own fields.
    bool step(std::string_view word)
    {
        const bool starts = word == START_ITEM || word == START_LIST;
        if (starts) {
            own = own || (depth == 0 && word == START_ITEM);
            ++depth;
        } else if (word == END_ITEM || word == END_LIST) {
            --depth;
        } else {
            return own && depth == 1;
        }
        return false;
    }
    bool done() const { return own && depth == 0; }
};

}  // namespace

std::optional<std::string> PacketText::readItem(std::string_view text, PACKETDATATYPES type)
{
    return Checker(type).check(text);
}

std::string PacketText::makeItem(PACKETDATATYPES type, std::string_view fieldLines)
{
    std::string text;
    text.reserve(fieldLines.size() + 24);
    text.append(START_ITEM).append(1, ' ').append(hex(type)).append(1, '\n');
    text.append(fieldLines);
    text.append(END_ITEM).append(" 0\n");
    return text;
}

void PacketText::forEachField(std::string_view text, const Visit &visit)
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

std::string PacketText::withField(std::string_view text, unsigned tag, std::string_view value)
{
    Walker walker;
    std::string_view rest = text;
    for (std::string_view from = rest;; from = rest) {
        const auto line = takeLine(rest);
        const auto parts = line ? splitAtBlank(*line) : std::nullopt;
        const bool own = parts && walker.step(parts->first);
        const bool replaces = own && readHex(parts->first) == tag;
        if (!line || replaces || walker.done()) {
            std::string result;
            result.reserve(text.size() + value.size() + 16);
            result.append(text.substr(0, text.size() - from.size()));
            appendLine(result, tag, value);
            return result.append(replaces ? rest : from);
        }
    }
}

void PacketText::appendLine(std::string &text, unsigned tag, std::string_view value)
{
    text.append(hex(tag)).append(1, ' ').append(value).append(1, '\n');
}

std::string PacketText::hex(unsigned value)
{
    char digits[8];
    const auto end = std::to_chars(std::begin(digits), std::end(digits), value, 16).ptr;
    return std::string(digits, end);
}

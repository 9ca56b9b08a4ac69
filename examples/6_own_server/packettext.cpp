// Packet text: written from the values of a row, and checked and taken apart line by line.

#include "shop.h"

#include <charconv>

namespace {

struct Line
{
    std::string_view word;
    std::string_view value;
};

// Takes the first line off the text; none when it has no blank or no line feed.
std::optional<Line> takeLine(std::string_view &text)
{
    const size_t end = text.find('\n');
    const size_t blank = text.substr(0, end).find(' ');
    if (end == text.npos || blank == text.npos) {
        return {};
    }
    const Line line { text.substr(0, blank), text.substr(blank + 1, end - blank - 1) };
    text.remove_prefix(end + 1);
    return line;
}

std::optional<unsigned int> readHex(std::string_view text)
{
    unsigned int number = 0;
    const char *const end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, number, 16);
    return result.ec == std::errc() && result.ptr == end ? std::optional(number) : std::nullopt;
}

// What is open in packet text: 0 for a list, else the type of an item.
class Brackets
{
public:
    // Follows a line; false when it does not fit.
    bool step(const Line &line)
    {
        const auto number = readHex(line.value);
        if (line.word == "SI" || line.word == "SL") {
            open.push_back(line.word == "SI" ? number.value_or(0) : 0);
            return number && (line.word == "SL" || *number != 0);
        }
        if (line.word == "TI" || line.word == "TL") {
            const bool fits = !open.empty() && (open.back() == 0) == (line.word == "TL");
            open.resize(open.size() - (fits ? 1 : 0));
            return fits && line.value == "0";
        }
        const auto tag = readHex(line.word);
        return tag && !open.empty() && findField(PACKETDATATYPES(open.back()), *tag);
    }

    std::vector<unsigned int> open;
};

}  // namespace

std::string hex(unsigned int number)
{
    char digits[8];
    return { digits, std::to_chars(digits, digits + sizeof(digits), number, 16).ptr };
}

std::string writeItem(PACKETDATATYPES type, const std::vector<std::string> &values)
{
    std::string text = "SI " + hex(type) + '\n';
    const CONVERTSTRUCTELEMENTINFO *field = TQGetSystemStorageClassConv(type);
    for (const std::string &value : values) {
        if (!field || field->type == TQELEMENT_END) {
            break;
        }
        if (!value.empty()) {
            text += hex(field->tag) + ' ' + value + '\n';
        }
        ++field;
    }
    return text + "TI 0\n";
}

// Left out here: the forms of values and the sizes of lists.
bool isItem(std::string_view text, PACKETDATATYPES type)
{
    Brackets brackets;
    bool isFound = false;
    while (!text.empty()) {
        const bool isOutside = brackets.open.empty();
        const auto line = takeLine(text);
        if (!line || !brackets.step(*line)) {
            return false;
        }
        if (isOutside && !isFound && line->word == "SI") {
            isFound = true;
            if (brackets.open.back() != type) {
                return false;
            }
        }
    }
    return isFound && brackets.open.empty();
}

std::vector<Field> fieldsOf(std::string_view text)
{
    std::vector<Field> fields;
    Brackets brackets;
    bool isFound = false;  // the item's own block
    while (const auto line = takeLine(text)) {
        isFound = isFound || (brackets.open.empty() && line->word == "SI");
        brackets.step(*line);
        if (isFound && brackets.open.empty()) {
            break;
        }
        const auto tag = readHex(line->word);
        if (isFound && brackets.open.size() == 1 && tag) {
            fields.push_back({ *tag, line->value });
        }
    }
    return fields;
}

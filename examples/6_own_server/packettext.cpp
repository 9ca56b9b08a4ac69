// Packet text: writes that of a row, checks that of others, and takes it apart. tqpacketable.h
// describes it.

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

// The items and lists that have begun in packet text and not ended. It is a stack and no recursion,
// because text from elsewhere may be as deep as it likes.
class Brackets
{
public:
    // Goes to the next line; false when it must not stand there.
    bool step(const Line &line)
    {
        const auto number = readHex(line.value);
        if (line.word == "SI") {
            open.push_back(number.value_or(0));
            return number.value_or(0) != 0;
        }
        if (line.word == "SL") {
            open.push_back(0);
            return number.has_value();
        }
        if (line.word == "TI" || line.word == "TL") {
            const bool isList = line.word == "TL";
            if (open.empty() || isList != (open.back() == 0)) {
                return false;
            }
            open.pop_back();
            return line.value == "0";
        }
        const auto tag = readHex(line.word);
        return tag && !open.empty() && findField(PACKETDATATYPES(open.back()), *tag);
    }

    std::vector<unsigned int> open;  // the type of an item, 0 for a list
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
    bool isFound = false;  // the item's own block
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
        if (brackets.open.empty() && line->word == "SI") {
            isFound = true;
        }
        brackets.step(*line);
        if (isFound && brackets.open.empty()) {
            break;  // the end of that block
        }
        const auto tag = readHex(line->word);
        if (isFound && brackets.open.size() == 1 && tag) {
            fields.push_back({ *tag, line->value });
        }
    }
    return fields;
}

// Element type codes: which form the value of a field has in packet text, and whether a text has
// that form. One row for each code, one check for each form.

#include "elementcodes_p.h"

#include "tqregistry.h"
#include "tqstorageclass.h"

#include <QString>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <iterator>

namespace TQServerInternal {

namespace {

// The form of each code. Codes that are not here have none.
struct Meaning
{
    TQELEMENTTYPE code;
    Form form;
};
constexpr Meaning MEANINGS[] = {
    { TQELEMENT_TEXT, Form::Text },
    { TQELEMENT_IDENTIFIER, Form::Text },
    { TQELEMENT_WORD, Form::Text },
    { TQELEMENT_DATE, Form::Text },
    { TQELEMENT_INTEGER8, Form::Integer },
    { TQELEMENT_INTEGER2, Form::Integer },
    { TQELEMENT_INTEGER1, Form::Integer },
    { TQELEMENT_NUMBER, Form::Real },
    { TQELEMENT_NAME, Form::Text },
    { TQELEMENT_LENGTH, Form::Real },
    { TQELEMENT_TOKEN, Form::Text },
    { TQELEMENT_INTEGER, Form::Integer },
    { TQELEMENT_KEY, Form::Key },
    { TQELEMENT_NUMBERS, Form::RealArray },
    { TQELEMENT_INTEGERS, Form::IntegerArray },
    { TQELEMENT_INTEGERS8, Form::IntegerArray },
    { TQELEMENT_INTEGERS2, Form::IntegerArray },
    { TQELEMENT_INTEGERS1, Form::IntegerArray },
    { TQELEMENT_CHOICE, Form::Integer },
    { TQELEMENT_BITS, Form::Integer },
    { TQELEMENT_TEXTS, Form::StringArray },
    { TQELEMENT_BYTES, Form::Binary },
    { TQELEMENT_DATETIME, Form::Text },
    { TQELEMENT_REMARK, Form::Text },
    { TQELEMENT_LENGTHS, Form::RealArray },
    { TQELEMENT_PATH, Form::Text },
    { TQELEMENT_INTEGER4, Form::Integer },
    { TQELEMENT_BITSETS, Form::IntegerArray },
    { TQELEMENT_INTEGERS4, Form::IntegerArray },
};

constexpr auto FORMS = [] {
    std::array<Form, TQELEMENT_INTEGERS4 + 1> forms {};
    for (const Meaning &meaning : MEANINGS) {
        forms[meaning.code] = meaning.form;
    }
    return forms;
}();

template<typename T>
std::optional<T> readWhole(std::string_view text, int base)
{
    T value = 0;
    const char *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value, base);
    if (result.ec != std::errc() || result.ptr != end) {
        return {};
    }
    return value;
}

bool isText(std::string_view text, unsigned) { return !text.empty(); }

// From the smallest signed to the largest unsigned number of that many bytes.
bool isInteger(std::string_view text, unsigned width)
{
    const bool isNegative = !text.empty() && text.front() == '-';
    const auto value = readWhole<std::uint64_t>(text.substr(isNegative ? 1 : 0), 10);
    const unsigned bits = width >= 1 && width <= 8 ? 8 * width : 64;
    const std::uint64_t lowest = std::uint64_t(1) << (bits - 1);  // without its sign
    const std::uint64_t highest = lowest - 1 + lowest;
    return value && *value <= (isNegative ? lowest : highest);
}

bool isReal(std::string_view text, unsigned)
{
    double value = 0;
    const char *end = text.data() + text.size();
    const auto result = std::from_chars(text.data(), end, value);
    return result.ec == std::errc() && result.ptr == end && std::isfinite(value);
}

bool isKey(std::string_view text, unsigned)
{
    const auto words = splitAtBlank(text);
    return words && readHex(words->first) && readHex(words->second);
}

// A count as it is written: lower-case, without leading zeros.
std::optional<unsigned> readCount(std::string_view text)
{
    const bool hasLeadingZero = text.size() > 1 && text.front() == '0';
    const bool hasUpperCase = text.find_first_of("ABCDEF") != std::string_view::npos;
    return hasLeadingZero || hasUpperCase ? std::nullopt : readHex(text);
}

// Count, blank and that many entries with separators between them.
template<typename IsEntry>
bool isArray(std::string_view text, char separator, IsEntry isEntry)
{
    const auto parts = splitAtBlank(text);
    const auto count = parts ? readCount(parts->first) : std::nullopt;
    if (!count) {
        return false;
    }
    std::string_view rest = parts->second;
    if (*count == 0) {
        return rest.empty();
    }
    unsigned entries = 1;
    for (size_t end = rest.find(separator); end != std::string_view::npos;
         end = rest.find(separator)) {
        if (!isEntry(rest.substr(0, end))) {
            return false;
        }
        rest.remove_prefix(end + 1);
        ++entries;
    }
    return isEntry(rest) && entries == *count;
}

bool isIntegerArray(std::string_view text, unsigned width)
{
    return isArray(text, ' ', [width](std::string_view entry) { return isInteger(entry, width); });
}

bool isRealArray(std::string_view text, unsigned width)
{
    return isArray(text, ' ', [width](std::string_view entry) { return isReal(entry, width); });
}

bool isStringArray(std::string_view text, unsigned)
{
    return isArray(text, '\r', [](std::string_view) { return true; });
}

// The last digit of base64 before that many "=" has bits that no byte fills; they are zero.
bool isClosed(char digit, size_t padding)
{
    constexpr std::string_view LAST_BEFORE_ONE = "AEIMQUYcgkosw048";
    constexpr std::string_view LAST_BEFORE_TWO = "AQgw";
    switch (padding) {
    case 1:
        return LAST_BEFORE_ONE.find(digit) != std::string_view::npos;
    case 2:
        return LAST_BEFORE_TWO.find(digit) != std::string_view::npos;
    default:
        return true;
    }
}

bool isBase64Digit(char c)
{
    return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '+' ||
        c == '/';
}

// Size, blank, and that many bytes in base64: four digits for three bytes, the last ones padded.
bool isBinary(std::string_view text, unsigned)
{
    const auto parts = splitAtBlank(text);
    const auto size = parts ? readHex(parts->first) : std::nullopt;
    if (!size) {
        return false;
    }
    const std::string_view data = parts->second;
    const std::uint64_t groups = (std::uint64_t(*size) + 2) / 3;
    if (data.size() != 4 * groups) {
        return false;
    }
    const size_t padding = 3 * groups - *size;
    const std::string_view digits = data.substr(0, data.size() - padding);
    return std::all_of(digits.begin(), digits.end(), isBase64Digit) &&
        data.substr(digits.size()) == std::string_view("==").substr(0, padding) &&
        (digits.empty() || isClosed(digits.back(), padding));
}

// Whether all of the text is white space of Unicode's; any visible ASCII character decides at once.
bool isBlank(std::string_view text)
{
    const bool isVisible =
        std::any_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f'; });
    return !isVisible && QString::fromUtf8(text.data(), int(text.size())).trimmed().isEmpty();
}

// Whether one of the texts between carriage returns is empty; a blank last one reads as empty.
bool hasEmptyText(std::string_view texts)
{
    const size_t last = texts.rfind('\r');
    const bool isOneText = last == std::string_view::npos;
    return isBlank(isOneText ? texts : texts.substr(last + 1)) || texts.front() == '\r' ||
        texts.find("\r\r") != std::string_view::npos;
}

bool isNothing(std::string_view, unsigned) { return false; }

using Check = bool (*)(std::string_view text, unsigned width);
constexpr Check CHECKS[] = { isNothing, isText, isInteger, isReal, isKey, isIntegerArray,
    isRealArray, isStringArray, isBinary };
static_assert(std::size(CHECKS) == size_t(Form::Count), "one check per form");

}  // namespace

Form formOf(unsigned code) { return code < std::size(FORMS) ? FORMS[code] : Form::None; }

std::optional<unsigned> readHex(std::string_view text) { return readWhole<unsigned>(text, 16); }

std::optional<Halves> splitAtBlank(std::string_view text)
{
    const size_t blank = text.find(' ');
    if (blank == std::string_view::npos) {
        return {};
    }
    return Halves { text.substr(0, blank), text.substr(blank + 1) };
}

bool isValue(const TQSTORAGEFIELD &field, std::string_view text)
{
    return CHECKS[size_t(formOf(field.type))](text, field.width);
}

bool isLost(const TQSTORAGEFIELD &field, std::string_view value)
{
    switch (formOf(field.type)) {
    case Form::Text:
        return isBlank(value);
    case Form::StringArray:
        return value != "0 " && hasEmptyText(splitAtBlank(value)->second);
    case Form::Binary:
        return splitAtBlank(value)->second.empty();
    default:
        return false;
    }
}

}  // namespace TQServerInternal

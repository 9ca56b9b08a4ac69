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

// What each element type code makes of its value. Codes that are not here have no text form.
struct Meaning
{
    TQELEMENTTYPE code;
    Family family;
};
constexpr Meaning MEANINGS[] = {
    { TQELEMENT_TEXT, Family::Text },
    { TQELEMENT_IDENTIFIER, Family::Text },
    { TQELEMENT_WORD, Family::Text },
    { TQELEMENT_DATE, Family::Text },
    { TQELEMENT_INTEGER8, Family::Integer },
    { TQELEMENT_INTEGER2, Family::Integer },
    { TQELEMENT_INTEGER1, Family::Integer },
    { TQELEMENT_NUMBER, Family::Real },
    { TQELEMENT_NAME, Family::Text },
    { TQELEMENT_LENGTH, Family::Real },
    { TQELEMENT_TOKEN, Family::Text },
    { TQELEMENT_INTEGER, Family::Integer },
    { TQELEMENT_KEY, Family::Key },
    { TQELEMENT_NUMBERS, Family::RealArray },
    { TQELEMENT_INTEGERS, Family::IntegerArray },
    { TQELEMENT_INTEGERS8, Family::IntegerArray },
    { TQELEMENT_INTEGERS2, Family::IntegerArray },
    { TQELEMENT_INTEGERS1, Family::IntegerArray },
    { TQELEMENT_CHOICE, Family::Integer },
    { TQELEMENT_BITS, Family::Integer },
    { TQELEMENT_TEXTS, Family::StringArray },
    { TQELEMENT_BYTES, Family::Binary },
    { TQELEMENT_DATETIME, Family::Text },
    { TQELEMENT_REMARK, Family::Text },
    { TQELEMENT_LENGTHS, Family::RealArray },
    { TQELEMENT_PATH, Family::Text },
    { TQELEMENT_INTEGER4, Family::Integer },
    { TQELEMENT_BITSETS, Family::IntegerArray },
    { TQELEMENT_INTEGERS4, Family::IntegerArray },
};

constexpr auto FAMILIES = [] {
    std::array<Family, TQELEMENT_INTEGERS4 + 1> families {};
    for (const Meaning &meaning : MEANINGS) {
        families[meaning.code] = meaning.family;
    }
    return families;
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
    const bool negative = !text.empty() && text.front() == '-';
    const auto value = readWhole<std::uint64_t>(text.substr(negative ? 1 : 0), 10);
    const unsigned bits = width >= 1 && width <= 8 ? 8 * width : 64;
    const std::uint64_t half = std::uint64_t(1) << (bits - 1);
    return value && *value <= (negative ? half : half - 1 + half);
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

// The count as it is written: lower-case, without leading zeros.
std::optional<unsigned> readCount(std::string_view text)
{
    const bool plain = text == "0" ||
        (!text.empty() && text.front() != '0' &&
            text.find_first_of("ABCDEF") == std::string_view::npos);
    return plain ? readHex(text) : std::nullopt;
}

// Count, blank and that many entries between separators.
template<typename IsEntry>
bool isArray(std::string_view text, char separator, IsEntry isEntry)
{
    const auto parts = splitAtBlank(text);
    const auto count = parts ? readCount(parts->first) : std::nullopt;
    if (!count || *count == 0) {
        return count && parts->second.empty();
    }
    std::string_view rest = parts->second;
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

bool isBinary(std::string_view text, unsigned)
{
    constexpr std::string_view ALPHABET =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    const auto parts = splitAtBlank(text);
    const auto size = parts ? readHex(parts->first) : std::nullopt;
    if (!size || parts->second.size() != (std::uint64_t(*size) + 2) / 3 * 4) {
        return false;
    }
    const size_t padding = (3 - *size % 3) % 3;
    const std::string_view data = parts->second;
    const size_t used = data.size() - padding;
    constexpr auto isDigit = [](char c) {
        return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') ||
            c == '+' || c == '/';
    };
    for (size_t i = 0; i < used; ++i) {
        if (!isDigit(data[i])) {
            return false;
        }
    }
    // Bits of the last digit beyond the size are zero.
    const unsigned spare = padding == 2 ? 0xf : padding == 1 ? 0x3 : 0;
    return data.substr(used) == std::string_view("==").substr(0, padding) &&
        (used == 0 || (ALPHABET.find(data[used - 1]) & spare) == 0);
}

bool isBlank(std::string_view text)
{
    const bool isClear =
        std::any_of(text.begin(), text.end(), [](char c) { return c > ' ' && c < '\x7f'; });
    return !isClear && QString::fromUtf8(text.data(), int(text.size())).trimmed().isEmpty();
}

bool isNothing(std::string_view, unsigned) { return false; }

using Check = bool (*)(std::string_view text, unsigned width);
constexpr Check CHECKS[] = { isNothing, isText, isInteger, isReal, isKey, isIntegerArray,
    isRealArray, isStringArray, isBinary };
static_assert(std::size(CHECKS) == size_t(Family::Count), "one check per family");

}  // namespace

Family familyOf(unsigned code)
{
    return code < std::size(FAMILIES) ? FAMILIES[code] : Family::None;
}

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
    return CHECKS[size_t(familyOf(field.type))](text, field.width);
}

bool isLost(const TQSTORAGEFIELD &field, std::string_view value)
{
    const Family family = familyOf(field.type);
    if (family == Family::Text) {
        return isBlank(value);
    }
    if (family != Family::StringArray && family != Family::Binary) {
        return false;
    }
    const std::string_view entries = splitAtBlank(value)->second;
    if (family == Family::Binary) {
        return entries.empty();
    }
    const size_t last = entries.rfind('\r') + 1;  // 0 without any
    return value != "0 " &&
        (isBlank(entries.substr(last)) || entries.front() == '\r' ||
            entries.find("\r\r") != std::string_view::npos);
}

}  // namespace TQServerInternal

#ifndef ELEMENTCODES_P_H
#define ELEMENTCODES_P_H

#include <optional>
#include <string_view>

struct TQSTORAGEFIELD;

namespace TQServerInternal {

// What a field's element type code makes of its value in packet text.
enum class Family {
    None,  // no text form: never written, refused when read
    Text,
    Integer,  // decimal, in the range of the field's width, signed or unsigned
    Real,  // decimal
    Key,  // two hexadecimal words
    IntegerArray,
    RealArray,
    StringArray,
    Binary,  // size in bytes, hexadecimal, and the data in base64
    Count
};

Family familyOf(unsigned code);

// A hexadecimal number of 32 bits without prefix; none when the text is anything else.
std::optional<unsigned> readHex(std::string_view text);

// Text before and after the first blank; none without a blank.
struct Halves
{
    std::string_view first;
    std::string_view second;
};
std::optional<Halves> splitAtBlank(std::string_view text);

// True when the text is a value that packet text can hold for the field.
bool isValue(const TQSTORAGEFIELD &field, std::string_view text);

// True for a value that says nothing, or not what it seems to, to those who read packet text as
// words between white space: blank text, bytes of no size, texts of which one is empty.
bool isLost(const TQSTORAGEFIELD &field, std::string_view value);

}  // namespace TQServerInternal

#endif

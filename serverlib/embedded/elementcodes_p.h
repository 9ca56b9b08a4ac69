#ifndef ELEMENTCODES_P_H
#define ELEMENTCODES_P_H

#include <optional>
#include <string_view>

struct TQSTORAGEFIELD;

namespace TQServerInternal {

// The form of a value in packet text. Each element type code has one; tqpacketable.h describes
// them.
enum class Form {
    None,  // not in packet text: never written, refused when read
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

// None for a code that is not known.
Form formOf(unsigned code);

// A hexadecimal number of 32 bits without prefix; none when the text is anything else.
std::optional<unsigned> readHex(std::string_view text);

// Text before and after the first blank; none without a blank.
struct Halves
{
    std::string_view first;
    std::string_view second;
};
std::optional<Halves> splitAtBlank(std::string_view text);

// True when the text is a value of the field's form.
bool isValue(const TQSTORAGEFIELD &field, std::string_view text);

// True for a value of the field's form that would not survive a round trip through libtqxml, which
// ignores white space at the ends: blank text, bytes without any byte, texts of which one is empty.
bool isLost(const TQSTORAGEFIELD &field, std::string_view value);

}  // namespace TQServerInternal

#endif

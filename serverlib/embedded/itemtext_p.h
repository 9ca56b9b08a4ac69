#ifndef ITEMTEXT_P_H
#define ITEMTEXT_P_H

#include "tqtypes.h"

#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace TQServerInternal {

// The packet text of items, whose grammar is described in tqpacketable.h.

// The text without the lines of values that would be lost on the way to a reader; none when it is
// not well-formed, or its first item block outside any list is not of that type. Further blocks may
// follow.
std::optional<std::string> checkItem(std::string_view text, PACKETDATATYPES type);

// The block of an item with those field lines.
std::string writeItem(PACKETDATATYPES type, std::string_view fieldLines);

// Calls visit for each field of the item itself (not of those nested in it), in order. The text
// must be an item's.
using Visit = std::function<void(unsigned tag, std::string_view value)>;
void forEachField(std::string_view text, const Visit &visit);

// The text with one field's line put in place of the first with that tag, or after the last one.
std::string withField(std::string_view text, unsigned tag, std::string_view value);

// Appends a field's line: "tag value" and a line feed.
void appendField(std::string &text, unsigned tag, std::string_view value);

// Lower-case hexadecimal without prefix or padding.
std::string hexText(unsigned value);

}  // namespace TQServerInternal

#endif

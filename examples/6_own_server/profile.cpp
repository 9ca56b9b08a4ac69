// ICC profiles, whose bytes stay in the shop until somebody wants them.

#include "shop.h"

#include <algorithm>
#include <tqitems.h>

namespace {

// Four digits for each three bytes; "=" in place of digits that the last bytes do not need.
std::string base64(const std::string &bytes)
{
    constexpr char DIGITS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        std::string three = bytes.substr(i, 3);
        const size_t digits = three.size() + 1;
        three.resize(3);
        unsigned int group = 0;
        for (const char byte : three) {
            group = group << 8 | static_cast<unsigned char>(byte);
        }
        for (size_t k = 0; k < 4; ++k) {
            text += k < digits ? DIGITS[group >> (18 - 6 * k) & 63] : '=';
        }
    }
    return text;
}

}  // namespace

void ICCPROFILEDATA_CC::load(std::string &, unsigned short port)
{
    Shop *const shop = Shop::find(port);
    const auto rows = shop ? shop->rows(datatype) : std::nullopt;
    if (!rows) {
        return;
    }
    const bool isByKey = TQKEY_CC::isValid(dbkey);
    const auto row = std::find_if(rows->begin(), rows->end(), [&](const Row &candidate) {
        if (isByKey) {
            return candidate.key.key == dbkey.key;
        }
        return name && candidate.name == name;
    });
    if (row == rows->end()) {
        return;
    }
    const auto bytes = shop->bytes(row->values.at(0));
    if (bytes) {
        const std::string value = hex(unsigned(bytes->size())) + ' ' + base64(*bytes);
        std::string text = writeItem(datatype, { row->values.at(0), value });
        fromPacket(text.data(), unsigned(text.size()), false, true);
    }
}

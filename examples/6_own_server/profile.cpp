// ICC profiles, whose bytes stay in the shop until somebody wants them.

#include "shop.h"

#include <algorithm>
#include <tqitems.h>

namespace {

std::string base64(const std::string &bytes)
{
    constexpr char DIGITS[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        unsigned int group = 0;
        for (size_t k = i; k < i + 3; ++k) {
            group = group << 8 | (k < bytes.size() ? static_cast<unsigned char>(bytes[k]) : 0);
        }
        for (size_t k = 0; k < 4; ++k) {
            text += i + k > bytes.size() ? '=' : DIGITS[group >> (18 - 6 * k) & 63];
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
        return isByKey ? candidate.key.key == dbkey.key : name && candidate.name == name;
    });
    const auto bytes = row != rows->end() ? shop->bytes(row->values.at(0)) : std::nullopt;
    if (bytes) {
        const std::string value = hex(unsigned(bytes->size())) + ' ' + base64(*bytes);
        std::string text = writeItem(datatype, { row->values.at(0), value });
        fromPacket(text.data(), unsigned(text.size()), false, true);
    }
}

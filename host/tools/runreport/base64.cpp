// Three bytes make four characters; "=" fills up the last four.

#include "base64.h"

namespace runreport {

std::string base64(const std::vector<uint8_t>& bytes) {
    static constexpr char kDigits[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
    std::string text;
    text.reserve((bytes.size() + 2) / 3 * 4);
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const size_t count = bytes.size() - i;
        const uint32_t group = static_cast<uint32_t>(bytes[i]) << 16 |
                               (count > 1 ? static_cast<uint32_t>(bytes[i + 1]) << 8 : 0) |
                               (count > 2 ? bytes[i + 2] : 0);
        text += kDigits[group >> 18];
        text += kDigits[group >> 12 & 63];
        text += count > 1 ? kDigits[group >> 6 & 63] : '=';
        text += count > 2 ? kDigits[group & 63] : '=';
    }
    return text;
}

}  // namespace runreport

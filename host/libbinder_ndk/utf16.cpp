// UTF-8 to UTF-16 and back.
#include "utf16.h"

#include <cstring>

namespace hostbinder {

namespace {

// Bytes of the sequence that begins with `lead`, 0 if none does.
size_t sequenceLength(uint8_t lead) {
    if (lead < 0x80) return 1;
    if (lead >= 0xc2 && lead < 0xe0) return 2;
    if (lead >= 0xe0 && lead < 0xf0) return 3;
    if (lead >= 0xf0 && lead < 0xf5) return 4;
    return 0;
}

bool decode(const char* bytes, size_t count, uint32_t* codePoint) {
    static constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
    uint32_t value = static_cast<uint8_t>(bytes[0]);
    if (count > 1) value &= 0x7fu >> count;
    for (size_t i = 1; i < count; ++i) {
        const uint8_t next = static_cast<uint8_t>(bytes[i]);
        if ((next & 0xc0) != 0x80) return false;
        value = value << 6 | (next & 0x3f);
    }
    *codePoint = value;
    return value >= kSmallest[count] && value <= 0x10ffff;
}

void encode(uint32_t c, std::string* utf8) {
    if (c < 0x80) {
        utf8->push_back(static_cast<char>(c));
        return;
    }
    if (c < 0x800) {
        utf8->push_back(static_cast<char>(0xc0 | c >> 6));
    } else {
        if (c < 0x10000) {
            utf8->push_back(static_cast<char>(0xe0 | c >> 12));
        } else {
            utf8->push_back(static_cast<char>(0xf0 | c >> 18));
            utf8->push_back(static_cast<char>(0x80 | (c >> 12 & 0x3f)));
        }
        utf8->push_back(static_cast<char>(0x80 | (c >> 6 & 0x3f)));
    }
    utf8->push_back(static_cast<char>(0x80 | (c & 0x3f)));
}

uint16_t unitAt(const uint8_t* utf16, size_t index) {
    uint16_t unit;
    memcpy(&unit, utf16 + index * sizeof(unit), sizeof(unit));
    return unit;
}

}  // namespace

bool utf8ToUtf16(const char* utf8, size_t length, std::u16string* utf16) {
    utf16->clear();
    utf16->reserve(length);
    for (size_t i = 0; i < length;) {
        const size_t count = sequenceLength(static_cast<uint8_t>(utf8[i]));
        uint32_t c = 0;
        if (count == 0 || count > length - i || !decode(utf8 + i, count, &c)) return false;
        if (c < 0x10000) {
            utf16->push_back(static_cast<char16_t>(c));
        } else {
            utf16->push_back(static_cast<char16_t>(0xd800 + ((c - 0x10000) >> 10)));
            utf16->push_back(static_cast<char16_t>(0xdc00 + ((c - 0x10000) & 0x3ff)));
        }
        i += count;
    }
    return true;
}

std::string utf16ToUtf8(const uint8_t* utf16, size_t units) {
    std::string utf8;
    utf8.reserve(units);
    for (size_t i = 0; i < units; ++i) {
        uint32_t c = unitAt(utf16, i);
        if (c >= 0xd800 && c < 0xdc00 && i + 1 < units) {
            const uint32_t low = unitAt(utf16, i + 1);
            if (low >= 0xdc00 && low < 0xe000) {
                c = 0x10000 + ((c - 0xd800) << 10) + (low - 0xdc00);
                ++i;
            }
        }
        encode(c, &utf8);
    }
    return utf8;
}

}  // namespace hostbinder

// Bytes as a test writes them down.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// A word of four bytes at a time: "01000000 ff000000".
inline std::string ToHex(const Bytes& bytes) {
    static const char kDigits[] = "0123456789abcdef";
    std::string text;
    for (size_t i = 0; i < bytes.size(); i++) {
        text += i % 4 == 0 && i != 0 ? " " : "";
        text += kDigits[bytes[i] >> 4];
        text += kDigits[bytes[i] & 15];
    }
    return text;
}

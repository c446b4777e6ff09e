// Bytes as a test writes them down.
#pragma once

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

using Bytes = std::vector<uint8_t>;

// "01 00" or "0100": two digits a byte; blanks are skipped.
inline Bytes Hex(const std::string& text) {
    std::string digits = text;
    digits.erase(std::remove(digits.begin(), digits.end(), ' '), digits.end());
    Bytes bytes;
    for (size_t i = 0; i < digits.size(); i += 2) {
        bytes.push_back(static_cast<uint8_t>(std::stoul(digits.substr(i, 2), nullptr, 16)));
    }
    return bytes;
}

// The other way, a word of four bytes at a time: what a failed comparison shows.
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

// Conversion between UTF-8, which programs use, and UTF-16, which parcels hold.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace hostbinder {

// False if the bytes are not UTF-8 (lone surrogates in three bytes are let through).
bool utf8ToUtf16(const char* utf8, size_t length, std::u16string* utf16);

// utf16 is little endian, at any alignment. Lone surrogates become three bytes each.
std::string utf16ToUtf8(const uint8_t* utf16, size_t units);

}  // namespace hostbinder

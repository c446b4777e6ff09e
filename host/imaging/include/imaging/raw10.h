// Packed RAW10: four pixels in five bytes. Bytes 0..3 hold bits 9..2 of pixels 0..3; byte 4 holds
// their bits 1..0, pixel 0 in the two lowest bits, pixel 3 in the two highest.
#pragma once

#include <cstddef>
#include <cstdint>

namespace imaging {

inline constexpr uint32_t kRaw10PixelsPerGroup = 4;
inline constexpr uint32_t kRaw10BytesPerGroup = 5;

// Bytes of one row without padding; `width` is a multiple of 4.
inline constexpr size_t Raw10RowBytes(uint32_t width) {
    return static_cast<size_t>(width / kRaw10PixelsPerGroup) * kRaw10BytesPerGroup;
}

// Reads one row: `width` pixels (a multiple of 4) of 0..1023 from Raw10RowBytes(width) bytes.
void UnpackRaw10Row(const uint8_t* packed, uint32_t width, uint16_t* pixels);

// Writes one row; the reverse of UnpackRaw10Row. Bits above the lower ten are ignored.
void PackRaw10Row(const uint16_t* pixels, uint32_t width, uint8_t* packed);

}  // namespace imaging

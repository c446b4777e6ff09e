// RAW10 rows (format: imaging/raw10.h), eight pixels at a time.
#pragma once

#include <imaging/raw10.h>

#include <algorithm>

#include "../pixel_vector.h"

namespace imaging {

/** Eight pixels lie in ten bytes; a vector of 16 reads or writes six more. */
inline constexpr size_t kRaw10VectorBytes = 2 * kRaw10BytesPerGroup;

using Raw10Bytes = uint8_t __attribute__((vector_size(16)));
using EightBytes = uint8_t __attribute__((vector_size(8)));
using EightPixels = uint16_t __attribute__((vector_size(16)));

IMAGING_INLINE EightPixels UnpackEight(const Raw10Bytes& bytes) {
    const auto high = __builtin_shufflevector(bytes, bytes, 0, 1, 2, 3, 5, 6, 7, 8);
    const auto rests = __builtin_shufflevector(bytes, bytes, 4, 4, 4, 4, 9, 9, 9, 9);
    // Pixel i's two bits are bits 2i and 2i + 1 of the rest: the factor moves them to 6 and 7.
    const EightPixels factor = {64, 16, 4, 1, 64, 16, 4, 1};
    const EightPixels low = (Convert<EightPixels>(rests) * factor >> 6) & 3;
    return Convert<EightPixels>(high) << 2 | low;
}

/** Ten bytes, then six that mean nothing. */
IMAGING_INLINE Raw10Bytes PackEight(const EightPixels& pixels) {
    const auto high = Convert<EightBytes>(pixels >> 2);
    const EightPixels factor = {1, 4, 16, 64, 1, 4, 16, 64};
    const auto low = Convert<EightBytes>((pixels & 3) * factor);
    const EightBytes pairs = low | __builtin_shufflevector(low, low, 1, 0, 3, 2, 5, 4, 7, 6);
    const EightBytes rests = pairs | __builtin_shufflevector(pairs, pairs, 2, 3, 0, 1, 6, 7, 4, 5);
    return __builtin_shufflevector(high, rests, 0, 1, 2, 3, 8, 4, 5, 6, 7, 12, 0, 0, 0, 0, 0, 0);
}

/** Unpacks; writes up to four pixels more than `width`. Never reads behind the row. */
IMAGING_INLINE void UnpackRow(const uint8_t* packed, uint32_t width, uint16_t* pixels) {
    const size_t rowBytes = Raw10RowBytes(width);
    size_t at = 0;
    for (; at + sizeof(Raw10Bytes) <= rowBytes; at += kRaw10VectorBytes, pixels += 8) {
        Store(UnpackEight(Load<Raw10Bytes>(packed + at)), pixels);
    }
    for (; at < rowBytes; at += kRaw10VectorBytes, pixels += 8) {
        Raw10Bytes last = {};
        memcpy(&last, packed + at, std::min(rowBytes - at, kRaw10VectorBytes));
        Store(UnpackEight(last), pixels);
    }
}

/** Packs; reads up to four pixels more than `width`. Never writes behind the row. */
IMAGING_INLINE void PackRow(const uint16_t* pixels, uint32_t width, uint8_t* packed) {
    const size_t rowBytes = Raw10RowBytes(width);
    size_t at = 0;
    // The six spare bytes lie where the next ten will be written.
    for (; at + sizeof(Raw10Bytes) <= rowBytes; at += kRaw10VectorBytes, pixels += 8) {
        Store(PackEight(Load<EightPixels>(pixels)), packed + at);
    }
    for (; at < rowBytes; at += kRaw10VectorBytes, pixels += 8) {
        const Raw10Bytes last = PackEight(Load<EightPixels>(pixels));
        memcpy(packed + at, &last, std::min(rowBytes - at, kRaw10VectorBytes));
    }
}

}  // namespace imaging

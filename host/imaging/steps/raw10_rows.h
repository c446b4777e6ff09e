// RAW10 rows (format: imaging/raw10.h), a vector of 16 pixels at a time: 20 bytes;
// and the average of such rows, see imaging/multi_frame.h.
#pragma once

#include <imaging/raw10.h>

#include <algorithm>

#include "../instruction_sets.h"
#include "../pixel_vector.h"

namespace imaging {

// Bytes of eight pixels.
inline constexpr size_t kRaw10HalfBytes = 2 * kRaw10BytesPerGroup;
inline constexpr size_t kRaw10VectorBytes = 2 * kRaw10HalfBytes;

// What is read and written for a vector: twice 16 bytes, ten apart.
inline constexpr size_t kRaw10Reach = kRaw10HalfBytes + 16;

// Bytes of pixels 0 to 7 in places 0 to 9, of pixels 8 to 15 in places 16 to 25; processors
// shuffle bytes most cheaply inside such halves.
using Raw10Vector = uint8_t __attribute__((vector_size(32)));
using Raw10Half = uint8_t __attribute__((vector_size(16)));

IMAGING_INLINE CodePixels Unpack(const Raw10Vector& bytes) {
    // Each byte becomes the low half of a 16-bit number; place 32 is a zero.
    const auto high = reinterpret_cast<CodePixels>(__builtin_shufflevector(
            bytes, Raw10Vector{}, 0, 32, 1, 32, 2, 32, 3, 32, 5, 32, 6, 32, 7, 32, 8, 32,  //
            16, 32, 17, 32, 18, 32, 19, 32, 21, 32, 22, 32, 23, 32, 24, 32));
    const auto rests = reinterpret_cast<CodePixels>(__builtin_shufflevector(
            bytes, Raw10Vector{}, 4, 32, 4, 32, 4, 32, 4, 32, 9, 32, 9, 32, 9, 32, 9, 32,  //
            20, 32, 20, 32, 20, 32, 20, 32, 25, 32, 25, 32, 25, 32, 25, 32));
    // Pixel i's two bits are bits 2i and 2i + 1 of the rest: the factor moves them to 6 and 7.
    const CodePixels factor = {64, 16, 4, 1, 64, 16, 4, 1, 64, 16, 4, 1, 64, 16, 4, 1};
    return high << 2 | ((rests * factor >> 6) & 3);
}

// The reverse; the places that Unpack leaves out get bytes that mean nothing.
IMAGING_INLINE Raw10Vector Pack(const CodePixels& pixels) {
    const CodePixels factor = {1, 4, 16, 64, 1, 4, 16, 64, 1, 4, 16, 64, 1, 4, 16, 64};
    const auto high = reinterpret_cast<Raw10Vector>(pixels >> 2);
    // Four numbers with two bits each, moved to their places, are or-ed into one.
    const CodePixels moved = (pixels & 3) * factor;
    const auto pairs = moved | __builtin_shufflevector(moved, moved, 1, 0, 3, 2, 5, 4, 7, 6, 9, 8,
                                                       11, 10, 13, 12, 15, 14);
    const auto fours = pairs | __builtin_shufflevector(pairs, pairs, 2, 3, 0, 1, 6, 7, 4, 5, 10, 11,
                                                       8, 9, 14, 15, 12, 13);
    const auto rests = reinterpret_cast<Raw10Vector>(fours);
    return __builtin_shufflevector(high, rests, 0, 2, 4, 6, 32, 8, 10, 12, 14, 40,            //
                                   0, 0, 0, 0, 0, 0, 16, 18, 20, 22, 48, 24, 26, 28, 30, 56,  //
                                   16, 16, 16, 16, 16, 16);
}

// The pixels at a place in a row; nothing is read beyond the `left` bytes up to its end.
IMAGING_INLINE CodePixels LoadRaw10(const uint8_t* packed, size_t left) {
    // Rows are longer than a page, and the processor's own reading ahead ends with each page.
    constexpr size_t kAhead = 2048;
    __builtin_prefetch(packed + kAhead);
    uint8_t last[kRaw10Reach] = {};
    if (left < kRaw10Reach) {
        memcpy(last, packed, std::min(left, kRaw10VectorBytes));
        packed = last;
    }
    const auto first = Load<Raw10Half>(packed);
    const auto second = Load<Raw10Half>(packed + kRaw10HalfBytes);
    return Unpack(__builtin_shufflevector(first, second, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12,
                                          13, 14, 15, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26,
                                          27, 28, 29, 30, 31));
}

// The reverse. Writes spare bytes, which the row's next vector overwrites.
IMAGING_INLINE void StoreRaw10(const CodePixels& pixels, uint8_t* packed, size_t left) {
    const Raw10Vector bytes = Pack(pixels);
    uint8_t last[kRaw10Reach];
    uint8_t* const to = left < kRaw10Reach ? last : packed;
    Store(__builtin_shufflevector(bytes, bytes, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14,
                                  15),
          to);
    Store(__builtin_shufflevector(bytes, bytes, 16, 17, 18, 19, 20, 21, 22, 23, 24, 25, 26, 27, 28,
                                  29, 30, 31),
          to + kRaw10HalfBytes);
    if (to == last) memcpy(packed, last, std::min(left, kRaw10VectorBytes));
}

// Unpacks a row; writes whole vectors.
IMAGING_INLINE void UnpackRow(const uint8_t* packed, uint32_t width, uint16_t* pixels) {
    const size_t rowBytes = Raw10RowBytes(width);
    for (size_t at = 0; at < rowBytes; at += kRaw10VectorBytes, pixels += kVectorPixels) {
        Store(LoadRaw10(packed + at, rowBytes - at), pixels);
    }
}

using WideSums = uint32_t __attribute__((vector_size(4 * kVectorPixels)));

// sum / count, rounded down. There is no vector division, so: the quotient by a reciprocal that is
// a little too small falls short by one at most, which its remainder shows.
IMAGING_INLINE CodePixels Quotient(const CodePixels& sum, uint16_t count) {
    const uint32_t reciprocal = 0xffffu / count;
    const auto estimate = Convert<CodePixels>(Convert<WideSums>(sum) * reciprocal >> 16);
    const CodePixels rest = sum - estimate * count;
    const auto fallsShort = rest >= CodePixels{} + count;  // -1 where true
    return estimate - reinterpret_cast<CodePixels>(fallsShort);
}

IMAGING_INLINE void AverageRows(const AverageJob& job) {
    const auto count = static_cast<uint16_t>(job.frames.size());
    const size_t rowBytes = Raw10RowBytes(job.out.width);
    for (uint32_t y = 0; y < job.out.height; ++y) {
        uint8_t* const row = job.out.data + y * job.out.strideBytes;
        const uint8_t* rows[kMaxAverageFrames];
        for (size_t f = 0; f < count; ++f) {
            rows[f] = job.frames[f].data + (job.begin + y) * job.frames[f].strideBytes;
        }
        for (size_t at = 0; at < rowBytes; at += kRaw10VectorBytes) {
            CodePixels sum = CodePixels{} + static_cast<uint16_t>(count / 2);
            for (size_t f = 0; f < count; ++f) sum += LoadRaw10(rows[f] + at, rowBytes - at);
            StoreRaw10(Quotient(sum, count), row + at, rowBytes - at);
        }
    }
}

}  // namespace imaging

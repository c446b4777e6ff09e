// Vectors of pixels: the compiler's own vector types, which it turns into the instructions of
// whichever processor the surrounding function is compiled for (instruction_sets.cpp). A formula
// on a vector reads like the formula on one pixel: + - * >> act on every pixel.
#pragma once

#include <cstdint>
#include <cstring>

// For functions that work on vectors. Only inside the function of an instruction set does the
// compiler know which instructions it may use; out of line, they would also pass vectors by another
// calling convention than their caller's.
#define IMAGING_INLINE [[gnu::always_inline]] inline
#define IMAGING_LAMBDA_INLINE __attribute__((always_inline))

namespace imaging {

// Pixels of one vector.
inline constexpr uint32_t kVectorPixels = 16;

using BytePixels = uint8_t __attribute__((vector_size(kVectorPixels)));
using ShortPixels = int16_t __attribute__((vector_size(2 * kVectorPixels)));
using CodePixels = uint16_t __attribute__((vector_size(2 * kVectorPixels)));
using IntPixels = int32_t __attribute__((vector_size(4 * kVectorPixels)));

// Reads a vector from any address.
template <class Vector, class Pixel>
IMAGING_INLINE Vector Load(const Pixel* from) {
    Vector vector;
    memcpy(&vector, from, sizeof(vector));
    return vector;
}

template <class Pixel, class Vector>
IMAGING_INLINE void Store(const Vector& vector, Pixel* to) {
    memcpy(to, &vector, sizeof(vector));
}

IMAGING_INLINE ShortPixels Clamp(const ShortPixels& pixels, int16_t low, int16_t high) {
    return __builtin_elementwise_min(__builtin_elementwise_max(pixels, ShortPixels{} + low),
                                     ShortPixels{} + high);
}

template <class To, class From>
IMAGING_INLINE To Convert(const From& vector) {
    return __builtin_convertvector(vector, To);
}

// The pixels at even places of `a` followed by `b`.
IMAGING_INLINE ShortPixels EvenPlaces(const ShortPixels& a, const ShortPixels& b) {
    return __builtin_shufflevector(a, b, 0, 2, 4, 6, 8, 10, 12, 14, 16, 18, 20, 22, 24, 26, 28, 30);
}

IMAGING_INLINE ShortPixels OddPlaces(const ShortPixels& a, const ShortPixels& b) {
    return __builtin_shufflevector(a, b, 1, 3, 5, 7, 9, 11, 13, 15, 17, 19, 21, 23, 25, 27, 29, 31);
}

// Stores a0 b0 a1 b1 ..: the first `count` <= 16 pixels of each.
IMAGING_INLINE void StoreInterleaved(const BytePixels& a, const BytePixels& b, uint32_t count,
                                     uint8_t* to) {
    const auto pairs =
            __builtin_shufflevector(a, b, 0, 16, 1, 17, 2, 18, 3, 19, 4, 20, 5, 21, 6, 22, 7, 23, 8,
                                    24, 9, 25, 10, 26, 11, 27, 12, 28, 13, 29, 14, 30, 15, 31);
    if (count >= kVectorPixels) {
        Store(pairs, to);
    } else {
        memcpy(to, &pairs, 2 * count);
    }
}

}  // namespace imaging

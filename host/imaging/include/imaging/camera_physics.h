// The physics of the reference camera: how a raw code becomes a picture. Everything after the tone
// table is exact integer arithmetic, so any output pixel can be predicted by hand.
//
//  1. Mosaic RGGB: red at (even x, even y), blue at (odd x, odd y), green elsewhere.
//  2. Linear value  v = min(959, (max(raw - 64, 0) * g + 1) >> 1),  g the white-balance gain in
//     halves: red 4 (2.0), green 2 (1.0), blue 3 (1.5). Range 0..959, 959 = white.
//  3. Demosaic, Malvar-He-Cutler 5 x 5 (see demosaic.h), on the linear values, clipped to 0..959.
//  4. Tone curve  T[v] = round(255 * s(v / 959)),  s the sRGB transfer function:
//     s(x) = 12.92 x up to 0.0031308, then 1.055 x^(1 / 2.4) - 0.055.  Range 0..255.
//  5. YCbCr, BT.601 full range (JFIF), coefficients in 1/16384:
//     Y  = (4899 R + 9617 G + 1868 B + 8192) >> 14,                             of every pixel;
//     Cb = (-2765 R' - 5427 G' + 8192 B' + (128 << 16) + 32767) >> 16,
//     Cr = ( 8192 R' - 6860 G' - 1332 B' + (128 << 16) + 32767) >> 16,          of each 2 x 2
//     block, where R', G', B' are the sums of the block's four tone-mapped values. So chroma
//     belongs to the middle of the block, is rounded to nearest with ties down, and needs no
//     clipping.
//  6. Crop to the output size in the middle, at an even offset: ((in - out) / 2) & ~1.
//
// The tone table is the only place with floating point; no entry lies so near to a tie that the
// math library could matter.
#pragma once

#include <array>
#include <cstdint>

namespace imaging {

inline constexpr int kBlackLevel = 64;
inline constexpr int kWhiteLevel = 1023;
inline constexpr int kLinearMax = kWhiteLevel - kBlackLevel;  // 959

enum class Channel : uint8_t { kRed = 0, kGreen = 1, kBlue = 2 };

/** White-balance gains in halves, by channel. */
inline constexpr std::array<int, 3> kGainHalves = {4, 2, 3};

/** The colour of the mosaic at a place. */
inline constexpr Channel MosaicChannel(uint32_t x, uint32_t y) {
    const bool oddX = (x & 1) != 0;
    const bool oddY = (y & 1) != 0;
    if (oddX != oddY) return Channel::kGreen;
    return oddX ? Channel::kBlue : Channel::kRed;
}

/** Step 2: raw code 0..1023 to linear value 0..959. */
inline constexpr int LinearFromRaw(int raw, Channel channel) {
    const int signal = raw > kBlackLevel ? raw - kBlackLevel : 0;
    const int value = (signal * kGainHalves[static_cast<int>(channel)] + 1) >> 1;
    return value < kLinearMax ? value : kLinearMax;
}

/** The raw code nearest to a linear value 0..959 (ties up): what a sensor would have read. */
inline constexpr int RawFromLinear(int linear, Channel channel) {
    const int gain = kGainHalves[static_cast<int>(channel)];
    return kBlackLevel + (2 * linear + gain / 2) / gain;
}

using ToneTable = std::array<uint8_t, kLinearMax + 1>;

/** Step 4, by linear value. Made on first use; lives as long as the process. */
const ToneTable& ToneCurve();

/** The linear value 0..959 nearest to a tone-mapped one: the inverse of the curve, not of the
 * table. Dark codes that the table never yields come out as the nearest that it does. */
int LinearFromTone(uint8_t tone);

/** Step 5 for one pixel. */
inline constexpr uint8_t Luma(int r, int g, int b) {
    return static_cast<uint8_t>((4899 * r + 9617 * g + 1868 * b + 8192) >> 14);
}

/** Step 5 for the sums of a 2 x 2 block, each 0..1020. */
inline constexpr uint8_t ChromaBlue(int sumR, int sumG, int sumB) {
    return static_cast<uint8_t>((-2765 * sumR - 5427 * sumG + 8192 * sumB + (128 << 16) + 32767) >>
                                16);
}

inline constexpr uint8_t ChromaRed(int sumR, int sumG, int sumB) {
    return static_cast<uint8_t>((8192 * sumR - 6860 * sumG - 1332 * sumB + (128 << 16) + 32767) >>
                                16);
}

/** Step 6: where the output begins in the input, in pixels; `out` is at most `in`, both even. */
inline constexpr uint32_t CropOffset(uint32_t in, uint32_t out) {
    return ((in - out) / 2) & ~1u;
}

}  // namespace imaging

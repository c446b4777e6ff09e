// The physics of the reference camera: how a raw code becomes a picture. Everything after the tone
// table is exact integer arithmetic, so any output pixel can be predicted by hand.
//
//  1. Codes are packed as raw10.h states. Mosaic RGGB: red at (even x, even y), blue at (odd x,
//     odd y), green elsewhere.
//  2. Linear value  v = min(959, (max(raw - 64, 0) * g + 1) >> 1),  g the white-balance gain in
//     halves: red 4 (2.0), green 2 (1.0), blue 3 (1.5). Range 0..959, 959 = white. Whole codes,
//     so that every sum of the next step, at most 28 x 959 = 26852, fits a signed 16-bit number.
//  3. Demosaic, Malvar-He-Cutler 5 x 5 (see below), on the linear values. The two missing
//     colours come out in sixteenths of a code and are kept in eighths, f = (sum + 1) >> 1, clipped
//     to 0..7672; the pixel's own colour is f = 8 v. (In the shadows the tone curve turns one code
//     into 3.4, so whole codes would show as steps.)
//  4. Tone curve  T[f] = round(255 * s(f / 7672)),  s the sRGB transfer function:
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
// The tone table is the only place with floating point; no entry is so near to a tie that the
// math library could matter.
//
// The code works on vectors of pixels: steps/linear_rows.h, steps/demosaic_row.h and steps/ycbcr.h,
// combined in steps/develop_strip.h. tests/host/imaging/naive_camera.h computes the same one
// pixel at a time, in double precision.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

namespace imaging {

inline constexpr int kBlackLevel = 64;
inline constexpr int kWhiteLevel = 1023;
inline constexpr int kLinearMax = kWhiteLevel - kBlackLevel;  // 959
inline constexpr int kFinePerLinear = 8;                      // eighths of a code, after step 3
inline constexpr int kFineMax = kFinePerLinear * kLinearMax;  // 7672

enum class Channel : uint8_t { kRed = 0, kGreen = 1, kBlue = 2 };

// White-balance gains in halves, by channel.
inline constexpr std::array<int, 3> kGainHalves = {4, 2, 3};

// The colour of the mosaic at a place.
inline constexpr Channel MosaicChannel(uint32_t x, uint32_t y) {
    const bool oddX = (x & 1) != 0;
    const bool oddY = (y & 1) != 0;
    if (oddX != oddY) return Channel::kGreen;
    return oddX ? Channel::kBlue : Channel::kRed;
}

// Step 2: raw code 0..1023 to linear value 0..959.
inline constexpr int LinearFromRaw(int raw, Channel channel) {
    const int signal = raw > kBlackLevel ? raw - kBlackLevel : 0;
    const int value = (signal * kGainHalves[static_cast<int>(channel)] + 1) >> 1;
    return value < kLinearMax ? value : kLinearMax;
}

// The raw code nearest to a linear value 0..959 (ties up): what a sensor would have read.
inline constexpr int RawFromLinear(int linear, Channel channel) {
    const int gain = kGainHalves[static_cast<int>(channel)];
    return kBlackLevel + (2 * linear + gain / 2) / gain;
}

// Malvar, He, Cutler: "High-quality linear interpolation for demosaicing of Bayer-patterned color
// images", ICASSP 2004. Coefficients in 1/16 (C centre; N, E, S, W at distance 1; NN .. at 2; D the
// four diagonal neighbours):
//   green at red or blue        8 C + 4 (N + E + S + W)       - 2 (NN + EE + SS + WW)
//   a colour at a green pixel, its neighbours left and right
//                              10 C + 8 (E + W) - 2 (EE + WW) - 2 D + 1 (NN + SS)
//   the same, its neighbours above and below: the kernel turned by 90 degrees
//   red at blue, blue at red   12 C + 4 D                     - 3 (NN + EE + SS + WW)
// Each is a plain average of the wanted colour's neighbours plus a share of how much the centre
// stands out among its own colour's: where one colour has an edge, the others have one, too.
// Result, in eighths of a code: (sum + 1) >> 1, clipped to 0..7672. Beyond an edge the frame is
// mirrored about its outermost pixel (index -1 is 1, -2 is 2), which keeps the colours of the
// mosaic in phase.

// How far the kernels reach.
inline constexpr uint32_t kDemosaicMargin = 2;

// A pixel of the mosaic and its neighbours, summed by distance. T is int for one pixel, or a vector
// of int16_t for many: on linear values 0..959 no sum leaves -11508..26852.
template <class T>
struct Neighbourhood {
    T centre;
    T leftRight;    // E + W
    T aboveBelow;   // N + S
    T leftRight2;   // EE + WW
    T aboveBelow2;  // NN + SS
    T diagonal;
};

template <class T>
[[gnu::always_inline]] constexpr T GreenAtColour(const Neighbourhood<T>& n) {
    return 8 * n.centre + 4 * (n.leftRight + n.aboveBelow) - 2 * (n.leftRight2 + n.aboveBelow2);
}

template <class T>
[[gnu::always_inline]] constexpr T ColourLeftRightOfGreen(const Neighbourhood<T>& n) {
    return 10 * n.centre + 8 * n.leftRight - 2 * n.leftRight2 - 2 * n.diagonal + n.aboveBelow2;
}

template <class T>
[[gnu::always_inline]] constexpr T ColourAboveBelowGreen(const Neighbourhood<T>& n) {
    return 10 * n.centre + 8 * n.aboveBelow - 2 * n.aboveBelow2 - 2 * n.diagonal + n.leftRight2;
}

template <class T>
[[gnu::always_inline]] constexpr T OppositeColour(const Neighbourhood<T>& n) {
    return 12 * n.centre + 4 * n.diagonal - 3 * (n.leftRight2 + n.aboveBelow2);
}

// The place of index `i` (may be outside) in a row or column of `size` >= 2 pixels, mirrored.
constexpr uint32_t Mirror(int64_t i, uint32_t size) {
    const int64_t period = 2 * (static_cast<int64_t>(size) - 1);
    int64_t place = i % period;
    if (place < 0) place += period;
    return static_cast<uint32_t>(place < size ? place : period - place);
}

using ToneTable = std::array<uint8_t, kFineMax + 1>;

// Step 4, by linear value in eighths. Made on first use; lives as long as the process.
const ToneTable& ToneCurve();

// Step 4 for a linear value in whole codes, 0..959.
inline uint8_t ToneFromLinear(int linear) {
    return ToneCurve()[static_cast<size_t>(linear * kFinePerLinear)];
}

// The linear value 0..959 of a tone-mapped one: the inverse of the curve. Dark tones are closer
// together than whole linear codes.
double LinearFromTone(uint8_t tone);

// Step 5 for one pixel. T is int, or a vector of int32_t for many pixels.
template <class T>
[[gnu::always_inline]] constexpr T LumaValue(T r, T g, T b) {
    return (4899 * r + 9617 * g + 1868 * b + 8192) >> 14;
}

// Step 5 for the sums of a 2 x 2 block, each 0..1020.
template <class T>
[[gnu::always_inline]] constexpr T ChromaBlueValue(T sumR, T sumG, T sumB) {
    return (-2765 * sumR - 5427 * sumG + 8192 * sumB + ((128 << 16) + 32767)) >> 16;
}

template <class T>
[[gnu::always_inline]] constexpr T ChromaRedValue(T sumR, T sumG, T sumB) {
    return (8192 * sumR - 6860 * sumG - 1332 * sumB + ((128 << 16) + 32767)) >> 16;
}

inline constexpr uint8_t Luma(int r, int g, int b) {
    return static_cast<uint8_t>(LumaValue(r, g, b));
}

inline constexpr uint8_t ChromaBlue(int sumR, int sumG, int sumB) {
    return static_cast<uint8_t>(ChromaBlueValue(sumR, sumG, sumB));
}

inline constexpr uint8_t ChromaRed(int sumR, int sumG, int sumB) {
    return static_cast<uint8_t>(ChromaRedValue(sumR, sumG, sumB));
}

// Step 6: where the output begins in the input, in pixels; `out` is at most `in`, both even.
inline constexpr uint32_t CropOffset(uint32_t in, uint32_t out) {
    return ((in - out) / 2) & ~1u;
}

}  // namespace imaging

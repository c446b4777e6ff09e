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
#pragma once

#include <cstdint>

namespace imaging {

/** How far the kernels reach. */
inline constexpr uint32_t kDemosaicMargin = 2;

/**
 * A pixel of the mosaic and its neighbours, summed by distance. T is int for one pixel, or a vector
 * of int16_t for many: on linear values 0..959 no sum leaves -11508..26852.
 */
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

/** The place of index `i` (may lie outside) in a row or column of `size` >= 2 pixels, mirrored. */
constexpr uint32_t Mirror(int64_t i, uint32_t size) {
    const int64_t period = 2 * (static_cast<int64_t>(size) - 1);
    int64_t place = i % period;
    if (place < 0) place += period;
    return static_cast<uint32_t>(place < size ? place : period - place);
}

}  // namespace imaging

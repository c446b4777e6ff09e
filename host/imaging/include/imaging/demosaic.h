// Malvar, He, Cutler: "High-quality linear interpolation for demosaicing of Bayer-patterned color
// images", ICASSP 2004. Coefficients in 1/16 (C centre; N, E, S, W at distance 1; NN .. at 2; D the
// four diagonal neighbours):
//   green at red or blue        8 C + 4 (N + E + S + W)       - 2 (NN + EE + SS + WW)
//   a colour at a green pixel, its neighbours left and right
//                              10 C + 8 (E + W) - 2 (EE + WW) - 2 D + 1 (NN + SS)
//   the same, its neighbours above and below: the kernel turned by 90 degrees
//   red at blue, blue at red   12 C + 4 D                     - 3 (NN + EE + SS + WW)
// Result: (sum + 8) >> 4, clipped to 0..959. Beyond an edge the frame is mirrored about its
// outermost pixel (index -1 is 1, -2 is 2), which keeps the colours of the mosaic in phase.
#pragma once

#include <cstdint>

namespace imaging {

/** Pixels that the rows of a window carry beyond each end. */
inline constexpr uint32_t kDemosaicMargin = 2;

/** The place of index `i` (may lie outside) in a row or column of `size` >= 2 pixels, mirrored. */
uint32_t Mirror(int64_t i, uint32_t size);

/** One row of linear colours, each array of at least the row's width. */
struct RgbRow {
    uint16_t* red;
    uint16_t* green;
    uint16_t* blue;
};

/**
 * Interpolates pixels [begin, end) of row `y` (only its parity counts).
 *
 * @param rows linear mosaic rows y - 2 .. y + 2; each points to pixel 0 and has kDemosaicMargin
 *             mirrored pixels before it and after its last
 * @param out  pixel `begin` goes to index 0
 */
void DemosaicRow(const uint16_t* const rows[5], uint32_t y, uint32_t begin, uint32_t end,
                 const RgbRow& out);

}  // namespace imaging

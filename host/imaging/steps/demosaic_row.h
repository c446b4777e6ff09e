// Step 3 of imaging/camera_physics.h: its kernels on rows with split columns.
#pragma once

#include <imaging/camera_physics.h>

#include "linear_rows.h"

namespace imaging {

// A row of colours, three to a pixel, as six runs: red of even columns, red of odd ones, green of
// even ones, .. Owns nothing.
template <class Pixel>
struct ColourRow {
    Pixel* data;
    size_t halfWidth;  // pixels of a run, a multiple of kVectorPixels

    Pixel* At(Channel channel, int column) const {
        return data + (2 * static_cast<size_t>(channel) + static_cast<size_t>(column)) * halfWidth;
    }
    size_t Size() const { return 6 * halfWidth; }
};

using FineRow = ColourRow<int16_t>;  // linear, in eighths of a code
using ToneRow = ColourRow<uint8_t>;  // tone-mapped

// The pixels from index `i` of the columns `c` (0 even, 1 odd) on, rows[2] being their row.
IMAGING_INLINE Neighbourhood<ShortPixels> Gather(const SplitRow rows[5], int c, int64_t i) {
    const auto at = [rows, i](int row, int column, int64_t step) IMAGING_LAMBDA_INLINE {
        return Load<ShortPixels>(rows[row].columns[column] + i + step);
    };
    // Of even column 2i the odd neighbours are 2i - 1 and 2i + 1, at i - 1 and i; of odd column
    // 2i + 1 the even neighbours are 2i and 2i + 2, at i and i + 1.
    const int beside = 1 - c;
    const int64_t left = c - 1;
    const int64_t right = c;
    return {at(2, c, 0),
            at(2, beside, left) + at(2, beside, right),
            at(1, c, 0) + at(3, c, 0),
            at(2, c, -1) + at(2, c, 1),
            at(0, c, 0) + at(4, c, 0),
            at(1, beside, left) + at(1, beside, right) + at(3, beside, left) +
                    at(3, beside, right)};
}

// Sixteenths of a code to eighths.
IMAGING_INLINE ShortPixels Fine(const ShortPixels& sum) {
    return Clamp((sum + 1) >> 1, 0, kFineMax);
}

// Interpolates a row of colours.
// `rows`: linear rows y - 2 .. y + 2, each with mirrored ends
// `y`: only its parity counts
// `left`: even; the pixel that goes to index 0
// `width`: pixels to make, rounded up to whole pairs of vectors
IMAGING_INLINE void DemosaicRow(const SplitRow rows[5], uint32_t y, uint32_t left, uint32_t width,
                                const FineRow& out) {
    // An even row is red, green, red, green ..: its own colour is red, in the even columns;
    // an odd row is green, blue, green, blue ..
    const int ownColumns = y & 1;
    const auto own = ownColumns == 0 ? Channel::kRed : Channel::kBlue;
    const auto other = ownColumns == 0 ? Channel::kBlue : Channel::kRed;
    for (uint32_t i = 0; i < width / 2; i += kVectorPixels) {
        const auto colour = Gather(rows, ownColumns, left / 2 + i);
        Store(colour.centre * kFinePerLinear, out.At(own, ownColumns) + i);
        Store(Fine(GreenAtColour(colour)), out.At(Channel::kGreen, ownColumns) + i);
        Store(Fine(OppositeColour(colour)), out.At(other, ownColumns) + i);

        const int greenColumns = 1 - ownColumns;
        const auto green = Gather(rows, greenColumns, left / 2 + i);
        Store(green.centre * kFinePerLinear, out.At(Channel::kGreen, greenColumns) + i);
        Store(Fine(ColourLeftRightOfGreen(green)), out.At(own, greenColumns) + i);
        Store(Fine(ColourAboveBelowGreen(green)), out.At(other, greenColumns) + i);
    }
}

}  // namespace imaging

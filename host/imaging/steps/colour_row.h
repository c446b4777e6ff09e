// A row of colours, three to a pixel, even and odd columns kept apart as in split_row.h.
#pragma once

#include <imaging/camera_physics.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "../pixel_vector.h"

namespace imaging {

/** Six runs one behind the other: red even, red odd, green even, .. Owns nothing. */
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

}  // namespace imaging

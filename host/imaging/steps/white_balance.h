// Step 2 of imaging/camera_physics.h: raw codes to linear values, and columns split.
#pragma once

#include <imaging/camera_physics.h>
#include <imaging/demosaic.h>

#include "../pixel_vector.h"
#include "split_row.h"

namespace imaging {

/** v = min(959, (max(raw - 64, 0) * g + 1) >> 1), g the gain in halves. */
IMAGING_INLINE ShortPixels LinearValues(const ShortPixels& raw, int gainHalves) {
    const ShortPixels signal = Clamp(raw - kBlackLevel, 0, kWhiteLevel);
    return Clamp((signal * static_cast<int16_t>(gainHalves) + 1) >> 1, 0, kLinearMax);
}

/** Makes the linear row `y` of raw codes; both are filled up to whole pairs of vectors. */
IMAGING_INLINE void WhiteBalanceRow(const uint16_t* raw, uint32_t width, uint32_t y,
                                    const SplitRow& out) {
    const int evenGain = kGainHalves[static_cast<size_t>(MosaicChannel(0, y))];
    const int oddGain = kGainHalves[static_cast<size_t>(MosaicChannel(1, y))];
    for (uint32_t x = 0; x < width; x += 2 * kVectorPixels) {
        const auto first = Load<ShortPixels>(raw + x);
        const auto second = Load<ShortPixels>(raw + x + kVectorPixels);
        Store(LinearValues(EvenPlaces(first, second), evenGain), out.columns[0] + x / 2);
        Store(LinearValues(OddPlaces(first, second), oddGain), out.columns[1] + x / 2);
    }
}

/** Writes the mirrored pixels -2, -1 and width, width + 1. */
IMAGING_INLINE void MirrorEnds(uint32_t width, const SplitRow& row) {
    const int64_t end = width;
    for (int64_t x : {int64_t{-2}, int64_t{-1}, end, end + 1}) {
        const uint32_t from = Mirror(x, width);
        row.columns[x & 1][x >> 1] = row.columns[from & 1][from >> 1];
    }
}

}  // namespace imaging

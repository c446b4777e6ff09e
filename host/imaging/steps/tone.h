// Step 4 of imaging/camera_physics.h: the tone curve, looked up.
#pragma once

#include <imaging/camera_physics.h>

#include "../pixel_vector.h"
#include "colour_row.h"

namespace imaging {

IMAGING_INLINE void ApplyToneCurve(const ToneTable& table, const FineRow& in, const ToneRow& out) {
    const uint8_t* const tone = table.data();
    const int16_t* const fine = in.data;
    uint8_t* const to = out.data;
    const size_t size = in.Size();
    // Not as vectors: taking indices out of one and putting bytes into another costs more than
    // the look-ups themselves.
#pragma clang loop vectorize(disable) interleave(disable) unroll_count(8)
    for (size_t i = 0; i < size; ++i) to[i] = tone[fine[i]];
}

}  // namespace imaging

// A frame cut into strips of rows that threads share out among themselves.
#pragma once

#include <imaging/camera_physics.h>
#include <imaging/demosaic.h>

#include <algorithm>
#include <functional>

#include "instruction_sets.h"
#include "parallel.h"

namespace imaging {

/** Even. A strip needs 2 x kDemosaicMargin rows that its neighbours need, too. */
inline constexpr uint32_t kStripRows = 128;

/** Calls `develop` for every strip of a picture, with the number of the worker that does it. */
inline void ForEachStrip(const RawView& raw, const MutableNv12View& out, uint32_t workers,
                         const std::function<void(DevelopJob, uint32_t worker)>& develop) {
    const uint32_t left = CropOffset(raw.width, out.width);
    const uint32_t top = CropOffset(raw.height, out.height);
    const uint32_t strips = (out.height + kStripRows - 1) / kStripRows;
    ParallelFor(strips, workers, [&](uint32_t strip, uint32_t worker) {
        const uint32_t begin = strip * kStripRows;
        const uint32_t end = std::min(begin + kStripRows, out.height);
        develop({raw, out, left, begin, end, top + begin}, worker);
    });
}

}  // namespace imaging

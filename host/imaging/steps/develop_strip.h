// Steps 2 to 5 of imaging/camera_physics.h on a strip of a frame: two output rows at a time over a
// window of linear mosaic rows. Everything in between stays in the processor's caches.
#pragma once

#include <algorithm>
#include <vector>

#include "../instruction_sets.h"
#include "ycbcr.h"

namespace imaging {

IMAGING_INLINE void DevelopStrip(const DevelopJob& job, const ToneTable& tone) {
    const RawView& raw = job.raw;
    const MutableNv12View& out = job.out;
    const size_t halfWidth = RoundUpToVectors(out.width) / 2;
    std::vector<int16_t> finePixels(6 * halfWidth);
    std::vector<uint8_t> tonePixels(2 * 6 * halfWidth);
    const FineRow fine = {finePixels.data(), halfWidth};
    const ToneRow toned[2] = {{tonePixels.data(), halfWidth},
                              {tonePixels.data() + 6 * halfWidth, halfWidth}};

    LinearRows mosaic(raw, std::max(job.mosaicRow, kDemosaicMargin) - kDemosaicMargin);
    for (uint32_t y = job.begin; y < job.end; y += 2) {
        for (uint32_t i = 0; i < 2; ++i) {
            const uint32_t middle = job.mosaicRow + (y - job.begin) + i;
            mosaic.AdvanceTo(std::min(middle + kDemosaicMargin, raw.height - 1));
            SplitRow rows[5];
            for (int row = 0; row < 5; ++row) rows[row] = mosaic.Row(int64_t{middle} + row - 2);
            DemosaicRow(rows, middle, job.left, out.width, fine);
            ApplyToneCurve(tone, fine, toned[i]);
            StoreLuma(toned[i], out.width, out.y + (y + i) * out.strideBytes);
        }
        StoreChroma(toned[0], toned[1], out.width, out.uv + (y / 2) * out.strideBytes);
    }
}

}  // namespace imaging

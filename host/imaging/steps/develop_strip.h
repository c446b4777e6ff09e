// Steps 2 to 5 of imaging/camera_physics.h on a strip of a frame: two output rows at a time over a
// window of linear mosaic rows. Everything in between stays in the processor's caches.
#pragma once

#include <imaging/camera_physics.h>

#include <algorithm>
#include <vector>

#include "colour_row.h"
#include "demosaic_row.h"
#include "jobs.h"
#include "raw10_rows.h"
#include "split_row.h"
#include "tone.h"
#include "white_balance.h"
#include "ycbcr.h"

namespace imaging {

/** `pixels` and what whole pairs of vectors write or read beyond them. */
inline constexpr size_t RoundUpToVectors(size_t pixels) {
    return (pixels + 2 * kVectorPixels - 1) / (2 * kVectorPixels) * (2 * kVectorPixels);
}

/** The linear mosaic rows around the current one; row y lies in slot y mod 8. */
class LinearRows {
  public:
    /** @param first the first row that AdvanceTo makes present */
    LinearRows(const RawView& raw, uint32_t first)
        : mRaw(raw),
          mNext(first),
          mHalfRow(kFront + RoundUpToVectors(raw.width) / 2 + kBehind),
          mPixels(kSlots * 2 * mHalfRow),
          mCodes(RoundUpToVectors(raw.width)) {}

    /** Makes rows up to and including `last` (a row of the frame) present; they come in order. */
    IMAGING_INLINE void AdvanceTo(uint32_t last) {
        for (; mNext <= last; ++mNext) {
            UnpackRow(mRaw.data + mNext * mRaw.strideBytes, mRaw.width, mCodes.data());
            WhiteBalanceRow(mCodes.data(), mRaw.width, mNext, Slot(mNext));
            MirrorEnds(mRaw.width, Slot(mNext));
        }
    }

    /** Row y, which may lie beyond an edge. */
    SplitRow Row(int64_t y) { return Slot(Mirror(y, mRaw.height)); }

  private:
    static constexpr uint32_t kSlots = 8;
    static constexpr size_t kFront = kVectorPixels;       // room for the mirrored pixels
    static constexpr size_t kBehind = 2 * kVectorPixels;  // the same, and for a last vector

    SplitRow Slot(uint32_t y) {
        int16_t* even = mPixels.data() + (y % kSlots) * 2 * mHalfRow + kFront;
        return {{even, even + mHalfRow}};
    }

    const RawView mRaw;
    uint32_t mNext;
    const size_t mHalfRow;
    std::vector<int16_t> mPixels;
    std::vector<uint16_t> mCodes;
};

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

// Bayer to YUV, two output rows at a time over a window of linear mosaic rows.
#include <imaging/b2y.h>
#include <imaging/camera_physics.h>
#include <imaging/demosaic.h>
#include <imaging/raw10.h>

#include <algorithm>
#include <vector>

#include "plane_checks.h"

namespace imaging {

namespace {

/** The linear mosaic rows around the current one; row y lies in slot y mod 8. */
class LinearRows {
  public:
    /** @param first the first row that AdvanceTo makes present */
    LinearRows(const RawView& raw, uint32_t first)
        : mRaw(raw),
          mRowPixels(raw.width + 2 * kDemosaicMargin),
          mNext(first),
          mPixels(kSlots * mRowPixels) {}

    /** Makes rows up to and including `last` (a row of the frame) present; they come in order. */
    void AdvanceTo(uint32_t last) {
        for (; mNext <= last; ++mNext) Load(mNext);
    }

    /** Pixel 0 of a row, with the margins of DemosaicRow; y may lie beyond an edge. */
    const uint16_t* Row(int64_t y) const { return &mPixels[Place(Mirror(y, mRaw.height))]; }

  private:
    static constexpr uint32_t kSlots = 8;

    size_t Place(uint32_t y) const { return (y % kSlots) * mRowPixels + kDemosaicMargin; }

    void Load(uint32_t y) {
        uint16_t* row = &mPixels[Place(y)];
        UnpackRaw10Row(mRaw.data + y * mRaw.strideBytes, mRaw.width, row);
        for (uint32_t x = 0; x < mRaw.width; ++x) {
            row[x] = static_cast<uint16_t>(LinearFromRaw(row[x], MosaicChannel(x, y)));
        }
        const int64_t width = mRaw.width;
        for (int64_t i = 1; i <= kDemosaicMargin; ++i) {
            row[-i] = row[Mirror(-i, mRaw.width)];
            row[width - 1 + i] = row[Mirror(width - 1 + i, mRaw.width)];
        }
    }

    const RawView mRaw;
    const size_t mRowPixels;
    uint32_t mNext;
    std::vector<uint16_t> mPixels;
};

/** Two rows of colours: what one row of chroma is made from. */
class RowPair {
  public:
    explicit RowPair(uint32_t width) : mWidth(width), mPixels(6 * static_cast<size_t>(width)) {}

    RgbRow Row(uint32_t i) {
        uint16_t* first = mPixels.data() + i * 3 * static_cast<size_t>(mWidth);
        return {first, first + mWidth, first + 2 * static_cast<size_t>(mWidth)};
    }

    /** Linear to tone-mapped. */
    void ApplyToneCurve() {
        const ToneTable& tone = ToneCurve();
        for (uint16_t& value : mPixels) value = tone[value];
    }

  private:
    const uint32_t mWidth;
    std::vector<uint16_t> mPixels;
};

void StoreLuma(const RgbRow& row, uint32_t width, uint8_t* out) {
    for (uint32_t x = 0; x < width; ++x) out[x] = Luma(row.red[x], row.green[x], row.blue[x]);
}

void StoreChroma(const RgbRow& upper, const RgbRow& lower, uint32_t width, uint8_t* out) {
    const auto blockSum = [](const uint16_t* a, const uint16_t* b, uint32_t x) {
        return a[x] + a[x + 1] + b[x] + b[x + 1];
    };
    for (uint32_t x = 0; x < width; x += 2) {
        const int red = blockSum(upper.red, lower.red, x);
        const int green = blockSum(upper.green, lower.green, x);
        const int blue = blockSum(upper.blue, lower.blue, x);
        out[x] = ChromaBlue(red, green, blue);
        out[x + 1] = ChromaRed(red, green, blue);
    }
}

std::string CheckSizes(const RawView& raw, const MutableNv12View& out) {
    std::string problem = CheckRaw(raw, "RAW frame");
    if (problem.empty()) problem = CheckNv12(out, "picture");
    if (problem.empty() && (out.width > raw.width || out.height > raw.height)) {
        problem = "picture of " + Size(out.width, out.height) +
                  " is larger than its RAW frame of " + Size(raw.width, raw.height);
    }
    return problem;
}

}  // namespace

std::string RawToNv12(const RawView& raw, const MutableNv12View& out) {
    if (std::string problem = CheckSizes(raw, out); !problem.empty()) return problem;

    const uint32_t left = CropOffset(raw.width, out.width);
    const uint32_t top = CropOffset(raw.height, out.height);
    LinearRows mosaic(raw, top < kDemosaicMargin ? 0 : top - kDemosaicMargin);
    RowPair pair(out.width);
    for (uint32_t y = 0; y < out.height; y += 2) {
        for (uint32_t i = 0; i < 2; ++i) {
            const int64_t middle = static_cast<int64_t>(top) + y + i;
            mosaic.AdvanceTo(static_cast<uint32_t>(
                    std::min<int64_t>(middle + kDemosaicMargin, raw.height - 1)));
            const uint16_t* const rows[5] = {mosaic.Row(middle - 2), mosaic.Row(middle - 1),
                                             mosaic.Row(middle), mosaic.Row(middle + 1),
                                             mosaic.Row(middle + 2)};
            DemosaicRow(rows, static_cast<uint32_t>(middle), left, left + out.width, pair.Row(i));
        }
        pair.ApplyToneCurve();
        StoreLuma(pair.Row(0), out.width, out.y + y * out.strideBytes);
        StoreLuma(pair.Row(1), out.width, out.y + (y + 1) * out.strideBytes);
        StoreChroma(pair.Row(0), pair.Row(1), out.width, out.uv + (y / 2) * out.strideBytes);
    }
    return {};
}

}  // namespace imaging

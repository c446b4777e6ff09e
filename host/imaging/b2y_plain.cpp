// Bayer to YUV, pixel by pixel: camera_physics.h as a program.
#include <imaging/b2y.h>
#include <imaging/camera_physics.h>
#include <imaging/demosaic.h>
#include <imaging/raw10.h>

#include <algorithm>
#include <array>
#include <vector>

#include "plane_checks.h"

namespace imaging {

namespace {

/** The linear rows around the current one, with kDemosaicMargin mirrored pixels at both ends; row
 * y lies in slot y mod 8. */
class LinearWindow {
  public:
    explicit LinearWindow(const RawView& raw)
        : mRaw(raw), mRow(raw.width + 2 * kDemosaicMargin), mPixels(kSlots * mRow) {}

    /** Steps 1 and 2 for row y. */
    void Load(uint32_t y) {
        uint16_t* row = &mPixels[Place(y)];
        UnpackRaw10Row(mRaw.data + y * mRaw.strideBytes, mRaw.width, row);
        for (uint32_t x = 0; x < mRaw.width; ++x) {
            row[x] = static_cast<uint16_t>(LinearFromRaw(row[x], MosaicChannel(x, y)));
        }
        const int64_t end = mRaw.width;
        for (int64_t x : {int64_t{-2}, int64_t{-1}, end, end + 1}) {
            row[x] = row[Mirror(x, mRaw.width)];
        }
    }

    /** Pixel 0 of row y, which may lie beyond an edge. */
    const uint16_t* Row(int64_t y) const { return &mPixels[Place(Mirror(y, mRaw.height))]; }

  private:
    static constexpr uint32_t kSlots = 8;

    size_t Place(uint32_t y) const { return (y % kSlots) * mRow + kDemosaicMargin; }

    const RawView mRaw;
    const size_t mRow;
    std::vector<uint16_t> mPixels;
};

using Rgb = std::array<int, 3>;  // by Channel

int Fine(int sixteenths) {
    return std::clamp((sixteenths + 1) >> 1, 0, kFineMax);
}

/** Step 3 for pixel x of row y, which is rows[2]. */
Rgb Demosaic(const uint16_t* const rows[5], uint32_t x, uint32_t y) {
    const uint16_t* above = rows[1] + x;
    const uint16_t* row = rows[2] + x;
    const uint16_t* below = rows[3] + x;
    const Neighbourhood<int> n = {
            row[0],           row[-1] + row[1],        above[0] + below[0],
            row[-2] + row[2], rows[0][x] + rows[4][x], above[-1] + above[1] + below[-1] + below[1]};
    const int own = n.centre * kFinePerLinear;
    switch (MosaicChannel(x, y)) {
        case Channel::kRed:
            return {own, Fine(GreenAtColour(n)), Fine(OppositeColour(n))};
        case Channel::kBlue:
            return {Fine(OppositeColour(n)), Fine(GreenAtColour(n)), own};
        case Channel::kGreen:
            break;
    }
    const int leftRight = Fine(ColourLeftRightOfGreen(n));
    const int aboveBelow = Fine(ColourAboveBelowGreen(n));
    const bool redRow = y % 2 == 0;
    return redRow ? Rgb{leftRight, own, aboveBelow} : Rgb{aboveBelow, own, leftRight};
}

}  // namespace

std::string RawToNv12Plain(const RawView& raw, const MutableNv12View& out) {
    if (std::string problem = CheckDevelopment(raw, out); !problem.empty()) return problem;

    const ToneTable& tone = ToneCurve();
    const uint32_t left = CropOffset(raw.width, out.width);
    const uint32_t top = CropOffset(raw.height, out.height);
    LinearWindow mosaic(raw);
    uint32_t next = top < kDemosaicMargin ? 0 : top - kDemosaicMargin;
    for (uint32_t y = 0; y < out.height; y += 2) {
        for (const uint32_t last = std::min(top + y + 1 + kDemosaicMargin, raw.height - 1);
             next <= last; ++next) {
            mosaic.Load(next);
        }
        const uint16_t* rows[6];
        for (int i = 0; i < 6; ++i) rows[i] = mosaic.Row(int64_t{top} + y + i - 2);
        for (uint32_t x = 0; x < out.width; x += 2) {
            Rgb sum = {};
            for (uint32_t i = 0; i < 4; ++i) {
                const uint32_t dx = i % 2;
                const uint32_t dy = i / 2;
                Rgb colour = Demosaic(rows + dy, left + x + dx, top + y + dy);
                for (size_t c = 0; c < 3; ++c) {
                    colour[c] = tone[static_cast<size_t>(colour[c])];
                    sum[c] += colour[c];
                }
                out.y[(y + dy) * out.strideBytes + x + dx] = Luma(colour[0], colour[1], colour[2]);
            }
            uint8_t* chroma = out.uv + (y / 2) * out.strideBytes + x;
            chroma[0] = ChromaBlue(sum[0], sum[1], sum[2]);
            chroma[1] = ChromaRed(sum[0], sum[1], sum[2]);
        }
    }
    return {};
}

}  // namespace imaging

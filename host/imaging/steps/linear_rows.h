// Step 2 of imaging/camera_physics.h: raw codes to linear values, in rows whose even and odd
// columns are kept apart. Neighbours in such a half are two pixels apart in the mosaic and have the
// same colour, so that a whole vector of them goes through the same formula.
#pragma once

#include <imaging/camera_physics.h>
#include <imaging/planes.h>

#include <vector>

#include "../pixel_vector.h"
#include "raw10_rows.h"

namespace imaging {

// Pixel x is at [x % 2][x / 2]; the pointers are at x = 0 and x = 1.
struct SplitRow {
    int16_t* columns[2];
};

// v = min(959, (max(raw - 64, 0) * g + 1) >> 1), g the gain in halves.
IMAGING_INLINE ShortPixels LinearValues(const ShortPixels& raw, int gainHalves) {
    const ShortPixels signal = Clamp(raw - kBlackLevel, 0, kWhiteLevel);
    return Clamp((signal * static_cast<int16_t>(gainHalves) + 1) >> 1, 0, kLinearMax);
}

// Makes the linear row `y` of raw codes; both are filled up to whole pairs of vectors.
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

// Writes the mirrored pixels -2, -1 and width, width + 1.
IMAGING_INLINE void MirrorEnds(uint32_t width, const SplitRow& row) {
    const int64_t end = width;
    for (int64_t x : {int64_t{-2}, int64_t{-1}, end, end + 1}) {
        const uint32_t from = Mirror(x, width);
        row.columns[x & 1][x >> 1] = row.columns[from & 1][from >> 1];
    }
}

// `pixels` rounded up to whole pairs of vectors, which is what is read and written.
inline constexpr size_t RoundUpToVectors(size_t pixels) {
    return (pixels + 2 * kVectorPixels - 1) / (2 * kVectorPixels) * (2 * kVectorPixels);
}

// The linear mosaic rows around the current one; row y is in slot y mod 8.
class LinearRows {
  public:
    // `first`: the first row that AdvanceTo makes present.
    LinearRows(const RawView& raw, uint32_t first)
        : m_raw(raw),
          m_next(first),
          m_halfRow(kFront + RoundUpToVectors(raw.width) / 2 + kBehind),
          m_pixels(kSlots * 2 * m_halfRow),
          m_codes(RoundUpToVectors(raw.width)) {}

    // Makes rows up to and including `last` (a row of the frame) present; they come in order.
    IMAGING_INLINE void AdvanceTo(uint32_t last) {
        for (; m_next <= last; ++m_next) {
            UnpackRow(m_raw.data + m_next * m_raw.strideBytes, m_raw.width, m_codes.data());
            WhiteBalanceRow(m_codes.data(), m_raw.width, m_next, Slot(m_next));
            MirrorEnds(m_raw.width, Slot(m_next));
        }
    }

    // Row y, which may be beyond an edge.
    SplitRow Row(int64_t y) { return Slot(Mirror(y, m_raw.height)); }

  private:
    static constexpr uint32_t kSlots = 8;
    static constexpr size_t kFront = kVectorPixels;       // room for the mirrored pixels
    static constexpr size_t kBehind = 2 * kVectorPixels;  // the same, and for a last vector

    SplitRow Slot(uint32_t y) {
        int16_t* even = m_pixels.data() + (y % kSlots) * 2 * m_halfRow + kFront;
        return {{even, even + m_halfRow}};
    }

    const RawView m_raw;
    uint32_t m_next;
    const size_t m_halfRow;
    std::vector<int16_t> m_pixels;
    std::vector<uint16_t> m_codes;
};

}  // namespace imaging

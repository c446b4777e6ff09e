// The average of RAW10 rows, see imaging/average.h.
#pragma once

#include <imaging/planes.h>

#include <vector>

#include "../pixel_vector.h"
#include "raw10_rows.h"

namespace imaging {

/** The rows [begin, end) of an average. */
struct AverageJob {
    const std::vector<RawView>& frames;  // 1 to 64: then no sum of codes leaves 16 bits
    MutableRawView out;
    uint32_t begin;
    uint32_t end;
};

using SumPixels = uint16_t __attribute__((vector_size(2 * kVectorPixels)));
using WideSumPixels = uint32_t __attribute__((vector_size(4 * kVectorPixels)));

/**
 * sum / count, rounded down. There is no vector division, so: the quotient by a reciprocal that is
 * a little too small falls short by one at most, which its remainder shows.
 */
IMAGING_INLINE SumPixels Quotient(const SumPixels& sum, uint32_t count) {
    const uint32_t reciprocal = 0xffff / count;
    const auto estimate = Convert<SumPixels>(Convert<WideSumPixels>(sum) * reciprocal >> 16);
    const SumPixels rest = sum - estimate * static_cast<uint16_t>(count);
    const auto fallsShort = rest >= SumPixels{} + static_cast<uint16_t>(count);  // -1 where true
    return estimate - reinterpret_cast<SumPixels>(fallsShort);
}

IMAGING_INLINE void AverageRows(const AverageJob& job) {
    const auto count = static_cast<uint32_t>(job.frames.size());
    const uint32_t width = job.out.width;
    std::vector<uint16_t> sums(width + kVectorPixels);
    std::vector<uint16_t> codes(width + kVectorPixels);
    for (uint32_t y = job.begin; y < job.end; ++y) {
        std::fill(sums.begin(), sums.end(), static_cast<uint16_t>(count / 2));
        for (const RawView& frame : job.frames) {
            UnpackRow(frame.data + y * frame.strideBytes, width, codes.data());
            for (uint32_t x = 0; x < width; x += kVectorPixels) {
                Store(Load<SumPixels>(&sums[x]) + Load<SumPixels>(&codes[x]), &sums[x]);
            }
        }
        for (uint32_t x = 0; x < width; x += kVectorPixels) {
            Store(Quotient(Load<SumPixels>(&sums[x]), count), &codes[x]);
        }
        PackRow(codes.data(), width, job.out.data + y * job.out.strideBytes);
    }
}

}  // namespace imaging

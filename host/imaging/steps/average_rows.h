// The average of RAW10 rows, see imaging/multi_frame.h.
#pragma once

#include "../pixel_vector.h"
#include "jobs.h"
#include "raw10_rows.h"

namespace imaging {

using WideSums = uint32_t __attribute__((vector_size(4 * kVectorPixels)));

/**
 * sum / count, rounded down. There is no vector division, so: the quotient by a reciprocal that is
 * a little too small falls short by one at most, which its remainder shows.
 */
IMAGING_INLINE CodePixels Quotient(const CodePixels& sum, uint16_t count) {
    const uint32_t reciprocal = 0xffffu / count;
    const auto estimate = Convert<CodePixels>(Convert<WideSums>(sum) * reciprocal >> 16);
    const CodePixels rest = sum - estimate * count;
    const auto fallsShort = rest >= CodePixels{} + count;  // -1 where true
    return estimate - reinterpret_cast<CodePixels>(fallsShort);
}

IMAGING_INLINE void AverageRows(const AverageJob& job) {
    const auto count = static_cast<uint16_t>(job.frames.size());
    const size_t rowBytes = Raw10RowBytes(job.out.width);
    for (uint32_t y = 0; y < job.out.height; ++y) {
        uint8_t* const row = job.out.data + y * job.out.strideBytes;
        const uint8_t* rows[kMaxAverageFrames];
        for (size_t f = 0; f < count; ++f) {
            rows[f] = job.frames[f].data + (job.begin + y) * job.frames[f].strideBytes;
        }
        for (size_t at = 0; at < rowBytes; at += kRaw10VectorBytes) {
            CodePixels sum = CodePixels{} + static_cast<uint16_t>(count / 2);
            for (size_t f = 0; f < count; ++f) sum += LoadRaw10(rows[f] + at, rowBytes - at);
            StoreRaw10(Quotient(sum, count), row + at, rowBytes - at);
        }
    }
}

}  // namespace imaging

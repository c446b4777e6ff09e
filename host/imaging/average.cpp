// The average of RAW10 frames.
#include <imaging/average.h>
#include <imaging/raw10.h>

#include "plane_checks.h"

namespace imaging {

std::string AverageRaw10(const std::vector<RawView>& frames, const MutableRawView& out) {
    if (frames.empty() || frames.size() > 64) {
        return "average of " + std::to_string(frames.size()) + " frames: 1 to 64 are possible";
    }
    std::string problem = CheckRaw(out, "average");
    for (const RawView& frame : frames) {
        if (problem.empty()) problem = CheckRaw(frame, "frame to average");
        if (problem.empty() && (frame.width != out.width || frame.height != out.height)) {
            problem = "frame to average is " + Size(frame.width, frame.height) + ", the average " +
                      Size(out.width, out.height) + ": they must be equal";
        }
    }
    if (!problem.empty()) return problem;

    const uint32_t count = static_cast<uint32_t>(frames.size());
    std::vector<uint16_t> row(out.width);
    std::vector<uint32_t> sum(out.width);
    for (uint32_t y = 0; y < out.height; ++y) {
        sum.assign(out.width, count / 2);
        for (const RawView& frame : frames) {
            UnpackRaw10Row(frame.data + y * frame.strideBytes, out.width, row.data());
            for (uint32_t x = 0; x < out.width; ++x) sum[x] += row[x];
        }
        for (uint32_t x = 0; x < out.width; ++x) row[x] = static_cast<uint16_t>(sum[x] / count);
        PackRaw10Row(row.data(), out.width, out.data + y * out.strideBytes);
    }
    return {};
}

}  // namespace imaging

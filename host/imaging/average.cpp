// The average of RAW10 frames.
#include <imaging/average.h>

#include <algorithm>

#include "instruction_sets.h"
#include "parallel.h"
#include "plane_checks.h"

namespace imaging {

namespace {

constexpr uint32_t kStripRows = 128;

}  // namespace

std::string AverageRaw10(const std::vector<RawView>& frames, const MutableRawView& out,
                         const Execution& execution) {
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

    const Functions& functions = FunctionsFor(execution.instructions);
    const uint32_t strips = (out.height + kStripRows - 1) / kStripRows;
    ParallelFor(strips, execution.threads, [&](uint32_t i) {
        const uint32_t begin = i * kStripRows;
        functions.average({frames, out, begin, std::min(begin + kStripRows, out.height)});
    });
    return {};
}

}  // namespace imaging

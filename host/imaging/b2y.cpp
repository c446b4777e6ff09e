// Bayer to YUV in strips of rows that threads share out among themselves.
#include <imaging/b2y.h>
#include <imaging/camera_physics.h>

#include <algorithm>

#include "instruction_sets.h"
#include "parallel.h"
#include "plane_checks.h"

namespace imaging {

namespace {

/** Even. Each strip makes four linear rows again that its neighbours make, too. */
constexpr uint32_t kStripRows = 128;

}  // namespace

std::string RawToNv12(const RawView& raw, const MutableNv12View& out, const Execution& execution) {
    if (std::string problem = CheckDevelopment(raw, out); !problem.empty()) return problem;

    const ToneTable& tone = ToneCurve();
    const Functions& functions = FunctionsFor(execution.instructions);
    const uint32_t left = CropOffset(raw.width, out.width);
    const uint32_t top = CropOffset(raw.height, out.height);
    const uint32_t strips = (out.height + kStripRows - 1) / kStripRows;
    ParallelFor(strips, execution.threads, [&](uint32_t i) {
        const uint32_t begin = i * kStripRows;
        const uint32_t end = std::min(begin + kStripRows, out.height);
        functions.develop({raw, out, left, top, begin, end}, tone);
    });
    return {};
}

}  // namespace imaging

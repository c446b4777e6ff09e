// Bayer to YUV.
#include <imaging/b2y.h>

#include "develop.h"
#include "plane_checks.h"

namespace imaging {

std::string RawToNv12(const RawView& raw, const MutableNv12View& out, const Execution& execution) {
    if (std::string problem = CheckDevelopment(raw, out); !problem.empty()) return problem;

    const Functions& functions = FunctionsFor(execution.instructions);
    ForEachStrip(raw, out, execution.threads,
                 [&](const DevelopJob& job, uint32_t) { functions.develop(job, ToneCurve()); });
    return {};
}

}  // namespace imaging

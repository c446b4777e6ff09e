// Temporal noise reduction: the average of RAW10 frames.
#pragma once

#include <imaging/execution.h>
#include <imaging/planes.h>

#include <string>
#include <vector>

namespace imaging {

/**
 * Averages mosaics of equal size, code by code: out = (sum + n / 2) / n, rounded to the nearest
 * code, ties up (with three frames there are none). The result is RAW10 again, so it is as precise
 * as one code.
 *
 * @param frames 1 to 64 frames
 * @return empty when done, else what does not fit; then nothing is written
 */
[[nodiscard]] std::string AverageRaw10(const std::vector<RawView>& frames,
                                       const MutableRawView& out, const Execution& execution = {});

}  // namespace imaging

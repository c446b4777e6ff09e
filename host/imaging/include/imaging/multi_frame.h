// Multi-frame noise reduction: the average of RAW10 frames, developed.
#pragma once

#include <base/result.h>
#include <imaging/execution.h>
#include <imaging/planes.h>

#include <vector>

namespace imaging {

// Averages mosaics of equal size, code by code, and develops the average as RawToNv12 does:
// out = (sum + n / 2) / n, rounded to the nearest code, ties up (with three frames there are none).
// The average is RAW10 again, so it is as precise as one code.
// The work goes strip by strip, and the average of a strip is developed while it is still in the
// processor's caches. There may be 1 to 64 `frames`; `scratch` has their size, and its content
// afterwards has no meaning. Fails, and then has written nothing, when a size does not fit.
base::Result<base::Done> AverageToNv12(const std::vector<RawView>& frames,
                                       const MutableRawView& scratch, const MutableNv12View& out,
                                       const Execution& execution = {});

}  // namespace imaging

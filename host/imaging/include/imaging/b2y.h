// Bayer to YUV: the whole pipeline of camera_physics.h.
#pragma once

#include <imaging/execution.h>
#include <imaging/planes.h>

#include <string>

namespace imaging {

// Develops a RAW10 mosaic into NV12, cropped to the middle. Only the picture is written; row
// padding and rows beyond the height stay as they are.
// Returns empty when done, else which size does not fit and why; then nothing is written.
[[nodiscard]] std::string RawToNv12(const RawView& raw, const MutableNv12View& out,
                                    const Execution& execution = {});

}  // namespace imaging

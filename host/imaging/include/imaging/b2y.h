// Bayer to YUV: the whole pipeline of camera_physics.h.
#pragma once

#include <base/result.h>
#include <imaging/execution.h>
#include <imaging/planes.h>

namespace imaging {

// Develops a RAW10 mosaic into NV12, cropped to the middle. Only the picture is written; row
// padding and rows beyond the height stay as they are.
// Fails, and then has written nothing, when a size does not fit.
base::Result<base::Done> RawToNv12(const RawView& raw, const MutableNv12View& out,
                                   const Execution& execution = {});

}  // namespace imaging

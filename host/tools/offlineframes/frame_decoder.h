// Frames into pictures. `geometry` has passed frameBytes() and `bytes` has at least that many.
#pragma once

#include "file_io.h"
#include "frame_geometry.h"
#include "picture.h"
#include "result.h"

namespace offlineframes {

// A RAW10 mosaic developed in colour by the reference camera's own pipeline, not cropped.
Result<Picture> developRaw10(const Bytes& bytes, const FrameGeometry& geometry);

// The mosaic as it is: each pixel's upper eight bits as grey.
Picture showMosaic(const Bytes& bytes, const FrameGeometry& geometry);

// BT.601 full-range NV12; each chroma pair serves its 2 x 2 pixels.
Picture showNv12(const Bytes& bytes, const FrameGeometry& geometry);

}  // namespace offlineframes

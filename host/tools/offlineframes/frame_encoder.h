// Pictures into frames: the reference camera's physics backwards.
#pragma once

#include <cstdint>

#include "chart.h"
#include "frame_geometry.h"

namespace offlineframes {

// Gaussian noise added to every sample, the same for the same seed.
struct Noise {
    double sigma = 0;  // raw levels of RAW10, code values of NV12
    uint64_t seed = 0;
};

// RGGB mosaic of `picture` in packed RAW10: inverse tone curve, white-balance gains divided out,
// black level added, dithered to whole codes (by the noise's seed). Of the chart, the ramp's green
// pixels get their raw level exactly. `geometry` has passed FrameBytes() and has the picture's
// size; padding bytes are 0.
Bytes EncodeRaw10(const Picture& picture, const FrameGeometry& geometry, const Noise& noise,
                  bool chart = false);

// BT.601 full-range NV12. Padding is black: luma 0, chroma 128.
Bytes EncodeNv12(const Picture& picture, const FrameGeometry& geometry, const Noise& noise);

// A frame that shows `photo`, scaled to cover it and cut evenly, or without one the chart.
Bytes MakeFrame(const Picture* photo, const FrameGeometry& geometry, const Noise& noise);

}  // namespace offlineframes

// Frames to measure with, in the stand-in's buffers.
#pragma once

#include <imaging/planes.h>

#include <cstdint>

#include "buffer.h"

namespace bench {

/** A RAW10 frame and the picture that it is developed into, as the test modes have them. */
class Frame {
  public:
    /** `quarters` of 4096 x 3072 to 4000 x 3000: 1, 4 or 16. Filled with a scene and noise. */
    explicit Frame(uint32_t quarters, uint32_t seed = 1);

    imaging::MutableRawView Raw();
    imaging::MutableNv12View Picture();
    uint64_t Pixels() const { return uint64_t{mOutWidth} * mOutHeight; }

    const uint32_t width, height;

  private:
    const uint32_t mOutWidth, mOutHeight;

  public:
    Buffer raw;
    Buffer picture;
};

}  // namespace bench

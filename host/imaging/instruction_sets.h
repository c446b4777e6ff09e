// The functions that are compiled once for each instruction set.
#pragma once

#include <imaging/camera_physics.h>
#include <imaging/execution.h>
#include <imaging/planes.h>

#include <cstddef>
#include <cstdint>
#include <vector>

namespace imaging {

// Rows of a picture to be developed.
struct DevelopJob {
    RawView raw;
    MutableNv12View out;
    uint32_t left;   // of the picture in the mosaic; even
    uint32_t begin;  // first row of the picture; even, as is `end`
    uint32_t end;
    uint32_t mosaicRow;  // row of `raw` at picture row `begin`; even
};

inline constexpr size_t kMaxAverageFrames = 64;  // then no sum of codes leaves 16 bits

// Rows of frames to be averaged.
struct AverageJob {
    const std::vector<RawView>& frames;  // 1 to kMaxAverageFrames, of equal size
    uint32_t begin;                      // first row
    MutableRawView out;                  // as wide as a frame, as high as there are rows to average
};

struct Functions {
    void (*develop)(const DevelopJob& job, const ToneTable& tone);
    void (*average)(const AverageJob& job);
};

// `instructions`: one that this processor supports.
const Functions& FunctionsFor(InstructionSet instructions);

}  // namespace imaging

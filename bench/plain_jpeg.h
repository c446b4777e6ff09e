// The measure for JPEG: libjpeg-turbo's raw-data encode as its manual has it.
#pragma once

#include <imaging/planes.h>

#include <cstdint>
#include <vector>

namespace bench {

// A picture in three planes, sides multiples of 16 (the last rows and columns repeated).
struct PlanarPicture {
    explicit PlanarPicture(const imaging::Nv12View& picture);

    uint32_t width;  // of the picture
    uint32_t height;
    uint32_t stride;  // of luma; chroma has half
    std::vector<uint8_t> y, cb, cr;
};

// One thread, 4:2:0, standard tables, no restart markers. Returns the bytes of the file; 0 if `out`
// was too small.
size_t EncodePlainJpeg(PlanarPicture& picture, int quality, uint8_t* out, size_t capacity);

}  // namespace bench

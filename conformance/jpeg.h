// The outline of a JPEG file.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

namespace conformance {

struct Jpeg {
    uint32_t width = 0;
    uint32_t height = 0;
    int orientation = 0;  // of EXIF; 0 without
    std::string problem;  // why the bytes are no JPEG file; empty for one
};

// Reads the markers up to the scan, and looks for the end right at `size`.
Jpeg ParseJpeg(const uint8_t* bytes, size_t size);

}  // namespace conformance

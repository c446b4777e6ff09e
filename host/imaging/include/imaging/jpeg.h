// NV12 to a JFIF file with 4:2:0 chroma, an EXIF block that carries the orientation, and the
// standard Huffman tables. The planes go to the encoder as they are: no colour conversion. Every
// 256 rows there is a restart marker, so that threads can encode the strips between them.
#pragma once

#include <imaging/execution.h>
#include <imaging/planes.h>

#include <cstddef>
#include <cstdint>
#include <string>

namespace imaging {

inline constexpr int kJpegQuality = 95;

// The EXIF orientation of a picture that has to be turned clockwise by `degrees` to be upright:
// 0, 90, 180, 270 give 1, 6, 3, 8; anything else gives 0.
uint16_t ExifOrientation(int32_t degrees);

struct JpegSettings {
    int quality = kJpegQuality;      // 1..100, as libjpeg counts
    int32_t orientationDegrees = 0;  // 0, 90, 180 or 270, clockwise
};

// Encodes into `out`, which has room for `capacity` bytes, and sets `size` to the bytes of the
// file. Returns what is wrong (size, settings, no room), and then has written nothing; empty when
// done.
[[nodiscard]] std::string EncodeJpeg(const Nv12View& picture, const JpegSettings& settings,
                                     uint8_t* out, size_t capacity, size_t* size,
                                     const Execution& execution = {});

}  // namespace imaging

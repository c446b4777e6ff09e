// NV12 to a JFIF file with 4:2:0 chroma, an EXIF block that carries the orientation, and the
// standard Huffman tables. The planes go to the encoder as they are: no colour conversion. Every
// 256 rows there is a restart marker, so that threads can encode the strips between them.
#pragma once

#include <base/result.h>
#include <imaging/execution.h>
#include <imaging/planes.h>

#include <cstddef>
#include <cstdint>

namespace imaging {

inline constexpr int kJpegQuality = 95;

// The EXIF orientation of a picture that has to be turned clockwise by `degrees` to be upright:
// 0, 90, 180, 270 give 1, 6, 3, 8; anything else gives 0.
uint16_t ExifOrientation(int32_t degrees);

struct JpegSettings {
    int quality = kJpegQuality;      // 1..100, as libjpeg counts
    int32_t orientationDegrees = 0;  // 0, 90, 180 or 270, clockwise
};

// Encodes into `out`, which has room for `capacity` bytes, and returns the bytes of the file.
// Fails, and then has written nothing, when a size, the settings or the room do not fit.
base::Result<size_t> EncodeJpeg(const Nv12View& picture, const JpegSettings& settings, uint8_t* out,
                                size_t capacity, const Execution& execution = {});

}  // namespace imaging

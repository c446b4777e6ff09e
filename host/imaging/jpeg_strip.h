// One strip of a picture as a JPEG file of its own, by libjpeg.
#pragma once

#include <imaging/planes.h>

#include <array>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>

namespace imaging {

inline constexpr size_t kExifSegmentBytes =
        6 + 8 + 2 + 12 + 4;               // identifier, TIFF header, one entry
inline constexpr uint32_t kMcuSide = 16;  // luma pixels of a minimum coded unit at 4:2:0

struct JpegStripSettings {
    int quality;
    uint32_t restartInterval;                     // coded units, named in the file's header
    std::array<uint8_t, kExifSegmentBytes> exif;  // the payload of the APP1 marker
};

// Bytes that grow as a file is written. Unlike a vector's they are not cleared first.
struct FileBytes {
    struct Free {
        void operator()(uint8_t* bytes) const { free(bytes); }
    };
    std::unique_ptr<uint8_t, Free> data;
    size_t size = 0;

    uint8_t& operator[](size_t at) { return data.get()[at]; }
    uint8_t operator[](size_t at) const { return data.get()[at]; }
};

// Returns empty when `file` holds the strip's file, else what libjpeg said.
[[nodiscard]] std::string EncodeJpegStrip(const Nv12View& strip, const JpegStripSettings& settings,
                                          FileBytes* file);

}  // namespace imaging

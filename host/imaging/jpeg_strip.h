// One strip of a picture as a JPEG file of its own, by libjpeg.
#pragma once

#include <imaging/planes.h>

#include <cstdint>
#include <string>
#include <vector>

#include "exif.h"

namespace imaging {

inline constexpr uint32_t kMcuSide = 16;  // luma pixels of a minimum coded unit at 4:2:0

struct JpegStripSettings {
    int quality;
    uint32_t restartInterval;  // coded units, named in the file's header
    std::array<uint8_t, kExifSegmentBytes> exif;
};

/** @return empty when `file` holds the strip's file, else what libjpeg said */
[[nodiscard]] std::string EncodeJpegStrip(const Nv12View& strip, const JpegStripSettings& settings,
                                          std::vector<uint8_t>* file);

}  // namespace imaging

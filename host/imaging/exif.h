// The EXIF block of a JPEG file.
#pragma once

#include <array>
#include <cstdint>

namespace imaging {

inline constexpr size_t kExifSegmentBytes = 6 + 8 + 2 + 12 + 4;

/** The payload of an APP1 marker: a TIFF structure with one entry, the orientation (1..8). */
std::array<uint8_t, kExifSegmentBytes> MakeExifSegment(uint16_t orientation);

}  // namespace imaging

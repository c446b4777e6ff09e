// The way up a photo was taken, from its EXIF data.
#pragma once

#include <cstddef>
#include <cstdint>

#include "picture.h"

namespace offlineframes {

// Reads the orientation tag (0x0112) of an EXIF APP1 payload that starts with "Exif\0\0" (EXIF 2.3,
// 4.6.4). Gives 1 (upright) when there is none or the data are damaged.
int exifOrientation(const uint8_t* data, size_t size);

// Turns and mirrors a picture stored with this orientation (1 to 8) upright.
Picture makeUpright(Picture picture, int orientation);

}  // namespace offlineframes

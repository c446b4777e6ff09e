// The EXIF block: a little-endian TIFF structure with the orientation as its one entry.
#include "exif.h"

#include <imaging/jpeg.h>

namespace imaging {

uint16_t ExifOrientation(int32_t degrees) {
    switch (degrees) {
        case 0:
            return 1;
        case 90:
            return 6;
        case 180:
            return 3;
        case 270:
            return 8;
        default:
            return 0;
    }
}

std::array<uint8_t, kExifSegmentBytes> MakeExifSegment(uint16_t orientation) {
    const auto low = static_cast<uint8_t>(orientation & 0xff);
    const auto high = static_cast<uint8_t>(orientation >> 8);
    return {
            'E',  'x',  'i', 'f', 0, 0,                         // identifier
            'I',  'I',  42,  0,   8, 0, 0, 0,                   // little endian, directory at 8
            1,    0,                                            // entries
            0x12, 0x01, 3,   0,   1, 0, 0, 0, low, high, 0, 0,  // orientation, SHORT, one value
            0,    0,    0,   0,                                 // no further directory
    };
}

}  // namespace imaging

// Walks over the markers of a JPEG file.
#include "jpeg.h"

#include <cstring>

#include "check.h"

namespace conformance {

namespace {

constexpr uint8_t kStart = 0xd8, kEnd = 0xd9, kScan = 0xda, kExif = 0xe1;
constexpr uint16_t kOrientationTag = 0x0112;

// SOF0 to SOF15 but for the tables between them.
bool IsFrameHeader(uint8_t marker) {
    return marker >= 0xc0 && marker <= 0xcf && marker != 0xc4 && marker != 0xc8 && marker != 0xcc;
}

uint32_t Big(const uint8_t* bytes) {
    return static_cast<uint32_t>(bytes[0] << 8 | bytes[1]);
}

// The orientation in the first directory of an EXIF segment; 0 without.
int ExifOrientation(const uint8_t* segment, size_t size) {
    constexpr size_t kHeader = 6, kEntry = 12;  // "Exif\0\0", then TIFF
    if (size < kHeader + 10 || memcmp(segment, "Exif\0", 6) != 0) return 0;
    const uint8_t* const tiff = segment + kHeader;
    const bool big = tiff[0] == 'M';
    const auto read = [&](size_t place) -> uint32_t {
        if (kHeader + place + 2 > size) return 0;
        return big ? Big(tiff + place) : static_cast<uint32_t>(tiff[place + 1] << 8 | tiff[place]);
    };
    const size_t directory = big ? read(6) : read(4);  // less than 64 KiB, as a segment is
    for (size_t i = 0; i < read(directory); ++i) {
        const size_t entry = directory + 2 + i * kEntry;
        if (read(entry) == kOrientationTag) return static_cast<int>(read(entry + 8));
    }
    return 0;
}

}  // namespace

Jpeg ParseJpeg(const uint8_t* bytes, size_t size) {
    Jpeg jpeg;
    if (size < 4 || bytes[0] != 0xff || bytes[1] != kStart) {
        jpeg.problem = "bytes that do not begin with FF D8";
        return jpeg;
    }
    size_t place = 2;
    uint8_t marker = kStart;
    while (marker != kScan) {
        if (place + 4 > size || bytes[place] != 0xff) {
            jpeg.problem = Say("no marker at byte ", place);
            return jpeg;
        }
        marker = bytes[place + 1];
        const size_t length = Big(bytes + place + 2);
        const uint8_t* const segment = bytes + place + 4;
        if (length < 2 || place + 2 + length > size) {
            jpeg.problem = Say("a segment of ", length, " bytes at byte ", place);
            return jpeg;
        }
        if (IsFrameHeader(marker) && length >= 7) {
            jpeg.height = Big(segment + 1);
            jpeg.width = Big(segment + 3);
        }
        if (marker == kExif) jpeg.orientation = ExifOrientation(segment, length - 2);
        place += 2 + length;
    }
    // In a scan FF is followed by 00 or a restart marker.
    while (place + 2 <= size && !(bytes[place] == 0xff && bytes[place + 1] == kEnd)) ++place;
    if (place + 2 != size) {
        jpeg.problem = place + 2 > size
                               ? Say("no FF D9 in them")
                               : Say("a file that ends with FF D9 after ", place + 2, " bytes");
    }
    if (jpeg.width == 0) jpeg.problem = "a scan without a frame header";
    return jpeg;
}

}  // namespace conformance

// EXIF orientation: finding it and undoing it.

#include "exif_orientation.h"

#include <string.h>

#include <optional>
#include <utility>

namespace offlineframes {
namespace {

// The TIFF structure inside EXIF: every read is bounded, byte order as the header says.
class TiffReader {
  public:
    TiffReader(const uint8_t* data, size_t size, bool bigEndian)
        : mData(data), mSize(size), mBigEndian(bigEndian) {}

    std::optional<uint32_t> number(uint64_t offset, unsigned bytes) const {
        if (offset > mSize || mSize - offset < bytes) return std::nullopt;
        uint32_t value = 0;
        for (unsigned i = 0; i < bytes; ++i) {
            const unsigned shift = 8 * (mBigEndian ? bytes - 1 - i : i);
            value |= static_cast<uint32_t>(mData[offset + i]) << shift;
        }
        return value;
    }

  private:
    const uint8_t* mData;
    size_t mSize;
    bool mBigEndian;
};

}  // namespace

int exifOrientation(const uint8_t* data, size_t size) {
    constexpr uint32_t kOrientationTag = 0x0112;
    if (size < 14 || memcmp(data, "Exif\0\0", 6) != 0) return 1;
    data += 6;
    size -= 6;
    const bool bigEndian = data[0] == 'M';
    if (memcmp(data, bigEndian ? "MM" : "II", 2) != 0) return 1;
    const TiffReader tiff(data, size, bigEndian);
    const std::optional<uint32_t> directory = tiff.number(4, 4);
    const std::optional<uint32_t> count = directory ? tiff.number(*directory, 2) : std::nullopt;
    for (uint32_t i = 0; count && i < *count; ++i) {
        const uint64_t entry = uint64_t{*directory} + 2 + uint64_t{i} * 12;
        const std::optional<uint32_t> tag = tiff.number(entry, 2);
        const std::optional<uint32_t> value = tiff.number(entry + 8, 2);
        if (!tag || !value) return 1;
        if (*tag == kOrientationTag) {
            return *value >= 1 && *value <= 8 ? static_cast<int>(*value) : 1;
        }
    }
    return 1;
}

Picture makeUpright(Picture picture, int orientation) {
    if (orientation <= 1 || orientation > 8) return picture;
    const bool turned = orientation >= 5;
    const bool flipX = orientation == 2 || orientation == 3 || orientation == 7 || orientation == 8;
    const bool flipY = orientation == 3 || orientation == 4 || orientation == 6 || orientation == 7;
    const uint32_t w = turned ? picture.height : picture.width;
    const uint32_t h = turned ? picture.width : picture.height;
    Picture upright(w, h);
    for (uint32_t y = 0; y < h; ++y) {
        for (uint32_t x = 0; x < w; ++x) {
            // Where this upright pixel lies in the stored picture.
            const uint32_t sx = turned ? y : x;
            const uint32_t sy = turned ? x : y;
            const uint8_t* source = picture.pixel(flipX ? picture.width - 1 - sx : sx,
                                                  flipY ? picture.height - 1 - sy : sy);
            memcpy(upright.pixel(x, y), source, 3);
        }
    }
    return upright;
}

}  // namespace offlineframes

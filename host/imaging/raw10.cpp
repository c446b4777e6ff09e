// Packs and unpacks rows of RAW10.
#include <imaging/raw10.h>

namespace imaging {

void UnpackRaw10Row(const uint8_t* packed, uint32_t width, uint16_t* pixels) {
    for (uint32_t x = 0; x < width; x += kRaw10PixelsPerGroup) {
        const uint8_t rest = packed[4];
        for (uint32_t i = 0; i < kRaw10PixelsPerGroup; ++i) {
            pixels[x + i] = static_cast<uint16_t>((packed[i] << 2) | ((rest >> (2 * i)) & 3));
        }
        packed += kRaw10BytesPerGroup;
    }
}

void PackRaw10Row(const uint16_t* pixels, uint32_t width, uint8_t* packed) {
    for (uint32_t x = 0; x < width; x += kRaw10PixelsPerGroup) {
        int rest = 0;
        for (uint32_t i = 0; i < kRaw10PixelsPerGroup; ++i) {
            packed[i] = static_cast<uint8_t>(pixels[x + i] >> 2);
            rest |= (pixels[x + i] & 3) << (2 * i);
        }
        packed[4] = static_cast<uint8_t>(rest);
        packed += kRaw10BytesPerGroup;
    }
}

}  // namespace imaging

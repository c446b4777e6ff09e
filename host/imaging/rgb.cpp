// NV12 and display values, one pixel at a time.
#include <imaging/camera_physics.h>
#include <imaging/rgb.h>

#include <algorithm>

namespace imaging {

void RgbFromNv12(const Nv12View& picture, uint32_t y, uint8_t* rgb) {
    const uint8_t* const luma = picture.y + y * picture.strideBytes;
    const uint8_t* const chroma = picture.uv + y / 2 * picture.strideBytes;
    for (uint32_t x = 0; x < picture.width; x += 2) {
        const int cb = chroma[x] - 128;
        const int cr = chroma[x + 1] - 128;
        // In 1/65536, and a half to round: 1.402; 0.344136, 0.714136; 1.772.
        const int add[3] = {91881 * cr + 32768, -22553 * cb - 46802 * cr + 32768,
                            116130 * cb + 32768};
        for (uint32_t i = 0; i < 2; ++i) {
            for (const int share : add) {
                const int value = (luma[x + i] * 65536 + share) >> 16;
                *rgb++ = static_cast<uint8_t>(std::clamp(value, 0, 255));
            }
        }
    }
}

void Nv12FromRgb(const uint8_t* rgb, const MutableNv12View& out) {
    const size_t rowBytes = size_t{out.width} * 3;
    for (uint32_t y = 0; y < out.height; ++y) {
        for (uint32_t x = 0; x < out.width; ++x) {
            const uint8_t* const pixel = rgb + y * rowBytes + size_t{x} * 3;
            out.y[y * out.strideBytes + x] = Luma(pixel[0], pixel[1], pixel[2]);
            if (x % 2 != 0 || y % 2 != 0) continue;
            const auto sum = [pixel, low = pixel + rowBytes](size_t channel) {
                return pixel[channel] + pixel[channel + 3] + low[channel] + low[channel + 3];
            };
            uint8_t* const chroma = out.uv + y / 2 * out.strideBytes + x;
            chroma[0] = ChromaBlue(sum(0), sum(1), sum(2));
            chroma[1] = ChromaRed(sum(0), sum(1), sum(2));
        }
    }
}

}  // namespace imaging

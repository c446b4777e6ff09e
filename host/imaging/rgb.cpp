// NV12 and display values, one pixel at a time.
#include <imaging/camera_physics.h>
#include <imaging/rgb.h>

#include <algorithm>
#include <array>
#include <cstring>

namespace imaging {

namespace {

// Samples from -256 to 511, 256 places further on, as they fit into a byte.
constexpr auto kClamped = [] {
    std::array<uint8_t, 768> table = {};
    for (int i = 256; i < 768; ++i) table[i] = static_cast<uint8_t>(std::min(i - 256, 255));
    return table;
}();

}  // namespace

// A table is faster than std::clamp for the 36 million samples of a frame, as is writing two pixels
// at once.
void RgbFromNv12(const Nv12View& picture, uint32_t y, uint8_t* rgb) {
    const uint8_t* luma = picture.y + y * picture.strideBytes;
    const uint8_t* chroma = picture.uv + y / 2 * picture.strideBytes;
    const uint8_t* const end = luma + picture.width;
    for (; luma < end; luma += 2, chroma += 2, rgb += 6) {
        const int cb = chroma[0] - 128;
        const int cr = chroma[1] - 128;
        // In 1/65536, and a half to round: 1.402; 0.344136, 0.714136; 1.772.
        const uint8_t* const red = &kClamped[256 + ((91881 * cr + 32768) >> 16)];
        const uint8_t* const green = &kClamped[256 + ((-22553 * cb - 46802 * cr + 32768) >> 16)];
        const uint8_t* const blue = &kClamped[256 + ((116130 * cb + 32768) >> 16)];
        const uint8_t pixels[6] = {red[luma[0]], green[luma[0]], blue[luma[0]],
                                   red[luma[1]], green[luma[1]], blue[luma[1]]};
        memcpy(rgb, pixels, sizeof pixels);
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

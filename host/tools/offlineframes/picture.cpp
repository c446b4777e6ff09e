// Cuts and compares pictures.

#include "picture.h"

#include <cmath>
#include <cstdlib>
#include <cstring>

namespace offlineframes {
namespace {

double PsnrOf(uint64_t squares, uint64_t samples) {
    if (squares == 0) return INFINITY;
    return 10 *
           std::log10(255.0 * 255.0 * static_cast<double>(samples) / static_cast<double>(squares));
}

}  // namespace

std::string Describe(PictureSize size) {
    return std::to_string(size.width) + "x" + std::to_string(size.height);
}

Picture CentreCrop(const Picture& picture, PictureSize size) {
    const uint32_t left = (picture.width - size.width) / 2 & ~1u;
    const uint32_t top = (picture.height - size.height) / 2 & ~1u;
    Picture out(size.width, size.height);
    for (uint32_t y = 0; y < size.height; ++y) {
        memcpy(out.Pixel(0, y), picture.Pixel(left, top + y), size_t{size.width} * 3);
    }
    return out;
}

base::Result<Comparison> ComparePictures(const Picture& a, const Picture& b) {
    if (a.width != b.width || a.height != b.height) {
        return base::Failure{
                "the pictures differ in size: " + Describe(PictureSize{a.width, a.height}) +
                " and " + Describe(PictureSize{b.width, b.height})};
    }
    Comparison result = {};
    uint64_t squares[3] = {};
    const uint64_t pixels = uint64_t{a.width} * a.height;
    for (uint64_t pixel = 0; pixel < pixels; ++pixel) {
        for (uint64_t channel = 0; channel < 3; ++channel) {
            const int difference =
                    std::abs(a.rgb[pixel * 3 + channel] - b.rgb[pixel * 3 + channel]);
            squares[channel] += static_cast<uint64_t>(difference) * difference;
            if (difference <= result.largest) continue;
            result.largest = difference;
            result.x = static_cast<uint32_t>(pixel % a.width);
            result.y = static_cast<uint32_t>(pixel / a.width);
            result.channel = static_cast<int>(channel);
        }
    }
    for (size_t channel = 0; channel < 3; ++channel) {
        result.channelPsnr[channel] = PsnrOf(squares[channel], pixels);
    }
    result.psnr = PsnrOf(squares[0] + squares[1] + squares[2], pixels * 3);
    return result;
}

}  // namespace offlineframes

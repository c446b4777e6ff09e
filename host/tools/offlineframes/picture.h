// Picture: what a person sees; 8-bit RGB in display (sRGB-like) values, rows back to back.
#pragma once

#include <base/result.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace offlineframes {

struct PictureSize {
    uint32_t width = 0;
    uint32_t height = 0;
};
inline bool operator==(const PictureSize& a, const PictureSize& b) {
    return a.width == b.width && a.height == b.height;
}
std::string Describe(PictureSize size);  // "4096x3072"

struct Picture {
    uint32_t width = 0;
    uint32_t height = 0;
    std::vector<uint8_t> rgb;  // width * height * 3 bytes, top row first

    Picture() = default;
    Picture(uint32_t w, uint32_t h) : width(w), height(h), rgb(size_t{w} * h * 3) {}

    uint8_t* Pixel(uint32_t x, uint32_t y) { return &rgb[(size_t{y} * width + x) * 3]; }
    const uint8_t* Pixel(uint32_t x, uint32_t y) const { return &rgb[(size_t{y} * width + x) * 3]; }
};

// Largest side of a picture or frame that is read or made, in pixels: cairo draws no larger one.
inline constexpr uint32_t kMaxSide = 32767;
// Largest picture, in pixels: 200 million, more than any camera has.
inline constexpr uint64_t kMaxPixels = 200'000'000;

inline bool IsUsableSize(uint64_t width, uint64_t height) {
    return width >= 1 && height >= 1 && width <= kMaxSide && height <= kMaxSide &&
           width * height <= kMaxPixels;
}

// The middle `size` pixels of `picture`, on an even offset. `size` must not be larger.
Picture CentreCrop(const Picture& picture, PictureSize size);

struct Comparison {
    // Peak signal to noise ratio in dB, peak 255; infinity for equal channels.
    std::array<double, 3> channelPsnr;  // red, green, blue
    double psnr;                        // over all samples
    // The largest difference of one sample: the first in reading order.
    int largest = 0;
    uint32_t x = 0;
    uint32_t y = 0;
    int channel = 0;
};

// How much two pictures differ. Fails, naming both sizes, when they are not of one size.
base::Result<Comparison> ComparePictures(const Picture& a, const Picture& b);

}  // namespace offlineframes

// Picture: what a person sees; 8-bit RGB in display (sRGB-like) values, rows back to back.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace offlineframes {

struct PictureSize {
    uint32_t width = 0;
    uint32_t height = 0;
};
inline bool operator==(const PictureSize& a, const PictureSize& b) {
    return a.width == b.width && a.height == b.height;
}

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

}  // namespace offlineframes

// Views of image planes in memory. A view owns nothing and checks nothing: its maker
// guarantees height x strideBytes bytes at each pointer (height / 2 rows for the CbCr plane).
#pragma once

#include <cstddef>
#include <cstdint>

namespace imaging {

// A packed RAW10 mosaic; the width is a multiple of 4, the height even.
struct RawView {
    const uint8_t* data;
    uint32_t width;   // pixels
    uint32_t height;  // rows
    size_t strideBytes;
};

struct MutableRawView {
    uint8_t* data;
    uint32_t width;
    uint32_t height;
    size_t strideBytes;

    operator RawView() const { return {data, width, height, strideBytes}; }
};

// A luma plane and a plane of interleaved Cb, Cr at half size, with the same stride. Even sizes.
struct Nv12View {
    const uint8_t* y;
    const uint8_t* uv;
    uint32_t width;   // luma pixels
    uint32_t height;  // luma rows
    size_t strideBytes;
};

struct MutableNv12View {
    uint8_t* y;
    uint8_t* uv;
    uint32_t width;
    uint32_t height;
    size_t strideBytes;

    operator Nv12View() const { return {y, uv, width, height, strideBytes}; }
};

}  // namespace imaging

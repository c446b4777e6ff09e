// Pictures from RAW10 and NV12 frames.

#include "frame_decoder.h"

#include <imaging/b2y.h>
#include <imaging/raw10.h>

#include <algorithm>

namespace offlineframes {
namespace {

// v in 1/65536, rounded and limited to a byte.
uint8_t toByte(int v) {
    return static_cast<uint8_t>(std::clamp((v + 32768) >> 16, 0, 255));
}

}  // namespace

Result<Picture> developRaw10(const Bytes& bytes, const FrameGeometry& geometry) {
    const auto [width, height] = geometry.size;
    const FrameGeometry developed = {FrameFormat::kNv12, geometry.size, width, height};
    const Result<size_t> nv12Bytes = frameBytes(developed);
    if (!nv12Bytes.ok()) return nv12Bytes.failure();
    Bytes nv12(nv12Bytes.value());
    const std::string problem = imaging::RawToNv12(
            {bytes.data(), width, height, geometry.stride},
            {nv12.data(), nv12.data() + size_t{width} * height, width, height, width});
    if (!problem.empty()) return Failure{"cannot develop " + describe(geometry) + ": " + problem};
    return showNv12(nv12, developed);
}

Picture showMosaic(const Bytes& bytes, const FrameGeometry& geometry) {
    Picture picture(geometry.size.width, geometry.size.height);
    std::vector<uint16_t> row(picture.width);
    for (uint32_t y = 0; y < picture.height; ++y) {
        imaging::UnpackRaw10Row(&bytes[size_t{y} * geometry.stride], picture.width, row.data());
        uint8_t* out = picture.pixel(0, y);
        for (const uint16_t code : row) {
            std::fill_n(out, 3, static_cast<uint8_t>(code >> 2));
            out += 3;
        }
    }
    return picture;
}

Picture showNv12(const Bytes& bytes, const FrameGeometry& geometry) {
    const size_t lumaBytes = size_t{geometry.stride} * geometry.scanlines;
    Picture picture(geometry.size.width, geometry.size.height);
    for (uint32_t y = 0; y < picture.height; ++y) {
        const uint8_t* const luma = &bytes[size_t{y} * geometry.stride];
        const uint8_t* const chroma = &bytes[lumaBytes + size_t{y / 2} * geometry.stride];
        uint8_t* out = picture.pixel(0, y);
        for (uint32_t x = 0; x < picture.width; ++x, out += 3) {
            const int base = luma[x] * 65536;
            const int cb = chroma[x & ~1u] - 128;
            const int cr = chroma[x | 1u] - 128;
            out[0] = toByte(base + 91881 * cr);               // 1.402
            out[1] = toByte(base - 22553 * cb - 46802 * cr);  // 0.344136, 0.714136
            out[2] = toByte(base + 116130 * cb);              // 1.772
        }
    }
    return picture;
}

}  // namespace offlineframes

// Byte arithmetic of RAW10 and NV12 frames.

#include "frame_geometry.h"

#include <graphics/buffer_layout.h>

#include "file_io.h"
#include "picture.h"

namespace offlineframes {
namespace {

uint64_t raw10RowBytes(uint32_t width) {
    return (uint64_t{width} * 10 + 7) / 8;
}

// Every geometry that the test modes use, as the allocator pads it and without padding.
constexpr struct {
    FrameFormat format;
    PictureSize size;
} kKnownFrames[] = {
        {FrameFormat::kRaw10, {4096, 3072}},
        {FrameFormat::kNv12, {4000, 3000}},
        {FrameFormat::kNv12, {640, 480}},
};

FrameGeometry unpadded(FrameFormat format, PictureSize size) {
    const uint64_t row = format == FrameFormat::kRaw10 ? raw10RowBytes(size.width) : size.width;
    return {format, size, static_cast<uint32_t>(row), size.height};
}

}  // namespace

const char* formatName(FrameFormat format) {
    return format == FrameFormat::kRaw10 ? "raw10" : "nv12";
}

std::optional<FrameFormat> formatFromName(const std::string& name) {
    if (name == "raw10") return FrameFormat::kRaw10;
    if (name == "nv12") return FrameFormat::kNv12;
    return std::nullopt;
}

bool operator==(const FrameGeometry& a, const FrameGeometry& b) {
    return a.format == b.format && a.size == b.size && a.stride == b.stride &&
           a.scanlines == b.scanlines;
}

std::string describe(const FrameGeometry& geometry) {
    return std::string(formatName(geometry.format)) + " " + std::to_string(geometry.size.width) +
           "x" + std::to_string(geometry.size.height) + ", stride " +
           std::to_string(geometry.stride) + ", " + std::to_string(geometry.scanlines) +
           " scan lines";
}

FrameGeometry allocatorGeometry(FrameFormat format, PictureSize size) {
    graphics::BufferDescription description;
    description.width = size.width;
    description.height = size.height;
    description.layerCount = 1;
    description.format =
            format == FrameFormat::kRaw10 ? graphics::kFormatRaw10 : graphics::kFormatYcbcr420;
    FrameGeometry geometry = {format, size};
    if (const auto layout = graphics::LayOut(description); layout.Ok()) {
        geometry.stride = layout.Value().stride;
        geometry.scanlines = layout.Value().planes[0].scanlines;
    }
    return geometry;
}

PictureSize defaultSize(FrameFormat format) {
    return format == FrameFormat::kRaw10 ? PictureSize{4096, 3072} : PictureSize{4000, 3000};
}

Result<size_t> frameBytes(const FrameGeometry& geometry) {
    const bool raw = geometry.format == FrameFormat::kRaw10;
    const std::string what = describe(geometry);
    const PictureSize size = geometry.size;
    if (!isUsableSize(size.width, size.height)) {
        return Failure{what + ": the picture must be 1 to " + std::to_string(kMaxSide) +
                       " pixels a side and at most " + std::to_string(kMaxPixels) + " in all"};
    }
    if (size.width % (raw ? 4 : 2) != 0 || size.height % 2 != 0) {
        return Failure{what + ": the width must be a multiple of " + (raw ? "4" : "2") +
                       " and the height of 2"};
    }
    const uint64_t row = raw ? raw10RowBytes(size.width) : size.width;
    if (geometry.stride < row) {
        return Failure{what + ": a row needs a stride of at least " + std::to_string(row) +
                       " bytes"};
    }
    if (geometry.scanlines < size.height) {
        return Failure{what + ": the picture needs at least " + std::to_string(size.height) +
                       " scan lines"};
    }
    if (!raw && (geometry.stride % 2 != 0 || geometry.scanlines % 2 != 0)) {
        return Failure{what + ": nv12 needs an even stride and an even number of scan lines"};
    }
    // Two 32-bit numbers: the product fits 64 bits, and half as much again after the check.
    const uint64_t plane = uint64_t{geometry.stride} * geometry.scanlines;
    const uint64_t bytes = plane > kMaxFileBytes ? plane : raw ? plane : plane + plane / 2;
    if (bytes > kMaxFileBytes) {
        return Failure{what + ": is larger than the " + std::to_string(kMaxFileBytes) +
                       " bytes a frame may have"};
    }
    return static_cast<size_t>(bytes);
}

std::optional<FrameGeometry> geometryOfFileSize(FrameFormat format, uint64_t bytes) {
    for (const auto& known : kKnownFrames) {
        if (known.format != format) continue;
        for (const FrameGeometry& geometry :
             {allocatorGeometry(format, known.size), unpadded(format, known.size)}) {
            const Result<size_t> expected = frameBytes(geometry);
            if (expected.ok() && expected.value() == bytes) return geometry;
        }
    }
    return std::nullopt;
}

PictureSize pictureInPadding(FrameFormat format, uint32_t stride, uint32_t scanlines) {
    for (const auto& known : kKnownFrames) {
        const FrameGeometry padded = allocatorGeometry(format, known.size);
        if (known.format == format && padded.stride == stride && padded.scanlines == scanlines) {
            return known.size;
        }
    }
    const uint32_t whole = format == FrameFormat::kRaw10 ? stride / 5 * 4 : stride / 2 * 2;
    return {whole, scanlines / 2 * 2};
}

}  // namespace offlineframes

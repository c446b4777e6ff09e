// Byte arithmetic of RAW10 and NV12 frames, and the reader of dumps' names.

#include "frame_geometry.h"

#include <graphics/buffer_layout.h>

#include <charconv>
#include <filesystem>

namespace offlineframes {
namespace {

uint64_t RowBytes(FrameFormat format, uint32_t width) {
    return format == FrameFormat::kRaw10 ? (uint64_t{width} * 10 + 7) / 8 : width;
}

// The usual geometries of frames of `size`, or else of the source files: with the allocator's
// padding and without any.
std::vector<FrameGeometry> UsualGeometries(FrameFormat format, PictureSize size) {
    std::vector<FrameGeometry> usual;
    for (const SourceFile& source : kSourceFiles) {
        const PictureSize picture = size.width != 0 ? size : source.size;
        const auto row = static_cast<uint32_t>(RowBytes(format, picture.width));
        if (source.format != format) continue;
        usual.push_back(AllocatorGeometry(format, picture));
        usual.push_back({format, picture, row, picture.height});
    }
    return usual;
}

// Whether a file of `bytes` bytes is such a frame. Some allocators round up to whole pages.
bool Fits(const FrameGeometry& geometry, uint64_t bytes) {
    constexpr size_t kPage = 4096;
    const Result<size_t> expected = FrameBytes(geometry);
    return expected.Ok() &&
           (bytes == expected.Value() || bytes == (expected.Value() + kPage - 1) / kPage * kPage);
}

// The number that with `known` makes up the file: scan lines from a stride or the reverse; 0 when
// there is none.
uint32_t FromFileSize(FrameFormat format, uint32_t known, uint64_t bytes) {
    const uint64_t halves = format == FrameFormat::kRaw10 ? 2 : 3;  // planes, in halves of luma
    const uint64_t other = known == 0 ? 0 : bytes * 2 / (known * halves);
    return known * other * halves == bytes * 2 && other <= UINT32_MAX ? static_cast<uint32_t>(other)
                                                                      : 0;
}

// What a file of this size probably is, for messages.
std::string Likely(const FrameGeometry& known, uint64_t bytes) {
    const bool raw = known.format == FrameFormat::kRaw10;
    for (const FrameFormat format :
         {known.format, raw ? FrameFormat::kNv12 : FrameFormat::kRaw10}) {
        for (const FrameGeometry& usual : UsualGeometries(format, {})) {
            if (Fits(usual, bytes)) return "; the size fits " + Describe(usual);
        }
    }
    const uint32_t rows = FromFileSize(known.format, known.stride, bytes);
    if (rows == 0) return "; no known geometry has that size, is the file cut short?";
    return "; the size fits " + std::to_string(rows) + " scan lines of that stride";
}

// `number`, or where it is not known `other`.
uint32_t Or(uint32_t number, uint32_t other) {
    return number != 0 ? number : other;
}

// What the caller and the file's name tell; 0 where they do not.
FrameGeometry KnownGeometry(const std::string& path, const FrameGeometry& told) {
    FrameGeometry named = {told.format, told.size, NumberInDumpName(path, "Stride").value_or(0),
                           NumberInDumpName(path, "Scanline").value_or(0)};
    for (const SourceFile& source : kSourceFiles) {
        // With a size of the caller's own the fixed name says nothing any more.
        if (std::filesystem::path(path).filename() == source.name && source.format == told.format &&
            (told.size.width == 0 || told.size == source.size)) {
            named = AllocatorGeometry(source.format, source.size);
        }
    }
    return {told.format, named.size, Or(told.stride, named.stride),
            Or(told.scanlines, named.scanlines)};
}

}  // namespace

const char* FormatName(FrameFormat format) {
    return format == FrameFormat::kRaw10 ? "raw10" : "nv12";
}

std::string Describe(const FrameGeometry& geometry) {
    return std::string(FormatName(geometry.format)) + " " + Describe(geometry.size) + ", stride " +
           std::to_string(geometry.stride) + ", " + std::to_string(geometry.scanlines) +
           " scan lines";
}

FrameGeometry AllocatorGeometry(FrameFormat format, PictureSize size) {
    graphics::BufferDescription description;
    description.width = size.width;
    description.height = size.height;
    description.layerCount = 1;
    description.format =
            format == FrameFormat::kRaw10 ? graphics::kFormatRaw10 : graphics::kFormatYcbcr420;
    const auto layout = graphics::LayOut(description);
    if (!layout.Ok()) return {format, size};
    return {format, size, layout.Value().stride, layout.Value().planes[0].scanlines};
}

PictureSize DefaultSize(FrameFormat format) {
    return kSourceFiles[format == FrameFormat::kRaw10 ? 0 : 1].size;
}

Result<size_t> FrameBytes(const FrameGeometry& geometry) {
    const bool raw = geometry.format == FrameFormat::kRaw10;
    const auto refuse = [&](const std::string& why) {
        return Failure{Describe(geometry) + ": " + why};
    };
    const auto [width, height] = geometry.size;
    if (!IsUsableSize(width, height)) {
        return refuse("the picture must be 1 to " + std::to_string(kMaxSide) +
                      " pixels a side and at most " + std::to_string(kMaxPixels) + " in all");
    }
    if (width % (raw ? 4 : 2) != 0 || height % 2 != 0) {
        return refuse(std::string("the width must be a multiple of ") + (raw ? "4" : "2") +
                      " and the height of 2");
    }
    const uint64_t row = RowBytes(geometry.format, width);
    if (geometry.stride < row) {
        return refuse("a row needs a stride of at least " + std::to_string(row) + " bytes");
    }
    if (geometry.scanlines < height) {
        return refuse("the picture needs at least " + std::to_string(height) + " scan lines");
    }
    if (!raw && (geometry.stride % 2 != 0 || geometry.scanlines % 2 != 0)) {
        return refuse("nv12 needs an even stride and an even number of scan lines");
    }
    // Two 32-bit numbers: the product fits 64 bits, and half as much again after the check.
    const uint64_t plane = uint64_t{geometry.stride} * geometry.scanlines;
    const uint64_t bytes = raw || plane > kMaxFileBytes ? plane : plane + plane / 2;
    if (bytes > kMaxFileBytes) {
        return refuse("is larger than the " + std::to_string(kMaxFileBytes) +
                      " bytes a frame may have");
    }
    return static_cast<size_t>(bytes);
}

std::optional<FrameFormat> FormatOfName(const std::string& path) {
    const std::string ending = std::filesystem::path(path).extension();
    if (ending == ".raw") return FrameFormat::kRaw10;
    if (ending == ".yuv") return FrameFormat::kNv12;
    return std::nullopt;
}

std::optional<uint32_t> NumberInDumpName(const std::string& path, const char* key) {
    const std::string name = std::filesystem::path(path).filename();
    if (name.rfind("OfflineAidl_CameraId_", 0) != 0) return std::nullopt;
    const std::string opening = std::string("_") + key + "[";
    const size_t found = name.rfind(opening);
    if (found == std::string::npos) return 0;
    uint32_t number = 0;
    const char* const start = name.c_str() + found + opening.size();
    const auto [stop, error] = std::from_chars(start, name.c_str() + name.size(), number);
    return error == std::errc() && *stop == ']' ? number : 0;
}

Result<FrameGeometry> ResolveGeometry(const std::string& path, const FrameGeometry& told,
                                      uint64_t bytes) {
    const FrameGeometry known = KnownGeometry(path, told);
    const auto agree = [](uint32_t a, uint32_t b) { return a == 0 || a == b; };
    for (const FrameGeometry& usual : UsualGeometries(known.format, known.size)) {
        if (agree(known.stride, usual.stride) && agree(known.scanlines, usual.scanlines) &&
            Fits(usual, bytes)) {
            return usual;
        }
    }
    const auto fromSize = [&](uint32_t other) { return FromFileSize(known.format, other, bytes); };
    const FrameGeometry allocated = AllocatorGeometry(known.format, known.size);  // 0 without size
    FrameGeometry geometry = known;
    geometry.stride = Or(known.stride, Or(allocated.stride, fromSize(known.scanlines)));
    geometry.scanlines = Or(known.scanlines, Or(fromSize(known.stride), allocated.scanlines));
    if (geometry.stride == 0 || geometry.scanlines == 0) {
        return Failure{path + ": cannot tell the geometry of " + std::to_string(bytes) +
                       " bytes of " + FormatName(known.format) + Likely(known, bytes) +
                       "; give --size, --stride and --scanlines"};
    }
    if (geometry.size.width == 0) {  // every whole pixel of the padded rows
        const bool raw = known.format == FrameFormat::kRaw10;
        geometry.size = {raw ? geometry.stride / 5 * 4 : geometry.stride / 2 * 2,
                         geometry.scanlines / 2 * 2};
    }
    const Result<size_t> expected = FrameBytes(geometry);
    if (!expected.Ok()) return Failure{path + ": " + expected.Error()};
    if (Fits(geometry, bytes)) return geometry;
    return Failure{path + ": expected " + std::to_string(expected.Value()) + " bytes for " +
                   Describe(geometry) + ", found " + std::to_string(bytes) + Likely(known, bytes)};
}

}  // namespace offlineframes

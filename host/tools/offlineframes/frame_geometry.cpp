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

// The geometry of `format` whose frame has exactly `bytes` bytes: with the allocator's padding or
// without any, of that size or else of a source file's.
std::optional<FrameGeometry> GeometryOfFileSize(FrameFormat format, PictureSize size,
                                                uint64_t bytes) {
    if (size.width == 0) {
        for (const SourceFile& known : kSourceFiles) {
            const auto found = GeometryOfFileSize(format, known.size, bytes);
            if (known.format == format && found) return found;
        }
        return std::nullopt;
    }
    const auto row = static_cast<uint32_t>(RowBytes(format, size.width));
    for (const FrameGeometry& geometry :
         {AllocatorGeometry(format, size), FrameGeometry{format, size, row, size.height}}) {
        const Result<size_t> expected = FrameBytes(geometry);
        if (expected.Ok() && expected.Value() == bytes) return geometry;
    }
    return std::nullopt;
}

// The picture that frames of this padding usually hold: 4000x3000 in 4096 x 3072 NV12, and so on;
// without a known one, every whole pixel of the padded rows.
PictureSize PictureInPadding(const FrameGeometry& frame) {
    for (const SourceFile& known : kSourceFiles) {
        const FrameGeometry padded = AllocatorGeometry(known.format, known.size);
        if (known.format == frame.format && padded.stride == frame.stride &&
            padded.scanlines == frame.scanlines) {
            return known.size;
        }
    }
    const bool raw = frame.format == FrameFormat::kRaw10;
    return {raw ? frame.stride / 5 * 4 : frame.stride / 2 * 2, frame.scanlines / 2 * 2};
}

// The number that with `known` makes up the file: scan lines from a stride or the reverse; 0 when
// there is none.
uint32_t FromFileSize(FrameFormat format, uint32_t known, uint64_t bytes) {
    const uint64_t halves = format == FrameFormat::kRaw10 ? 2 : 3;  // planes, in halves of luma
    const uint64_t other = bytes * 2 / (known * halves);
    const bool fits = bytes * 2 % (known * halves) == 0 && other <= UINT32_MAX;
    return fits ? static_cast<uint32_t>(other) : 0;
}

// What a file of this size probably is, for messages.
std::string Likely(const FrameGeometry& known, uint64_t bytes) {
    const bool raw = known.format == FrameFormat::kRaw10;
    for (const FrameFormat format :
         {known.format, raw ? FrameFormat::kNv12 : FrameFormat::kRaw10}) {
        const auto fits = GeometryOfFileSize(format, {}, bytes);
        if (fits) return "; the size fits " + Describe(*fits);
    }
    const uint32_t rows = known.stride == 0 ? 0 : FromFileSize(known.format, known.stride, bytes);
    if (rows == 0) return "; no known geometry has that size, is the file cut short?";
    return "; the size fits " + std::to_string(rows) + " scan lines of that stride";
}

// What caller and name tell of the padding; 0 where they do not.
FrameGeometry KnownPadding(const std::string& path, const FrameGeometry& told) {
    FrameGeometry known = {told.format, told.size, NumberInDumpName(path, "Stride"),
                           NumberInDumpName(path, "Scanline")};
    for (const SourceFile& source : kSourceFiles) {
        // With a size of the caller's own the fixed name says nothing any more.
        if (std::filesystem::path(path).filename() == source.name && source.format == told.format &&
            (told.size.width == 0 || told.size == source.size)) {
            known = AllocatorGeometry(source.format, source.size);
            known.size = told.size;
        }
    }
    if (told.stride != 0) known.stride = told.stride;
    if (told.scanlines != 0) known.scanlines = told.scanlines;
    return known;
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

uint32_t NumberInDumpName(const std::string& path, const char* key) {
    const std::string name = std::filesystem::path(path).filename();
    const std::string opening = std::string("_") + key + "[";
    const size_t found = name.rfind(opening);
    if (name.rfind("OfflineAidl_CameraId_", 0) != 0 || found == std::string::npos) return 0;
    uint32_t number = 0;
    const char* const start = name.c_str() + found + opening.size();
    const auto [stop, error] = std::from_chars(start, name.c_str() + name.size(), number);
    return error == std::errc() && *stop == ']' ? number : 0;
}

Result<FrameGeometry> ResolveGeometry(const std::string& path, const FrameGeometry& told,
                                      uint64_t bytes) {
    const FrameFormat format = told.format;
    const FrameGeometry known = KnownPadding(path, told);
    FrameGeometry geometry = known;
    const FrameGeometry allocated = AllocatorGeometry(format, told.size);  // zeros without a size
    if (known.stride == 0 && known.scanlines == 0) {
        geometry = GeometryOfFileSize(format, told.size, bytes).value_or(allocated);
    } else if (known.stride == 0) {
        geometry.stride = allocated.stride != 0 ? allocated.stride
                                                : FromFileSize(format, known.scanlines, bytes);
    } else if (known.scanlines == 0) {
        geometry.scanlines = FromFileSize(format, known.stride, bytes);
        if (geometry.scanlines == 0) geometry.scanlines = allocated.scanlines;
    }
    if (geometry.stride == 0 || geometry.scanlines == 0) {
        return Failure{path + ": cannot tell the geometry of " + std::to_string(bytes) +
                       " bytes of " + FormatName(format) + Likely(known, bytes) +
                       "; give --size, --stride and --scanlines"};
    }
    geometry.size = told.size.width != 0 ? told.size : PictureInPadding(geometry);
    const Result<size_t> expected = FrameBytes(geometry);
    if (!expected.Ok()) return Failure{path + ": " + expected.Error()};
    // Some allocators round a frame up to whole pages.
    constexpr size_t kPage = 4096;
    if (bytes != expected.Value() && bytes != (expected.Value() + kPage - 1) / kPage * kPage) {
        return Failure{path + ": expected " + std::to_string(expected.Value()) + " bytes for " +
                       Describe(geometry) + ", found " + std::to_string(bytes) +
                       Likely(known, bytes)};
    }
    return geometry;
}

}  // namespace offlineframes

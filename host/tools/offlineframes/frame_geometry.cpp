// Byte arithmetic of RAW10 and NV12 frames, and the parser of dumps' names.

#include "frame_geometry.h"

#include <graphics/buffer_layout.h>

#include <charconv>

#include "file_io.h"

namespace offlineframes {
namespace {

uint64_t RowBytes(FrameFormat format, uint32_t width) {
    return format == FrameFormat::kRaw10 ? (uint64_t{width} * 10 + 7) / 8 : width;
}

std::string LastComponent(const std::string& path) {
    return path.substr(path.rfind('/') + 1);  // npos + 1 is 0
}

bool EndsWith(const std::string& text, const std::string& ending) {
    return text.size() >= ending.size() &&
           text.compare(text.size() - ending.size(), ending.size(), ending) == 0;
}

// The number of "_<key>[<number>]" in a name. Only a plain positive one that a frame can have.
std::optional<uint32_t> BracketedNumber(const std::string& name, const std::string& key) {
    const std::string opening = "_" + key + "[";
    const size_t found = name.rfind(opening);
    if (found == std::string::npos) return std::nullopt;
    uint32_t number = 0;
    const char* const start = name.c_str() + found + opening.size();
    const auto [stop, error] = std::from_chars(start, name.c_str() + name.size(), number);
    if (error != std::errc() || *stop != ']' || number == 0) return std::nullopt;
    return number;
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
    FrameGeometry geometry = {format, size};
    if (const auto layout = graphics::LayOut(description); layout.Ok()) {
        geometry.stride = layout.Value().stride;
        geometry.scanlines = layout.Value().planes[0].scanlines;
    }
    return geometry;
}

PictureSize DefaultSize(FrameFormat format) {
    return kSourceFiles[format == FrameFormat::kRaw10 ? 0 : 1].size;
}

base::Result<size_t> FrameBytes(const FrameGeometry& geometry) {
    const bool raw = geometry.format == FrameFormat::kRaw10;
    const auto refuse = [&](const std::string& why) {
        return base::Failure{Describe(geometry) + ": " + why};
    };
    const PictureSize size = geometry.size;
    if (!IsUsableSize(size.width, size.height)) {
        return refuse("the picture must be 1 to " + std::to_string(kMaxSide) +
                      " pixels a side and at most " + std::to_string(kMaxPixels) + " in all");
    }
    if (size.width % (raw ? 4 : 2) != 0 || size.height % 2 != 0) {
        return refuse(std::string("the width must be a multiple of ") + (raw ? "4" : "2") +
                      " and the height of 2");
    }
    const uint64_t row = RowBytes(geometry.format, size.width);
    if (geometry.stride < row) {
        return refuse("a row needs a stride of at least " + std::to_string(row) + " bytes");
    }
    if (geometry.scanlines < size.height) {
        return refuse("the picture needs at least " + std::to_string(size.height) + " scan lines");
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

std::optional<FrameGeometry> GeometryOfFileSize(FrameFormat format, uint64_t bytes) {
    for (const auto& known : kSourceFiles) {
        if (known.format != format) continue;
        const auto row = static_cast<uint32_t>(RowBytes(format, known.size.width));
        const FrameGeometry unpadded = {format, known.size, row, known.size.height};
        for (const FrameGeometry& geometry : {AllocatorGeometry(format, known.size), unpadded}) {
            const base::Result<size_t> expected = FrameBytes(geometry);
            if (expected.Ok() && expected.Value() == bytes) return geometry;
        }
    }
    return std::nullopt;
}

PictureSize PictureInPadding(FrameFormat format, uint32_t stride, uint32_t scanlines) {
    for (const auto& known : kSourceFiles) {
        const FrameGeometry padded = AllocatorGeometry(format, known.size);
        if (known.format == format && padded.stride == stride && padded.scanlines == scanlines) {
            return known.size;
        }
    }
    const uint32_t whole = format == FrameFormat::kRaw10 ? stride / 5 * 4 : stride / 2 * 2;
    return {whole, scanlines / 2 * 2};
}

std::optional<DumpName> ParseDumpName(const std::string& path) {
    const std::string name = LastComponent(path);
    if (name.rfind("OfflineAidl_CameraId_", 0) != 0) return std::nullopt;
    if (FormatOfName(name)) {
        return DumpName{BracketedNumber(name, "Stride"), BracketedNumber(name, "Scanline"), {}, {}};
    }
    if (!EndsWith(name, ".jpg")) return std::nullopt;
    return DumpName{{}, {}, BracketedNumber(name, "Width"), BracketedNumber(name, "Height")};
}

std::optional<FrameGeometry> SourceFileGeometry(const std::string& path) {
    for (const SourceFile& known : kSourceFiles) {
        if (LastComponent(path) == known.name) return AllocatorGeometry(known.format, known.size);
    }
    return std::nullopt;
}

std::optional<FrameFormat> FormatOfName(const std::string& path) {
    if (EndsWith(path, ".raw")) return FrameFormat::kRaw10;
    if (EndsWith(path, ".yuv")) return FrameFormat::kNv12;
    return std::nullopt;
}

}  // namespace offlineframes

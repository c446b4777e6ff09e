// Shapes of frames in files: formats, padding and byte counts, all checked for overflow; and what
// the name and size of a file tell about them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "picture_file.h"

namespace offlineframes {

enum class FrameFormat { kRaw10, kNv12 };

const char* FormatName(FrameFormat format);  // "raw10", "nv12"

// One frame as a file holds it. RAW10: `scanlines` rows of `stride` bytes, four pixels in five
// bytes. NV12: `scanlines` rows of luma, then scanlines/2 rows of interleaved Cb and Cr, all of
// `stride` bytes. The picture is the top left width x height pixels, the rest is padding.
struct FrameGeometry {
    FrameFormat format = FrameFormat::kRaw10;
    PictureSize size;        // pixels
    uint32_t stride = 0;     // bytes per row
    uint32_t scanlines = 0;  // rows (of the luma plane)
};

// "raw10 4096x3072, stride 5120, 3072 scan lines"
std::string Describe(const FrameGeometry& geometry);

// The stride and scan lines the stand-in's allocator chooses for a picture of this size; both 0,
// which FrameBytes() refuses, when it has no such buffer.
FrameGeometry AllocatorGeometry(FrameFormat format, PictureSize size);

// The source files of the test modes, whose names tell what they hold. The first of a format has
// its default size.
struct SourceFile {
    const char* name;
    FrameFormat format;
    PictureSize size;
};
inline constexpr SourceFile kSourceFiles[] = {
        {"4096_3072_RAW10.raw", FrameFormat::kRaw10, {4096, 3072}},
        {"4000_3000_NV12.yuv", FrameFormat::kNv12, {4000, 3000}},
        {"mmf_fd.yuv", FrameFormat::kNv12, {640, 480}},
};
PictureSize DefaultSize(FrameFormat format);

// Checks that the picture fits its rows and its format's grid (RAW10 width a multiple of 4, all
// sizes even) and gives the bytes of the whole frame.
Result<size_t> FrameBytes(const FrameGeometry& geometry);

// What the ending of a name tells: ".raw" or ".yuv".
std::optional<FrameFormat> FormatOfName(const std::string& path);

// The number behind `key` in the name of a dump, OfflineAidl_.._Stride[4096]_Scanline[3072].yuv or
// OfflineAidl_.._Width[4000]_Height[3000].jpg. 0 where the name does not give it or gives nonsense;
// nothing for the name of another file.
std::optional<uint32_t> NumberInDumpName(const std::string& path, const char* key);

// The geometry of a frame file of `bytes` bytes. What the caller tells (the rest is 0) goes before
// what the file's name tells, and that before what its size tells. Fails when the geometry cannot
// be told or does not make up the file; the message gives the bytes expected and found, and what
// would match.
Result<FrameGeometry> ResolveGeometry(const std::string& path, const FrameGeometry& told,
                                      uint64_t bytes);

}  // namespace offlineframes

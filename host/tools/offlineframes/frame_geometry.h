// Shapes of frames in files: formats, padding and byte counts, all checked for overflow; and what
// the name of a dump or source file tells about them.
#pragma once

#include <base/result.h>

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>

#include "picture.h"

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
base::Result<size_t> FrameBytes(const FrameGeometry& geometry);

// A known geometry of `format` whose frame has exactly `bytes` bytes.
std::optional<FrameGeometry> GeometryOfFileSize(FrameFormat format, uint64_t bytes);

// The picture that frames of this padding usually hold: 4000x3000 in 4096 x 3072 NV12, and so on;
// without a known one, every whole pixel of the padded rows.
PictureSize PictureInPadding(FrameFormat format, uint32_t stride, uint32_t scanlines);

// Names of dumps: OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv and
// OfflineAidl_CameraId_2_Frame_1_Y2J_Width[4000]_Height[3000].jpg. Absent numbers are unknown: the
// name does not give them, gives 0 (a plane query that failed) or gives nonsense.
struct DumpName {
    std::optional<uint32_t> stride;     // bytes per row; raw and yuv
    std::optional<uint32_t> scanlines;  // rows; raw and yuv
    std::optional<uint32_t> width;      // pixels; jpg
    std::optional<uint32_t> height;     // pixels; jpg
};

// Reads the last component of `path`. Nothing when it is not a dump's name.
std::optional<DumpName> ParseDumpName(const std::string& path);

// The geometry of a file with the name of a source file.
std::optional<FrameGeometry> SourceFileGeometry(const std::string& path);

// What the ending of a name tells: ".raw" or ".yuv".
std::optional<FrameFormat> FormatOfName(const std::string& path);

}  // namespace offlineframes

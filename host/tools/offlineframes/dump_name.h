// What the file name of a dump or source file tells about the frame inside.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "frame_geometry.h"

namespace offlineframes {

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
std::optional<DumpName> parseDumpName(const std::string& path);

// The geometry of a source file known by its fixed name: 4096_3072_RAW10.raw, 4000_3000_NV12.yuv
// or mmf_fd.yuv.
std::optional<FrameGeometry> sourceFileGeometry(const std::string& path);

}  // namespace offlineframes

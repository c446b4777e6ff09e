// The streams of a session, checked against its operation mode.
#pragma once

#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>
#include <base/result.h>

#include <cstdint>
#include <vector>

namespace offlinecamera {

using ::aidl::android::hardware::camera::device::Stream;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineSessionConfigureInfo;

enum class OpMode : int32_t { kB2Y = 0, kY2J = 1, kMMF = 3 };

// The modes that have a stream set here, in numerical order.
inline constexpr OpMode kSupportedOpModes[] = {OpMode::kB2Y, OpMode::kY2J, OpMode::kMMF};

// Bytes at the end of a BLOB stream's buffer that say what the buffer holds.
inline constexpr int32_t kBlobTrailerBytes = 8;

// What one session works on:
//   B2Y  1 frame  of RAW10             to YUV streams no larger than it
//   Y2J  1 frame  of YUV               to BLOB streams of the same picture size
//   MMF  3 frames of RAW10 and a YUV   to YUV streams no larger than the RAW10 one
// Picture sizes are even and at most 32768; a RAW10 width is a multiple of 4.
struct StreamSet {
    OpMode mode;
    uint32_t framesPerRequest;
    std::vector<Stream> inputs;   // in the order of the table
    std::vector<Stream> outputs;  // one or more
};

// Fails with what is wrong with the configuration.
base::Result<StreamSet> MakeStreamSet(const OfflineSessionConfigureInfo& info);

}  // namespace offlinecamera

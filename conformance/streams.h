// The operation modes, and the streams that the test client configures for them.
#pragma once

#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>

namespace conformance {

using ::aidl::android::hardware::camera::device::Stream;
using ::aidl::android::hardware::camera::device::StreamType;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using Configuration =
        ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineSessionConfigureInfo;

enum Mode : int32_t { kB2Y = 0, kY2J = 1, kMMF = 3 };
inline constexpr Mode kModes[] = {kB2Y, kY2J, kMMF};

const char* NameOf(int32_t mode);

// Input frames of one request.
inline size_t FramesOf(int32_t mode) {
    return mode == kMMF ? 3 : 1;
}

// All input streams, then the output stream.
Configuration ConfigurationOf(Mode mode);

inline bool IsInput(const Stream& stream) {
    return stream.streamType == StreamType::INPUT;
}

}  // namespace conformance

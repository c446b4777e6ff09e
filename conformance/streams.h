// The operation modes and the streams that the test client configures for them.
#pragma once

#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineSessionConfigureInfo.h>

namespace conformance {

using ::aidl::android::hardware::camera::device::Stream;
using ::aidl::android::hardware::camera::device::StreamType;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineSessionConfigureInfo;

enum class Mode : int32_t { kB2Y = 0, kY2J = 1, kMMF = 3 };
inline constexpr Mode kModes[] = {Mode::kB2Y, Mode::kY2J, Mode::kMMF};

const char* NameOf(Mode mode);

// Input frames of one request.
size_t FramesOf(Mode mode);

// All input streams, then the output stream.
OfflineSessionConfigureInfo ConfigurationOf(Mode mode);

inline bool IsInput(const Stream& stream) {
    return stream.streamType == StreamType::INPUT;
}

}  // namespace conformance

// The messages and results that a client gets for a frame.
#pragma once

#include <aidl/android/hardware/camera/device/NotifyMsg.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/OfflineCaptureResult.h>

#include <cstdint>

#include "request.h"

namespace offlinecamera {

using ::aidl::android::hardware::camera::device::BufferStatus;
using ::aidl::android::hardware::camera::device::NotifyMsg;
using ::aidl::vendor::zel::hardware::camera::offlinecamera::OfflineCaptureResult;

// `timestamp`: nanoseconds of CLOCK_MONOTONIC, the begin of exposure and of its readout.
NotifyMsg MakeShutter(int32_t frameNumber, int64_t timestamp);

// ERROR_REQUEST: the frame has no picture.
NotifyMsg MakeError(int32_t frameNumber);

// The ids of the request's buffers without handles, one part of metadata. `status` is that of the
// output buffers.
OfflineCaptureResult MakeResult(const Request& request, BufferStatus status);

}  // namespace offlinecamera

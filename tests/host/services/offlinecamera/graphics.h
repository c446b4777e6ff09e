// Streams, configurations and buffers for tests, from the real allocator and mapper of the stand-in
// device.
#pragma once

#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/android/hardware/common/NativeHandle.h>
#include <aidl/android/hardware/graphics/common/PixelFormat.h>

#include <functional>

#include "imported_buffer.h"
#include "stream_set.h"

namespace offlinecamera {

using ::aidl::android::hardware::camera::device::Stream;
using ::aidl::android::hardware::camera::device::StreamType;
using ::aidl::android::hardware::common::NativeHandle;
using ::aidl::android::hardware::graphics::common::PixelFormat;

/** The device's mapper; ends the test program where it cannot be loaded. */
::android::sp<ImportedBuffer::IMapper> TestMapper();

Stream MakeStream(int32_t id, StreamType type, PixelFormat format, int32_t width, int32_t height,
                  int32_t bufferSize = 0);

// Small frames with a crop: RAW10 and YUV inputs of 16 x 12, YUV outputs of 12 x 8.
inline constexpr int32_t kWidth = 16;
inline constexpr int32_t kHeight = 12;
inline constexpr int32_t kBlobSize = 20000;

/** The configurations that the tool sends, with small frames. */
OfflineSessionConfigureInfo Configuration(OpMode mode);

/** A buffer that fits the stream; a BLOB one is `spare` bytes longer than the stream's size. */
NativeHandle Allocate(const Stream& stream, int32_t spare = 0);

/** Another handle to the same buffer. */
NativeHandle Dup(const NativeHandle& handle);

/** Locks the buffer for the time of the call. */
void WithBuffer(const NativeHandle& handle, const Stream& stream, Access access,
                const std::function<void(const LockedBuffer&)>& use);

}  // namespace offlinecamera

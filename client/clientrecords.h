// The client's own records of buffers, frames and requests.
#pragma once

#include <aidl/android/hardware/camera/device/BufferStatus.h>
#include <aidl/android/hardware/graphics/common/Dataspace.h>
#include <aidl/android/hardware/graphics/common/PixelFormat.h>
#include <cutils/native_handle.h>
#include <system/camera_metadata.h>

#include <cstdint>
#include <vector>

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

// The client's copy of one buffer of a result: which buffer it is, without its contents.
struct ClientStreamBuffer {
    int32_t streamId = 0;
    int64_t bufferId = 0;
    native_handle* buffer = nullptr;
    ::aidl::android::hardware::camera::device::BufferStatus status =
            ::aidl::android::hardware::camera::device::BufferStatus::OK;
    int32_t acquireFence = -1;  // descriptor, -1: none
    int32_t releaseFence = -1;  // descriptor, -1: none
};

// What has arrived for one frame number.
struct ClientFrameInfo {
    // Output buffers, from the first result for the frame that carries any.
    std::vector<ClientStreamBuffer> buffers;

    // Number of partial metadata results; 0: not yet known.
    int32_t numPartialMetadata = 0;

    // Not owned: lies in the result that is being delivered, so it has a meaning only while that
    // call runs. Null when there is none or when it is corrupt.
    const camera_metadata_t* pMetadata = nullptr;
};

// One buffer allocated for a stream.
struct ClientCaptureBuffer {
    uint32_t bufferId = 0;
    native_handle* importedBuf = nullptr;  // owned through the client's m_allocatedHandles
    uint64_t bufferSize = 0;               // bytes allocated
    int32_t stride = 0;
    int32_t scanline = 0;
};

// What was allocated for one stream, and how to look at it.
struct ClientCaptureRequest {
    uint64_t reserved = 0;  // not read
    std::vector<ClientCaptureBuffer> buffers;
    ::aidl::android::hardware::graphics::common::PixelFormat format =
            ::aidl::android::hardware::graphics::common::PixelFormat::UNSPECIFIED;
    uint64_t usage = 0;
    uint32_t width = 0;   // of the stream, pixels
    uint32_t height = 0;  // of the stream, pixels
    ::aidl::android::hardware::graphics::common::Dataspace dataSpace =
            ::aidl::android::hardware::graphics::common::Dataspace::UNKNOWN;
};

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

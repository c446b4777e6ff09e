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

// Identifies one buffer of a result. Its handle and fences are not kept.
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

    // Kept: points into the call that delivered the result, and dangles once that has returned.
    // Null when there is no metadata or when it is corrupt.
    const camera_metadata_t* pMetadata = nullptr;
};

// One buffer allocated for a stream.
struct ClientCaptureBuffer {
    uint32_t bufferId = 0;
    native_handle* importedBuf = nullptr;  // the client's as long as m_allocatedHandles has it
    uint64_t bufferSize = 0;               // bytes allocated
    int32_t stride = 0;
    int32_t scanline = 0;
};

// The buffers allocated for one stream, and the stream's geometry.
struct ClientCaptureRequest {
    uint64_t reserved = 0;  // not used
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

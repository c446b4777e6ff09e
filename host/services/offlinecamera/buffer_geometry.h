// Where the planes of an imported buffer are, and whether they hold a stream's picture.
#pragma once

#include <aidl/android/hardware/camera/device/Stream.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <base/result.h>

#include <cstdint>

namespace offlinecamera {

// Bytes from the buffer's begin, checked against its size.
struct PlanePlaces {
    uint64_t first = 0;   // the RAW, luma or only plane
    uint64_t second = 0;  // the CbCr plane
    uint64_t strideBytes = 0;
};

// Asks the mapper about an imported handle and finds its planes. Format and size are those of the
// stream, and every byte of the picture is inside the allocation; a BLOB buffer has at least the
// stream's buffer size. Fails with what does not fit.
base::Result<PlanePlaces> FindPlanes(
        const ::android::sp<::android::hardware::graphics::mapper::V4_0::IMapper>& mapper,
        void* handle, const ::aidl::android::hardware::camera::device::Stream& stream);

}  // namespace offlinecamera

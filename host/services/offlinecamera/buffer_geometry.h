// Where the planes of an imported buffer are, and whether they hold a stream's picture.
#pragma once

#include <aidl/android/hardware/camera/device/Stream.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <base/result.h>

#include <cstdint>

namespace offlinecamera {

// The device's mapper, looked up once; null, with a logged reason, where there is none.
const ::android::sp<::android::hardware::graphics::mapper::V4_0::IMapper>& DeviceMapper();

// A picture in a buffer. Bytes count from the buffer's begin, and none is outside its allocation.
struct PicturePlaces {
    uint32_t width = 0;   // pixels
    uint32_t height = 0;  // rows
    uint64_t first = 0;   // the RAW, luma or only plane
    uint64_t second = 0;  // the CbCr plane
    uint64_t strideBytes = 0;
};

// Asks the mapper about an imported handle and finds the picture. Format and size are those of the
// stream; a BLOB buffer has at least the stream's buffer size. Fails with what does not fit.
base::Result<PicturePlaces> FindPicture(
        void* handle, const ::aidl::android::hardware::camera::device::Stream& stream);

}  // namespace offlinecamera

// A graphics buffer of a client, imported through the device's mapper.
#pragma once

#include <aidl/android/hardware/common/NativeHandle.h>
#include <android/binder_auto_utils.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <imaging/planes.h>

#include <memory>

#include "stream_set.h"

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

// Owns an imported handle and the buffer's acquire fence. Used by one thread at a time.
class ImportedBuffer {
  public:
    using NativeHandle = ::aidl::android::hardware::common::NativeHandle;

    // Imports a handle (borrowed for the call) and checks that width, height, format and planes are
    // those of the stream; a BLOB buffer must be at least the stream's buffer size long.
    // `acquireFence`: no or one descriptor (borrowed; duplicated), no integers.
    static base::Result<ImportedBuffer> Import(const NativeHandle& handle,
                                               const NativeHandle& acquireFence,
                                               const Stream& stream);

    // Locks without waiting, from now on.
    void DropFence() { m_fence.set(-1); }

  private:
    friend class LockedBuffer;

    std::shared_ptr<void> m_handle;
    PicturePlaces m_picture;
    ndk::ScopedFileDescriptor m_fence;
};

enum class Access { kRead, kWrite };

// A buffer in reach of the processor until the end of its life.
class LockedBuffer {
  public:
    // Waits for the acquire fence, as long as the mapper does.
    static base::Result<LockedBuffer> Lock(const ImportedBuffer& buffer, Access access);

    uint8_t* Data() const { return m_data.get(); }
    imaging::MutableRawView Raw() const;
    imaging::MutableNv12View Nv12() const;

  private:
    std::shared_ptr<uint8_t> m_data;
    PicturePlaces m_picture;
};

}  // namespace offlinecamera

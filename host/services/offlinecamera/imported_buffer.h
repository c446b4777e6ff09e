// A graphics buffer of a client, imported through the device's mapper.
#pragma once

#include <aidl/android/hardware/camera/device/Stream.h>
#include <aidl/android/hardware/common/NativeHandle.h>
#include <android/binder_auto_utils.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <imaging/planes.h>

#include <cstdint>
#include <string>

namespace offlinecamera {

/** Where the planes of a buffer lie, checked against its size. Bytes from the buffer's begin. */
struct PlanePlaces {
    uint64_t first = 0;   // the RAW, luma or only plane
    uint64_t second = 0;  // the CbCr plane
    uint64_t strideBytes = 0;
};

/** Owns an imported handle and the buffer's acquire fence. Used by one thread at a time. */
class ImportedBuffer {
  public:
    using IMapper = ::android::hardware::graphics::mapper::V4_0::IMapper;
    using NativeHandle = ::aidl::android::hardware::common::NativeHandle;
    using Stream = ::aidl::android::hardware::camera::device::Stream;

    ImportedBuffer() = default;
    ~ImportedBuffer();
    ImportedBuffer(ImportedBuffer&& other) noexcept;
    ImportedBuffer& operator=(ImportedBuffer&& other) noexcept;

    /**
     * Imports a handle (borrowed for the call) and checks that width, height, format and planes are
     * those of the stream; a BLOB buffer must be at least the stream's buffer size long.
     *
     * @param acquireFence no or one descriptor (borrowed; duplicated), no integers
     * @return empty, or what is wrong
     */
    [[nodiscard]] std::string Import(const ::android::sp<IMapper>& mapper,
                                     const NativeHandle& handle, const NativeHandle& acquireFence,
                                     const Stream& stream);

    const PlanePlaces& Planes() const { return mPlanes; }

  private:
    friend class LockedBuffer;

    std::string ReadGeometry(const Stream& stream);
    void Release();

    ::android::sp<IMapper> mMapper;
    void* mHandle = nullptr;
    PlanePlaces mPlanes;
    ndk::ScopedFileDescriptor mFence;
};

enum class Access { kRead, kWrite };

/** A buffer in reach of the processor, from Lock until the end of its life. */
class LockedBuffer {
  public:
    LockedBuffer() = default;
    ~LockedBuffer();
    LockedBuffer(const LockedBuffer&) = delete;
    LockedBuffer& operator=(const LockedBuffer&) = delete;

    /** Locks; the mapper waits for the acquire fence. @return empty, or what went wrong */
    [[nodiscard]] std::string Lock(const ImportedBuffer& buffer, Access access);

    uint8_t* Data() const { return mData; }
    imaging::MutableRawView Raw(const ImportedBuffer::Stream& stream) const;
    imaging::MutableNv12View Nv12(const ImportedBuffer::Stream& stream) const;

  private:
    const ImportedBuffer* mBuffer = nullptr;
    uint8_t* mData = nullptr;
};

}  // namespace offlinecamera

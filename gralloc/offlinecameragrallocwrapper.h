// The program's single path to graphics memory: buffers come from the AIDL allocator and are
// imported, locked, queried and freed through the HIDL mapper.
#pragma once

#include <aidl/android/hardware/graphics/allocator/IAllocator.h>
#include <aidl/android/hardware/graphics/common/BufferUsage.h>
#include <aidl/android/hardware/graphics/common/PixelFormat.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <cutils/native_handle.h>
#include <hidl/HidlSupport.h>
#include <utils/StrongPointer.h>

#include <cstdint>
#include <memory>

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

// Holds two references and no other state; takes no lock. Any thread. An operation that fails logs
// one error line and answers null, empty or false; when the call to the mapper itself fails, only
// freeBuffer() logs. A result that comes together with an error is not taken.
//
// A native_handle* is an imported handle: it owns its descriptors, and freeBuffer() ends it.
template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
class OfflineCameraGrallocWrapper {
  public:
    using PixelFormat = ::aidl::android::hardware::graphics::common::PixelFormat;
    using BufferUsage = ::aidl::android::hardware::graphics::common::BufferUsage;
    using MetadataType = typename MapperT::MetadataType;
    using Metadata = ::android::hardware::hidl_vec<uint8_t>;

    OfflineCameraGrallocWrapper(const SharedPtrT<AllocatorT>& allocator,
                                const ::android::sp<MapperT>& mapper);
    virtual ~OfflineCameraGrallocWrapper();

    OfflineCameraGrallocWrapper(const OfflineCameraGrallocWrapper&) = delete;
    OfflineCameraGrallocWrapper& operator=(const OfflineCameraGrallocWrapper&) = delete;

    // Allocates and imports one buffer of width x height samples, or of `width` bytes for a BLOB.
    // Returns the imported handle, or null. *stride is written once the allocator has delivered one
    // buffer, even if its import then fails.
    virtual native_handle* allocate(uint32_t width, uint32_t height, PixelFormat format,
                                    BufferUsage usage, int32_t* stride);

    virtual void freeBuffer(native_handle* buffer);

    // Maps the whole buffer. Returns its CPU address, valid until unlock(), or null.
    virtual void* lock(native_handle* buffer, BufferUsage usage);

    virtual void unlock(native_handle* buffer);

    // Replaces *out by the encoded metadata; leaves it alone after a failure.
    virtual void get(native_handle* buffer, const MetadataType& type, Metadata* out);

    // Borrows `raw`, a handle that is not imported, for the call. Returns the imported one, or
    // null.
    virtual native_handle* importBuffer(const ::android::hardware::hidl_handle& raw);

    // Writes a descriptor that the caller owns to `fd`: a duplicate of the fence's, or -1 for a
    // fence that is null or empty. False for a fence with several descriptors, which leaves `fd`
    // alone, and for a failed duplication, which makes it negative.
    virtual bool importFence(const native_handle* fence, int& fd);

    // Ignores a negative `fd`.
    virtual void closeFence(int fd);

  private:
    // The mapper's opaque description of a buffer, for the allocator; empty after a failure.
    Metadata getDescriptor(uint32_t width, uint32_t height, PixelFormat format, BufferUsage usage);

    // Whether the mapper's result may be taken. Logs "Failed to OPERATION buffer" if not.
    bool Succeeded(::android::hardware::graphics::mapper::V4_0::Error error, const char* operation,
                   const void* buffer) const;

    SharedPtrT<AllocatorT> m_allocator;
    ::android::sp<MapperT> m_mapper;
};

// The one instantiation that the program uses.
using OfflineCameraGralloc =
        OfflineCameraGrallocWrapper<::aidl::android::hardware::graphics::allocator::IAllocator,
                                    ::android::hardware::graphics::mapper::V4_0::IMapper,
                                    std::shared_ptr>;

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

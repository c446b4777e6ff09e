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

// Stateless beyond its two references and without a lock; called from the main thread and from
// binder threads. An operation that fails logs one error line and answers null, empty or false.
//
// Every handle that goes in or out, except a raw one, is an imported handle: it owns its own
// descriptors and ends with freeBuffer().
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

    // Allocates and imports one buffer of width x height samples. Returns the imported handle, or
    // null; *stride is written as soon as the allocator has delivered a buffer.
    virtual native_handle* allocate(uint32_t width, uint32_t height, PixelFormat format,
                                    BufferUsage usage, int32_t* stride);

    virtual void freeBuffer(native_handle* buffer);

    // Maps the whole buffer. Returns its CPU address until unlock(), or null.
    virtual void* lock(native_handle* buffer, BufferUsage usage);

    virtual void unlock(native_handle* buffer);

    // Replaces *out by the encoded metadata; leaves it alone on failure.
    virtual void get(native_handle* buffer, const MetadataType& type, Metadata* out);

    // Borrows `raw` for the call. Returns the imported handle, or null.
    virtual native_handle* importBuffer(const ::android::hardware::hidl_handle& raw);

    // Gives the caller a descriptor of its own in `fd`: -1 for no fence, a duplicate for one.
    virtual bool importFence(const native_handle* fence, int& fd);

    virtual void closeFence(int fd);

  private:
    // The mapper's opaque buffer descriptor; empty on failure.
    Metadata getDescriptor(uint32_t width, uint32_t height, PixelFormat format, BufferUsage usage);

    SharedPtrT<AllocatorT> m_allocator;
    ::android::sp<MapperT> m_mapper;
};

// The one form the program uses.
using OfflineCameraGralloc =
        OfflineCameraGrallocWrapper<::aidl::android::hardware::graphics::allocator::IAllocator,
                                    ::android::hardware::graphics::mapper::V4_0::IMapper,
                                    std::shared_ptr>;

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

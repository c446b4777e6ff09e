// Buffer operations over the AIDL allocator and the HIDL mapper 4.0.

#include "offlinecameragrallocwrapper.h"

#include <aidl/android/hardware/graphics/allocator/AllocationResult.h>
#include <aidlcommonsupport/NativeHandle.h>
#include <android/hardware/graphics/common/1.2/types.h>
#include <android/hardware/graphics/mapper/4.0/types.h>
#include <hidl/Status.h>
#include <unistd.h>

#include <vector>

#include "clientlog.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using ::aidl::android::hardware::graphics::allocator::AllocationResult;
using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;
using ::android::hardware::graphics::mapper::V4_0::Error;
using HidlPixelFormat = ::android::hardware::graphics::common::V1_2::PixelFormat;

namespace {

// Lets a failed transport pass, as the callback was not called then, which says enough. A failed
// Return ends the process if it is destroyed without having been examined.
template <class ReturnT>
void IgnoreTransport(const ReturnT& ret) {
    static_cast<void>(ret.isOk());
}

}  // namespace

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::OfflineCameraGrallocWrapper(
        const SharedPtrT<AllocatorT>& allocator, const ::android::sp<MapperT>& mapper)
    : m_allocator(allocator), m_mapper(mapper) {}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::~OfflineCameraGrallocWrapper() =
        default;

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
hidl_vec<uint8_t> OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::getDescriptor(
        uint32_t width, uint32_t height, PixelFormat format, BufferUsage usage) {
    typename MapperT::BufferDescriptorInfo info{};
    info.name = "";
    info.width = width;
    info.height = height;
    info.layerCount = 1;
    info.format = static_cast<HidlPixelFormat>(format);
    info.usage = static_cast<uint64_t>(usage);
    info.reservedSize = 0;

    hidl_vec<uint8_t> descriptor;
    IgnoreTransport(m_mapper->createDescriptor(
            info, [&descriptor](Error error, const hidl_vec<uint8_t>& created) {
                if (error != Error::NONE) {
                    CLIENT_LOGE("Failed to create descriptor: %d", static_cast<int32_t>(error));
                    return;
                }
                descriptor = created;
            }));
    return descriptor;
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
bool OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::Succeeded(
        Error error, const char* operation, const void* buffer) const {
    if (error != Error::NONE) {
        CLIENT_LOGE("Failed to %s buffer %p: %d", operation, buffer, static_cast<int32_t>(error));
    }
    return error == Error::NONE;
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
native_handle* OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::allocate(
        uint32_t width, uint32_t height, PixelFormat format, BufferUsage usage, int32_t* stride) {
    // After a failure an empty descriptor goes to the allocator, which refuses it.
    const std::vector<uint8_t> descriptor = getDescriptor(width, height, format, usage);

    AllocationResult result;
    // Only this form of allocate(), deprecated since, takes the descriptors of a HIDL mapper.
#pragma clang diagnostic push
#pragma clang diagnostic ignored "-Wdeprecated-declarations"
    const ::ndk::ScopedAStatus status = m_allocator->allocate(descriptor, 1, &result);
#pragma clang diagnostic pop
    if (!status.isOk()) {
        CLIENT_LOGE("Failed to allocate buffer: %d", status.getExceptionCode());
        return nullptr;
    }
    constexpr uint32_t kExpectedBuffers = 1;
    if (result.buffers.size() != kExpectedBuffers) {
        CLIENT_LOGE("Invalid buffer array size (got %zu, expected %u)", result.buffers.size(),
                    kExpectedBuffers);
        return nullptr;
    }

    // The raw handle borrows its descriptors from `result`, which closes them. Only its structure
    // is deleted here.
    const auto& aidlHandle = result.buffers[0];
    native_handle* const raw = aidlHandle.fds.empty() && aidlHandle.ints.empty()
                                       ? nullptr
                                       : ::android::makeFromAidl(aidlHandle);
    native_handle* const imported = importBuffer(hidl_handle(raw));
    *stride = result.stride;
    native_handle_delete(raw);
    return imported;
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
native_handle* OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::importBuffer(
        const hidl_handle& raw) {
    native_handle* imported = nullptr;
    IgnoreTransport(m_mapper->importBuffer(raw, [this, &raw, &imported](Error error, void* buffer) {
        if (Succeeded(error, "import", raw.getNativeHandle())) {
            imported = static_cast<native_handle*>(buffer);
        }
    }));
    return imported;
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
void OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::freeBuffer(
        native_handle* buffer) {
    const auto ret = m_mapper->freeBuffer(buffer);
    if (!ret.isOk() || static_cast<Error>(ret) != Error::NONE) {
        CLIENT_LOGE("Failed to free buffer %p", static_cast<void*>(buffer));
    }
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
void* OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::lock(native_handle* buffer,
                                                                         BufferUsage usage) {
    const typename MapperT::Rect wholeBuffer{};
    const hidl_handle noFence;
    void* address = nullptr;
    IgnoreTransport(m_mapper->lock(buffer, static_cast<uint64_t>(usage), wholeBuffer, noFence,
                                   [this, buffer, &address](Error error, void* data) {
                                       if (Succeeded(error, "lock", buffer)) {
                                           address = data;
                                       }
                                   }));
    return address;
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
void OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::unlock(native_handle* buffer) {
    IgnoreTransport(m_mapper->unlock(
            buffer, [this, buffer](Error error, const hidl_handle& /*releaseFence: ignored*/) {
                Succeeded(error, "unlock", buffer);
            }));
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
void OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::get(native_handle* buffer,
                                                                       const MetadataType& type,
                                                                       Metadata* out) {
    IgnoreTransport(m_mapper->get(
            buffer, type, [this, buffer, out](Error error, const hidl_vec<uint8_t>& metadata) {
                // Kept: this failure is logged as "unlock", too.
                if (Succeeded(error, "unlock", buffer)) {
                    *out = metadata;
                }
            }));
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
bool OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::importFence(
        const native_handle* fence, int& fd) {
    if (fence == nullptr || fence->numFds == 0) {
        fd = -1;
        return true;
    }
    if (fence->numFds != 1) {
        CLIENT_LOGE("invalid fence handle with %d file descriptors", fence->numFds);
        return false;
    }
    fd = dup(fence->data[0]);
    if (fd < 0) {
        CLIENT_LOGE("failed to dup fence fd %d", fence->data[0]);
        return false;
    }
    return true;
}

template <class AllocatorT, class MapperT, template <class> class SharedPtrT>
void OfflineCameraGrallocWrapper<AllocatorT, MapperT, SharedPtrT>::closeFence(int fd) {
    if (fd >= 0) {
        close(fd);
    }
}

template class OfflineCameraGrallocWrapper<
        ::aidl::android::hardware::graphics::allocator::IAllocator,
        ::android::hardware::graphics::mapper::V4_0::IMapper, std::shared_ptr>;

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

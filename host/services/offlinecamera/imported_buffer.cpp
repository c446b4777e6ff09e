// Imports, checks and locks the buffers of a client.
#include "imported_buffer.h"

#include <aidl/android/hardware/graphics/common/BufferUsage.h>
#include <aidlcommonsupport/NativeHandle.h>

#include <string>

#include "refusal.h"

namespace offlinecamera {

namespace {

using ::aidl::android::hardware::graphics::common::BufferUsage;
using ::android::hardware::hidl_handle;
using ::android::hardware::graphics::mapper::V4_0::Error;
using base::Failure;
using base::Result;

Failure MapperFailure(const std::string& what, Error error) {
    return Failure{"the mapper does not " + what + ": error " +
                   std::to_string(static_cast<int>(error))};
}

}  // namespace

Result<ImportedBuffer> ImportedBuffer::Import(const NativeHandle& handle,
                                              const NativeHandle& acquireFence,
                                              const Stream& stream) {
    if (DeviceMapper() == nullptr) return Failure{"there is no graphics mapper"};
    if (::android::isAidlNativeHandleEmpty(handle)) {
        return Failure{"the buffer handle is empty: was the buffer allocated?"};
    }
    if (acquireFence.fds.size() > 1 || !acquireFence.ints.empty()) {
        return Failure{"acquire fence has " + std::to_string(acquireFence.fds.size()) +
                       " descriptors and " + std::to_string(acquireFence.ints.size()) +
                       " integers: it is one descriptor or nothing"};
    }
    ImportedBuffer imported;
    if (!acquireFence.fds.empty()) {
        imported.m_fence = acquireFence.fds[0].dup();
        if (imported.m_fence.get() < 0) return Failure{"acquire fence cannot be duplicated"};
    }
    native_handle_t* raw = ::android::makeFromAidl(handle);
    if (raw == nullptr) return Failure{"the buffer handle is too large"};
    Error error = Error::NO_RESOURCES;
    void* own = nullptr;
    const auto take = [&](Error result, void* buffer) {
        error = result;
        own = buffer;
    };
    const auto answer = DeviceMapper()->importBuffer(hidl_handle(raw), take);
    native_handle_delete(raw);
    if (!answer.isOk() || error != Error::NONE || own == nullptr) {
        return MapperFailure("import the buffer handle", error);
    }
    imported.m_handle = std::shared_ptr<void>(own, [](void* buffer) {
        const auto freed = DeviceMapper()->freeBuffer(buffer);
        if (!freed.isOk() || static_cast<Error>(freed) != Error::NONE) {
            LogProblem("the mapper does not free a buffer");
        }
    });
    const Result<PicturePlaces> picture = FindPicture(own, stream);
    if (!picture.Ok()) return picture.GetFailure();
    imported.m_picture = picture.Value();
    return imported;
}

Result<LockedBuffer> LockedBuffer::Lock(const ImportedBuffer& buffer, Access access) {
    const BufferUsage usage =
            access == Access::kRead ? BufferUsage::CPU_READ_OFTEN : BufferUsage::CPU_WRITE_OFTEN;
    NATIVE_HANDLE_DECLARE_STORAGE(storage, 1, 0);
    native_handle_t* const fence = native_handle_init(storage, 1, 0);
    fence->data[0] = buffer.m_fence.get();
    Error error = Error::NO_RESOURCES;
    void* data = nullptr;
    const auto take = [&](Error result, void* address) {
        error = result;
        data = address;
    };
    const auto answer = DeviceMapper()->lock(
            buffer.m_handle.get(), static_cast<uint64_t>(usage), /* the whole buffer */ {},
            hidl_handle(fence->data[0] < 0 ? nullptr : fence), take);
    if (!answer.isOk() || error != Error::NONE || data == nullptr) {
        return MapperFailure("lock the buffer", error);
    }
    LockedBuffer locked;
    locked.m_picture = buffer.m_picture;
    locked.m_data = std::shared_ptr<uint8_t>(
            static_cast<uint8_t*>(data), [handle = buffer.m_handle](uint8_t*) {
                Error result = Error::NO_RESOURCES;
                const auto unlocked = DeviceMapper()->unlock(
                        handle.get(), [&](Error e, const hidl_handle&) { result = e; });
                if (!unlocked.isOk() || result != Error::NONE) {
                    LogProblem("the mapper does not unlock a buffer");
                }
            });
    return locked;
}

imaging::MutableRawView LockedBuffer::Raw() const {
    return {Data() + m_picture.first, m_picture.width, m_picture.height, m_picture.strideBytes};
}

imaging::MutableNv12View LockedBuffer::Nv12() const {
    return {Data() + m_picture.first, Data() + m_picture.second, m_picture.width, m_picture.height,
            m_picture.strideBytes};
}

}  // namespace offlinecamera

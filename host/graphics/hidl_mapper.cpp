// Mapper 4.0 of host buffers.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <android/log.h>
#include <gralloctypes/Gralloc4.h>
#include <graphics/fence.h>
#include <graphics/imported_buffers.h>

#include <cstring>

#include "metadata.h"

namespace graphics {

namespace {

using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::graphics::mapper::V4_0::Error;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using base::Result;

// Logs a failure and returns its number.
template <class T>
Error Report(const char* operation, const Result<T>& result) {
    if (!result.Ok()) {
        __android_log_print(ANDROID_LOG_ERROR, "GraphicsMapper", "%s: %s", operation,
                            result.Error().c_str());
    }
    return static_cast<Error>(ErrorOf(result));
}

Result<hidl_vec<uint8_t>> EncodeDescriptor(const IMapper::BufferDescriptorInfo& description) {
    // The allocator judges a description; here it only must not be empty.
    if (description.width == 0 || description.height == 0 || description.layerCount == 0) {
        return Failed(BufferError::kBadValue, "width, height and layers must not be zero");
    }
    hidl_vec<uint8_t> descriptor;
    ::android::gralloc4::encodeBufferDescriptorInfo(description, &descriptor);
    return descriptor;
}

class HidlMapper final : public IMapper {
  public:
    Return<void> createDescriptor(const BufferDescriptorInfo& description,
                                  createDescriptor_cb _hidl_cb) override {
        const auto descriptor = EncodeDescriptor(description);
        const Error error = Report("createDescriptor", descriptor);
        _hidl_cb(error, descriptor.Ok() ? descriptor.Value() : hidl_vec<uint8_t>());
        return Void();
    }

    Return<void> importBuffer(const hidl_handle& rawHandle, importBuffer_cb _hidl_cb) override {
        const auto imported = m_buffers.Import(rawHandle);
        const Error error = Report("importBuffer", imported);
        _hidl_cb(error, imported.Ok() ? const_cast<native_handle_t*>(imported.Value()) : nullptr);
        return Void();
    }

    Return<Error> freeBuffer(void* buffer) override {
        return Report("freeBuffer", m_buffers.Release(buffer));
    }

    Return<void> lock(void* buffer, uint64_t cpuUsage, const Rect& accessRegion,
                      const hidl_handle& acquireFence, lock_cb _hidl_cb) override {
        const auto data = Lock(buffer, cpuUsage, accessRegion, acquireFence);
        const Error error = Report("lock", data);
        _hidl_cb(error, data.Ok() ? data.Value() : nullptr);
        return Void();
    }

    Return<void> unlock(void* buffer, unlock_cb _hidl_cb) override {
        _hidl_cb(Report("unlock", m_buffers.Unlock(buffer)), hidl_handle());
        return Void();
    }

    // All processes share the memory: there is nothing to write back or to fetch.
    Return<void> flushLockedBuffer(void* buffer, flushLockedBuffer_cb _hidl_cb) override {
        _hidl_cb(Report("flushLockedBuffer", m_buffers.RequireLocked(buffer)), hidl_handle());
        return Void();
    }

    Return<Error> rereadLockedBuffer(void* buffer) override {
        return Report("rereadLockedBuffer", m_buffers.RequireLocked(buffer));
    }

    Return<void> get(void* buffer, const MetadataType& metadataType, get_cb _hidl_cb) override {
        const auto metadata = Metadata(buffer, metadataType);
        const Error error = Report("get", metadata);
        _hidl_cb(error, metadata.Ok() ? metadata.Value() : MetadataBytes());
        return Void();
    }

  private:
    Result<void*> Lock(void* buffer, uint64_t cpuUsage, const Rect& rect,
                       const native_handle_t* fence) {
        const Result<int> descriptor = FenceDescriptor(fence);
        if (!descriptor.Ok()) return descriptor.GetFailure();
        return m_buffers.Lock(buffer, cpuUsage, {rect.left, rect.top, rect.width, rect.height},
                              descriptor.Value());
    }

    Result<MetadataBytes> Metadata(void* buffer, const MetadataType& type) {
        const auto info = m_buffers.Describe(buffer);
        if (!info.Ok()) return info.GetFailure();
        return EncodeMetadata(info.Value(), type);
    }

    ImportedBuffers& m_buffers = ImportedBuffers::Instance();
};

}  // namespace

// A new mapper (the caller takes the first reference), or null for an unknown instance. All of
// them know the same buffers.
extern "C" __attribute__((visibility("default"))) IMapper* HIDL_FETCH_IMapper(const char* name) {
    if (name == nullptr || std::strcmp(name, "default") != 0) return nullptr;
    return new HidlMapper;
}

}  // namespace graphics

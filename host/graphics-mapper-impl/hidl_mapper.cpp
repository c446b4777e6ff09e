// Mapper 4.0 of host buffers.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <gralloctypes/Gralloc4.h>
#include <graphics_core/fence.h>
#include <graphics_core/from_hidl.h>
#include <graphics_core/imported_buffers.h>

#include <cstring>
#include <vector>

#include "mapper_log.h"
#include "metadata.h"

namespace {

using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::graphics::mapper::V4_0::Error;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using graphics::BufferError;
using graphics::BufferInfo;
using graphics::failure;
using graphics::ImportedBuffers;
using graphics::Outcome;

Error toError(BufferError error) {
    return static_cast<Error>(error);
}

Error report(const char* operation, const Outcome& outcome) {
    return toError(graphics::logged(operation, outcome));
}

graphics::Region toRegion(const IMapper::Rect& rect) {
    return {rect.left, rect.top, int64_t{rect.left} + rect.width, int64_t{rect.top} + rect.height};
}

// Zeroes make no region, another one of no width or height is a mistake.
Outcome checkRect(const IMapper::Rect& rect) {
    const bool whole = rect.left == 0 && rect.top == 0 && rect.width == 0 && rect.height == 0;
    if (whole || (rect.width > 0 && rect.height > 0)) return {};
    return failure(BufferError::kBadValue, "the region is empty");
}

IMapper::BufferDump dumpOf(const BufferInfo& info) {
    std::vector<IMapper::MetadataDump> entries;
    for (const graphics::MetadataKind& kind : graphics::supportedMetadata()) {
        IMapper::MetadataDump entry{};
        entry.metadataType = graphics::standardType(static_cast<int64_t>(kind.type));
        if (encodeMetadata(info, true, entry.metadataType, &entry.metadata).ok()) {
            entries.push_back(std::move(entry));
        }
    }
    IMapper::BufferDump dump;
    dump.metadataDump = entries;
    return dump;
}

class HidlMapper final : public IMapper {
  public:
    // The allocator is the one that judges a description; here it only must not be empty.
    Return<void> createDescriptor(const BufferDescriptorInfo& description,
                                  createDescriptor_cb _hidl_cb) override {
        hidl_vec<uint8_t> descriptor;
        Outcome outcome;
        if (description.width == 0 || description.height == 0 || description.layerCount == 0) {
            outcome = failure(BufferError::kBadValue, "width, height and layers may not be zero");
        } else if (::android::gralloc4::encodeBufferDescriptorInfo(description, &descriptor) !=
                   ::android::NO_ERROR) {
            outcome = failure(BufferError::kNoResources, "the descriptor cannot be encoded");
        }
        _hidl_cb(report("createDescriptor", outcome), descriptor);
        return Void();
    }

    Return<void> importBuffer(const hidl_handle& rawHandle, importBuffer_cb _hidl_cb) override {
        const native_handle_t* imported = nullptr;
        const Error error = report("importBuffer", mBuffers.import(rawHandle, &imported));
        _hidl_cb(error, const_cast<native_handle_t*>(imported));
        return Void();
    }

    Return<Error> freeBuffer(void* buffer) override {
        return report("freeBuffer", mBuffers.release(buffer));
    }

    Return<Error> validateBufferSize(void* buffer, const BufferDescriptorInfo& description,
                                     uint32_t stride) override {
        BufferInfo info;
        Outcome outcome = mBuffers.describe(buffer, &info);
        if (outcome.ok()) {
            outcome = graphics::checkFits(info, graphics::fromHidl(description), stride);
        }
        return report("validateBufferSize", outcome);
    }

    Return<void> getTransportSize(void* buffer, getTransportSize_cb _hidl_cb) override {
        BufferInfo info;
        const Error error = report("getTransportSize", mBuffers.describe(buffer, &info));
        const bool ok = error == Error::NONE;
        _hidl_cb(error, ok ? graphics::kHandleFds : 0, ok ? graphics::kHandleInts : 0);
        return Void();
    }

    Return<void> lock(void* buffer, uint64_t cpuUsage, const Rect& accessRegion,
                      const hidl_handle& acquireFence, lock_cb _hidl_cb) override {
        void* data = nullptr;
        int fence = -1;
        Outcome outcome = checkRect(accessRegion);
        if (outcome.ok()) outcome = graphics::fenceDescriptor(acquireFence, &fence);
        if (outcome.ok()) {
            outcome = mBuffers.lock(buffer, cpuUsage, toRegion(accessRegion), fence, &data);
        }
        _hidl_cb(report("lock", outcome), data);
        return Void();
    }

    Return<void> unlock(void* buffer, unlock_cb _hidl_cb) override {
        _hidl_cb(report("unlock", mBuffers.unlock(buffer)), hidl_handle());
        return Void();
    }

    // The memory is one for every process: there is nothing to write back or to fetch.
    Return<void> flushLockedBuffer(void* buffer, flushLockedBuffer_cb _hidl_cb) override {
        _hidl_cb(report("flushLockedBuffer", mBuffers.requireLocked(buffer)), hidl_handle());
        return Void();
    }

    Return<Error> rereadLockedBuffer(void* buffer) override {
        return report("rereadLockedBuffer", mBuffers.requireLocked(buffer));
    }

    Return<void> isSupported(const BufferDescriptorInfo& description,
                             isSupported_cb _hidl_cb) override {
        graphics::BufferLayout layout;
        _hidl_cb(Error::NONE, graphics::layOut(graphics::fromHidl(description), &layout).ok());
        return Void();
    }

    Return<void> get(void* buffer, const MetadataType& metadataType, get_cb _hidl_cb) override {
        BufferInfo info;
        hidl_vec<uint8_t> metadata;
        Outcome outcome = mBuffers.describe(buffer, &info);
        if (outcome.ok()) outcome = encodeMetadata(info, true, metadataType, &metadata);
        _hidl_cb(report("get", outcome), metadata);
        return Void();
    }

    Return<Error> set(void* buffer, const MetadataType&, const hidl_vec<uint8_t>&) override {
        BufferInfo info;
        Outcome outcome = mBuffers.describe(buffer, &info);
        if (outcome.ok()) {
            outcome = failure(BufferError::kUnsupported, "metadata of a buffer never changes");
        }
        return report("set", outcome);
    }

    Return<void> getFromBufferDescriptorInfo(const BufferDescriptorInfo& description,
                                             const MetadataType& metadataType,
                                             getFromBufferDescriptorInfo_cb _hidl_cb) override {
        BufferInfo info;
        info.description = graphics::fromHidl(description);
        hidl_vec<uint8_t> metadata;
        Outcome outcome = graphics::layOut(info.description, &info.layout);
        if (outcome.ok()) outcome = encodeMetadata(info, false, metadataType, &metadata);
        _hidl_cb(report("getFromBufferDescriptorInfo", outcome), metadata);
        return Void();
    }

    Return<void> listSupportedMetadataTypes(listSupportedMetadataTypes_cb _hidl_cb) override {
        std::vector<MetadataTypeDescription> list;
        for (const graphics::MetadataKind& kind : graphics::supportedMetadata()) {
            MetadataTypeDescription entry{};
            entry.metadataType = graphics::standardType(static_cast<int64_t>(kind.type));
            entry.description = kind.description;
            entry.isGettable = true;
            entry.isSettable = false;
            list.push_back(std::move(entry));
        }
        _hidl_cb(Error::NONE, list);
        return Void();
    }

    Return<void> dumpBuffer(void* buffer, dumpBuffer_cb _hidl_cb) override {
        BufferInfo info;
        const Error error = report("dumpBuffer", mBuffers.describe(buffer, &info));
        _hidl_cb(error, error == Error::NONE ? dumpOf(info) : BufferDump());
        return Void();
    }

    Return<void> dumpBuffers(dumpBuffers_cb _hidl_cb) override {
        std::vector<BufferDump> dumps;
        for (const BufferInfo& info : mBuffers.all()) dumps.push_back(dumpOf(info));
        _hidl_cb(Error::NONE, dumps);
        return Void();
    }

    Return<void> getReservedRegion(void* buffer, getReservedRegion_cb _hidl_cb) override {
        BufferInfo info;
        _hidl_cb(report("getReservedRegion", mBuffers.describe(buffer, &info)), nullptr, 0);
        return Void();
    }

  private:
    ImportedBuffers& mBuffers = ImportedBuffers::instance();
};

}  // namespace

// A new mapper (the caller takes the first reference), or null for an unknown instance. All of
// them know the same buffers.
extern "C" __attribute__((visibility("default"))) IMapper* HIDL_FETCH_IMapper(const char* name) {
    if (name == nullptr || std::strcmp(name, "default") != 0) return nullptr;
    return new HidlMapper;
}

// IMapper 4.0: import, map and describe graphics buffers inside this process.
#pragma once

#include <android/hardware/graphics/common/1.2/types.h>
#include <android/hardware/graphics/mapper/4.0/types.h>
#include <android/hidl/base/1.0/IBase.h>
#include <hidl/HidlSupport.h>

#include <functional>
#include <string>
#include <type_traits>

namespace android::hardware::graphics::mapper::V4_0 {

// Callbacks are called before the method returns; what they are given is valid only inside them.
// The nested structs have no initialisers: write `{}` for zeroes.
struct IMapper : public ::android::hidl::base::V1_0::IBase {
    static const char* descriptor;

    struct BufferDescriptorInfo final {
        hidl_string name;
        uint32_t width;   // pixels; bytes for BLOB
        uint32_t height;  // pixels; 1 for BLOB
        uint32_t layerCount;
        common::V1_2::PixelFormat format;
        hidl_bitfield<common::V1_2::BufferUsage> usage;
        uint64_t reservedSize;  // bytes
    };

    // In pixels. All zero: the whole buffer.
    struct Rect final {
        int32_t left;
        int32_t top;
        int32_t width;
        int32_t height;
    };

    struct MetadataType final {
        hidl_string name;
        int64_t value;
    };

    struct MetadataTypeDescription final {
        MetadataType metadataType;
        hidl_string description;
        bool isGettable;
        bool isSettable;
    };

    struct MetadataDump final {
        MetadataType metadataType;
        hidl_vec<uint8_t> metadata;
    };

    struct BufferDump final {
        hidl_vec<MetadataDump> metadataDump;
    };

    bool isRemote() const override { return false; }

    // What an implementation leaves out answers UNSUPPORTED.

    using createDescriptor_cb =
            std::function<void(Error error, const hidl_vec<uint8_t>& descriptor)>;
    virtual Return<void> createDescriptor(const BufferDescriptorInfo& /*description*/,
                                          createDescriptor_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    // `rawHandle` stays the caller's. `buffer` is independent of it, until freeBuffer().
    using importBuffer_cb = std::function<void(Error error, void* buffer)>;
    virtual Return<void> importBuffer(const hidl_handle& /*rawHandle*/, importBuffer_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    virtual Return<Error> freeBuffer(void* /*buffer*/) { return Error::UNSUPPORTED; }

    virtual Return<Error> validateBufferSize(void* /*buffer*/,
                                             const BufferDescriptorInfo& /*description*/,
                                             uint32_t /*stride*/) {
        return Error::UNSUPPORTED;
    }

    using getTransportSize_cb = std::function<void(Error error, uint32_t numFds, uint32_t numInts)>;
    virtual Return<void> getTransportSize(void* /*buffer*/, getTransportSize_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    // `data` is the address of the first byte of the whole buffer, whatever the region. An empty
    // `acquireFence` is no fence.
    using lock_cb = std::function<void(Error error, void* data)>;
    virtual Return<void> lock(void* /*buffer*/, uint64_t /*cpuUsage*/, const Rect& /*accessRegion*/,
                              const hidl_handle& /*acquireFence*/, lock_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    using unlock_cb = std::function<void(Error error, const hidl_handle& releaseFence)>;
    virtual Return<void> unlock(void* /*buffer*/, unlock_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    using flushLockedBuffer_cb = std::function<void(Error error, const hidl_handle& releaseFence)>;
    virtual Return<void> flushLockedBuffer(void* /*buffer*/, flushLockedBuffer_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    virtual Return<Error> rereadLockedBuffer(void* /*buffer*/) { return Error::UNSUPPORTED; }

    using isSupported_cb = std::function<void(Error error, bool supported)>;
    virtual Return<void> isSupported(const BufferDescriptorInfo& /*description*/,
                                     isSupported_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    using get_cb = std::function<void(Error error, const hidl_vec<uint8_t>& metadata)>;
    virtual Return<void> get(void* /*buffer*/, const MetadataType& /*metadataType*/,
                             get_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    virtual Return<Error> set(void* /*buffer*/, const MetadataType& /*metadataType*/,
                              const hidl_vec<uint8_t>& /*metadata*/) {
        return Error::UNSUPPORTED;
    }

    using getFromBufferDescriptorInfo_cb =
            std::function<void(Error error, const hidl_vec<uint8_t>& metadata)>;
    virtual Return<void> getFromBufferDescriptorInfo(const BufferDescriptorInfo& /*description*/,
                                                     const MetadataType& /*metadataType*/,
                                                     getFromBufferDescriptorInfo_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    using listSupportedMetadataTypes_cb =
            std::function<void(Error error, const hidl_vec<MetadataTypeDescription>& descriptions)>;
    virtual Return<void> listSupportedMetadataTypes(listSupportedMetadataTypes_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    using dumpBuffer_cb = std::function<void(Error error, const BufferDump& bufferDump)>;
    virtual Return<void> dumpBuffer(void* /*buffer*/, dumpBuffer_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    using dumpBuffers_cb =
            std::function<void(Error error, const hidl_vec<BufferDump>& bufferDumps)>;
    virtual Return<void> dumpBuffers(dumpBuffers_cb _hidl_cb) { return unsupported(_hidl_cb); }

    using getReservedRegion_cb =
            std::function<void(Error error, void* reservedRegion, uint64_t reservedSize)>;
    virtual Return<void> getReservedRegion(void* /*buffer*/, getReservedRegion_cb _hidl_cb) {
        return unsupported(_hidl_cb);
    }

    // The mapper named `serviceName`: one that was registered in this process, else a new instance
    // from the implementation library in the vendor's HAL directory. Null, with a logged reason,
    // when there is none. `getStub` leaves registered ones out. Never waits.
    static ::android::sp<IMapper> getService(const std::string& serviceName = "default",
                                             bool getStub = false);
    static ::android::sp<IMapper> getService(const char serviceName[], bool getStub = false) {
        return getService(std::string(serviceName), getStub);
    }
    static ::android::sp<IMapper> getService(const hidl_string& serviceName, bool getStub = false) {
        return getService(std::string(serviceName), getStub);
    }
    static ::android::sp<IMapper> getService(bool getStub) {
        return getService(std::string("default"), getStub);
    }

    // Makes this object what getService(serviceName) returns in this process, in place of an
    // earlier one. Keeps a reference. BAD_VALUE for an empty name.
    [[nodiscard]] ::android::status_t registerAsService(const std::string& serviceName = "default");

  private:
    template <typename... Values>
    static Return<void> unsupported(const std::function<void(Error, Values...)>& callback) {
        callback(Error::UNSUPPORTED, std::decay_t<Values>()...);
        return Void();
    }
};

}  // namespace android::hardware::graphics::mapper::V4_0

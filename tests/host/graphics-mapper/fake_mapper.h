// A mapper that supports nothing; freeBuffer() answers with a number that tells fakes apart.
#pragma once

#include <android/hardware/graphics/mapper/4.0/IMapper.h>

#include <functional>
#include <type_traits>

namespace fake {

using ::android::hardware::hidl_handle;
using ::android::hardware::hidl_vec;
using ::android::hardware::Return;
using ::android::hardware::Void;
using ::android::hardware::graphics::mapper::V4_0::Error;
using ::android::hardware::graphics::mapper::V4_0::IMapper;

class FakeMapper : public IMapper {
  public:
    explicit FakeMapper(Error mark, bool* destroyed = nullptr)
        : mMark(mark), mDestroyed(destroyed) {}
    ~FakeMapper() override {
        if (mDestroyed != nullptr) *mDestroyed = true;
    }

    Return<void> createDescriptor(const BufferDescriptorInfo&, createDescriptor_cb cb) override {
        return refuse(cb);
    }
    Return<void> importBuffer(const hidl_handle&, importBuffer_cb cb) override {
        return refuse(cb);
    }
    Return<Error> freeBuffer(void*) override { return mMark; }
    Return<Error> validateBufferSize(void*, const BufferDescriptorInfo&, uint32_t) override {
        return Error::UNSUPPORTED;
    }
    Return<void> getTransportSize(void*, getTransportSize_cb cb) override { return refuse(cb); }
    Return<void> lock(void*, uint64_t, const IMapper::Rect&, const hidl_handle&,
                      lock_cb cb) override {
        return refuse(cb);
    }
    Return<void> unlock(void*, unlock_cb cb) override { return refuse(cb); }
    Return<void> flushLockedBuffer(void*, flushLockedBuffer_cb cb) override { return refuse(cb); }
    Return<Error> rereadLockedBuffer(void*) override { return Error::UNSUPPORTED; }
    Return<void> isSupported(const BufferDescriptorInfo&, isSupported_cb cb) override {
        return refuse(cb);
    }
    Return<void> get(void*, const MetadataType&, get_cb cb) override { return refuse(cb); }
    Return<Error> set(void*, const MetadataType&, const hidl_vec<uint8_t>&) override {
        return Error::UNSUPPORTED;
    }
    Return<void> getFromBufferDescriptorInfo(const BufferDescriptorInfo&, const MetadataType&,
                                             getFromBufferDescriptorInfo_cb cb) override {
        return refuse(cb);
    }
    Return<void> listSupportedMetadataTypes(listSupportedMetadataTypes_cb cb) override {
        return refuse(cb);
    }
    Return<void> dumpBuffer(void*, dumpBuffer_cb cb) override { return refuse(cb); }
    Return<void> dumpBuffers(dumpBuffers_cb cb) override { return refuse(cb); }
    Return<void> getReservedRegion(void*, getReservedRegion_cb cb) override { return refuse(cb); }

  private:
    // The answer of an operation without what it would give.
    template <typename... Values>
    static Return<void> refuse(const std::function<void(Error, Values...)>& cb) {
        cb(Error::UNSUPPORTED, std::decay_t<Values>()...);
        return Void();
    }

    const Error mMark;
    bool* const mDestroyed;
};

}  // namespace fake

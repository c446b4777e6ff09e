// Lookups of mappers and HAL libraries, operations of the HIDL mapper, queries of plane layouts.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <vndksupport/linker.h>

#include <utility>

#include "gralloc/zeldisplaymapper.h"
#include "injector.h"
#include "tests/host/graphics-mapper/fake_mapper.h"

namespace {

using ::android::sp;
using ::android::hardware::Status;
using fake::Error;
using fake::hidl_handle;
using fake::hidl_vec;
using fake::IMapper;
using fake::Return;
using injector::Kind;

// Passes on what the tool uses. An operation that fails is not passed on.
class FailingMapper final : public fake::FakeMapper {
  public:
    explicit FailingMapper(sp<IMapper> real)
        : FakeMapper(Error::UNSUPPORTED), mReal(std::move(real)) {}

    Return<void> createDescriptor(const BufferDescriptorInfo& description,
                                  createDescriptor_cb cb) override {
        return guarded(
                "createDescriptor", [&] { cb(kError, {}); },
                [&] { return mReal->createDescriptor(description, cb); });
    }
    Return<void> importBuffer(const hidl_handle& raw, importBuffer_cb cb) override {
        return guarded(
                "importBuffer", [&] { cb(kError, nullptr); },
                [&] { return mReal->importBuffer(raw, cb); });
    }
    Return<Error> freeBuffer(void* buffer) override {
        if (injector::fails(Kind::kMapperError, "freeBuffer")) return kError;
        if (injector::fails(Kind::kMapperTransport, "freeBuffer")) return broken();
        return mReal->freeBuffer(buffer);
    }
    Return<void> lock(void* buffer, uint64_t usage, const IMapper::Rect& region,
                      const hidl_handle& fence, lock_cb cb) override {
        return guarded(
                "lock", [&] { cb(kError, nullptr); },
                [&] { return mReal->lock(buffer, usage, region, fence, cb); });
    }
    Return<void> unlock(void* buffer, unlock_cb cb) override {
        return guarded(
                "unlock", [&] { cb(kError, nullptr); }, [&] { return mReal->unlock(buffer, cb); });
    }
    Return<void> get(void* buffer, const MetadataType& type, get_cb cb) override {
        return guarded(
                "get", [&] { cb(kError, {}); }, [&] { return mReal->get(buffer, type, cb); });
    }

  private:
    static constexpr Error kError = Error::NO_RESOURCES;

    static Status broken() { return Status::fromStatusT(::android::DEAD_OBJECT); }

    template <typename Refuse, typename PassOn>
    static Return<void> guarded(const char* operation, Refuse refuse, PassOn passOn) {
        if (injector::fails(Kind::kMapperTransport, operation)) return broken();
        if (!injector::fails(Kind::kMapperError, operation)) return passOn();
        refuse();
        return fake::Void();
    }

    const sp<IMapper> mReal;
};

}  // namespace

namespace android::hardware::graphics::mapper::V4_0 {

sp<IMapper> IMapper::getService(const std::string& serviceName, bool getStub) {
    using GetService = sp<IMapper> (*)(const std::string&, bool);
    // The name in the library: clang's for the declaration above.
    static const auto real = injector::next<GetService>(
            "_ZN7android8hardware8graphics6mapper4V4_07IMapper10getServiceERKNSt3__112basic_"
            "stringIcNS5_11char_traitsIcEENS5_9allocatorIcEEEEb");
    if (injector::fails(Kind::kLibrary, "IMapper.getService")) return nullptr;
    sp<IMapper> mapper = real(serviceName, getStub);
    return mapper == nullptr ? nullptr : sp<IMapper>(new FailingMapper(mapper));
}

}  // namespace android::hardware::graphics::mapper::V4_0

extern "C" void* android_load_sphal_library(const char* name, int flag) {
    static const auto real =
            injector::next<decltype(&android_load_sphal_library)>("android_load_sphal_library");
    if (injector::fails(Kind::kLibrary, "android_load_sphal_library", name)) return nullptr;
    return real(name, flag);
}

namespace mapper {

int32_t GetFromBufferDescriptor(
        ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo info,
        vendor_zel_hardware_display_common_MetadataType type, void* out, bool flag) {
    static const auto real = injector::next<decltype(&GetFromBufferDescriptor)>(
            "_ZN6mapper23GetFromBufferDescriptorEN4aidl7android8hardware8graphics9allocator20"
            "BufferDescriptorInfoE47vendor_zel_hardware_display_common_MetadataTypePvb");
    constexpr int32_t kNoResources = 5;
    if (injector::fails(Kind::kPlaneLayout, "GetFromBufferDescriptor")) return kNoResources;
    return real(std::move(info), type, out, flag);
}

}  // namespace mapper

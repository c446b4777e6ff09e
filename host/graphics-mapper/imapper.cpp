// Lookup of mapper 4.0: in this process first, then the vendor's implementation library.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <android/log.h>
#include <dlfcn.h>
#include <host_mapper_registry.h>
#include <vndksupport/linker.h>

namespace android {
namespace hardware {
namespace graphics {
namespace mapper {
namespace V4_0 {

namespace {

constexpr char kLogTag[] = "HidlServiceManagement";
constexpr char kImplementation[] = "android.hardware.graphics.mapper@4.0-impl-zel.so";
constexpr char kFetchSymbol[] = "HIDL_FETCH_IMapper";

// A mapper lives in its caller's process: addresses cannot cross a transport.
sp<IMapper> openPassthrough(const std::string& serviceName) {
    void* library = android_load_sphal_library(kImplementation, RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) return nullptr;  // the loader has logged why

    // The library stays loaded: objects of its classes may live as long as the process.
    using Fetch = IMapper* (*)(const char* name);
    const auto fetch = reinterpret_cast<Fetch>(dlsym(library, kFetchSymbol));
    if (fetch == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s has no %s: not a mapper implementation",
                            kImplementation, kFetchSymbol);
        return nullptr;
    }
    sp<IMapper> mapper = fetch(serviceName.c_str());
    if (mapper == nullptr) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag, "%s provides no %s/%s", kImplementation,
                            IMapper::descriptor, serviceName.c_str());
    }
    return mapper;
}

}  // namespace

const char* IMapper::descriptor = "android.hardware.graphics.mapper@4.0::IMapper";

sp<IMapper> IMapper::getService(const std::string& serviceName, bool getStub) {
    if (!getStub) {
        if (sp<IMapper> registered = host::findRegisteredMapper(serviceName)) return registered;
    }
    if (serviceName != "default") {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "getService: %s/%s is neither registered nor the vendor's \"default\"",
                            descriptor, serviceName.c_str());
        return nullptr;
    }
    return openPassthrough(serviceName);
}

sp<IMapper> IMapper::tryGetService(const std::string& serviceName, bool getStub) {
    return getService(serviceName, getStub);
}

status_t IMapper::registerAsService(const std::string& serviceName) {
    if (serviceName.empty()) {
        __android_log_write(ANDROID_LOG_ERROR, kLogTag, "registerAsService: the name is empty");
        return BAD_VALUE;
    }
    host::registerMapper(serviceName, this);
    return OK;
}

Return<void> IMapper::interfaceChain(interfaceChain_cb _hidl_cb) {
    _hidl_cb({descriptor, IBase::descriptor});
    return Void();
}

Return<void> IMapper::interfaceDescriptor(interfaceDescriptor_cb _hidl_cb) {
    _hidl_cb(descriptor);
    return Void();
}

}  // namespace V4_0
}  // namespace mapper
}  // namespace graphics
}  // namespace hardware
}  // namespace android

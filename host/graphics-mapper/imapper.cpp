// Lookup of mapper 4.0: in this process first, then the vendor's implementation library.
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <android/log.h>
#include <dlfcn.h>
#include <host_mapper_registry.h>
#include <vndksupport/linker.h>

#include <map>
#include <mutex>
#include <utility>

namespace android::hardware::graphics::mapper::V4_0 {

namespace {

constexpr char kLogTag[] = "HidlServiceManagement";
constexpr char kImplementation[] = "android.hardware.graphics.mapper@4.0-impl-zel.so";
constexpr char kFetchSymbol[] = "HIDL_FETCH_IMapper";

// The mappers that were registered in this process.
struct Registry {
    std::mutex mutex;
    std::map<std::string, sp<IMapper>> mappers;
};

Registry& ThisRegistry() {
    // Never destroyed: threads may still look services up while the process exits.
    static Registry* const registry = new Registry;
    return *registry;
}

// Puts `mapper` (null: none) in place of the registered one.
void Register(const std::string& serviceName, sp<IMapper> mapper) {
    Registry& registry = ThisRegistry();
    std::unique_lock<std::mutex> lock(registry.mutex);
    std::swap(registry.mappers[serviceName], mapper);
    lock.unlock();  // before the earlier mapper's destructor, which may call back
}

sp<IMapper> FindRegistered(const std::string& serviceName) {
    Registry& registry = ThisRegistry();
    std::lock_guard<std::mutex> lock(registry.mutex);
    const auto found = registry.mappers.find(serviceName);
    return found == registry.mappers.end() ? nullptr : found->second;
}

// A mapper lives in its caller's process: addresses cannot cross a transport.
sp<IMapper> OpenPassthrough(const std::string& serviceName) {
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
        if (sp<IMapper> registered = FindRegistered(serviceName)) return registered;
    }
    if (serviceName != "default") {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "getService: %s/%s is neither registered nor the vendor's \"default\"",
                            descriptor, serviceName.c_str());
        return nullptr;
    }
    return OpenPassthrough(serviceName);
}

status_t IMapper::registerAsService(const std::string& serviceName) {
    if (serviceName.empty()) {
        __android_log_write(ANDROID_LOG_ERROR, kLogTag, "registerAsService: the name is empty");
        return BAD_VALUE;
    }
    Register(serviceName, this);
    return OK;
}

}  // namespace android::hardware::graphics::mapper::V4_0

namespace host {

void unregisterMapper(const std::string& serviceName) {
    ::android::hardware::graphics::mapper::V4_0::Register(serviceName, nullptr);
}

}  // namespace host

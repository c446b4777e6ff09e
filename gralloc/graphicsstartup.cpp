// Connects to the allocator and the mappers; failures are logged and leave empty members.

#include "graphicsstartup.h"

#include <android/binder_auto_utils.h>
#include <android/binder_manager.h>
#include <dlfcn.h>
#include <vndksupport/linker.h>

#include <string>

#include "clientlog.h"

namespace vendor::zel::hardware::camera::offlinecamera::implementation {

using ::aidl::android::hardware::graphics::allocator::IAllocator;
using HidlMapper = ::android::hardware::graphics::mapper::V4_0::IMapper;

namespace {

constexpr char kDefaultMapperSuffix[] = "zel";
constexpr char kLoaderSymbol[] = "AIMapper_loadIMapper";
constexpr char kVersionSymbol[] = "ANDROID_HAL_MAPPER_VERSION";
constexpr uint32_t kLastKnownMapperVersion = AIMAPPER_VERSION_5;

using LoadIMapper = AIMapper_Error (*)(AIMapper** outImplementation);

// What the loader wrote, also when its mapper was then refused: the next start-up in this process
// takes it without the version test. Main thread only.
AIMapper* s_aiMapper = nullptr;

std::string AllocatorInstance() {
    return std::string(IAllocator::descriptor) + "/default";
}

std::shared_ptr<IAllocator> FindAllocator(const std::string& instance) {
    const ::ndk::SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
    return IAllocator::fromBinder(binder);
}

bool IsKnownVersion(void* library) {
    const auto* version = static_cast<const uint32_t*>(dlsym(library, kVersionSymbol));
    if (version == nullptr) {
        return true;
    }
    if (*version == kLastKnownMapperVersion && s_aiMapper->version == kLastKnownMapperVersion) {
        return true;
    }
    CLIENT_LOGE(
            "IMapper version %d not equal to last known stable version %d, aborting IMapper init.",
            static_cast<int32_t>(*version), static_cast<int32_t>(kLastKnownMapperVersion));
    return false;
}

AIMapper* LoadAIMapper() {
    if (s_aiMapper != nullptr) {
        CLIENT_LOGI("Using previously loaded IMapper library.");
        return s_aiMapper;
    }
    std::string suffix = kDefaultMapperSuffix;
    const std::shared_ptr<IAllocator> allocator = FindAllocator(AllocatorInstance());
    if (allocator != nullptr) {
        // The status is not examined: after a failure the suffix is what the call left in it.
        allocator->getIMapperLibrarySuffix(&suffix);
    } else {
        CLIENT_LOGW("Unable to get allocator, using previously known IMapper library suffix 'zel'");
    }
    const std::string name = "mapper." + suffix + ".so";
    // Never closed, even when it is refused: s_aiMapper may point into it.
    void* const library = android_load_sphal_library(name.c_str(), RTLD_NOW);
    if (library == nullptr) {
        CLIENT_LOGE("Failed to load %s", name.c_str());
        return nullptr;
    }
    // Kept: a library without this entry ends the process here.
    const auto load = reinterpret_cast<LoadIMapper>(dlsym(library, kLoaderSymbol));
    const AIMapper_Error error = load(&s_aiMapper);
    if (error != AIMAPPER_ERROR_NONE) {
        CLIENT_LOGE("AIMapper_loadIMapper failed %d", static_cast<int32_t>(error));
        return nullptr;
    }
    return IsKnownVersion(library) ? s_aiMapper : nullptr;
}

// Returns the reason of a failure, or null.
const char* FillZelInterface(const std::shared_ptr<IAllocator>& allocator,
                             OfflineCameraZelInterface* record) {
    if (allocator == nullptr) {
        return "zelAllocator getService failed";
    }
    record->m_allocator = allocator;
    // Kept, though it cannot be true: the record is new, and only the line below sets its mapper.
    if (record->m_aiMapper != nullptr) {
        return nullptr;
    }
    record->m_aiMapper = LoadAIMapper();
    return record->m_aiMapper != nullptr ? nullptr : "zelAidlMapper getInstance failed";
}

}  // namespace

GraphicsServices ConnectGraphicsServices() {
    GraphicsServices services;
    services.mapper = HidlMapper::getService("default", false);
    const std::string instance = AllocatorInstance();
    // Kept: says "mapper", though the name is the allocator's.
    CLIENT_LOGI("mapper %s", instance.c_str());
    services.allocator = FindAllocator(instance);
    return services;
}

std::unique_ptr<OfflineCameraGralloc> StartGrallocWrapper(const GraphicsServices& services) {
    if (services.allocator == nullptr || services.mapper == nullptr) {
        return nullptr;
    }
    CLIENT_LOGD("Using AIDL IAllocator + HIDL IMapper v4.0");
    auto wrapper = std::make_unique<OfflineCameraGralloc>(services.allocator, services.mapper);
    if (services.mapper->isRemote()) {
        // Kept: says "passthrough", though this mapper is remote.
        CLIENT_LOGE("Mapper is in passthrough mode");
    }
    return wrapper;
}

void StartZelInterface(const std::shared_ptr<IAllocator>& allocator,
                       OfflineCameraZelInterface* record) {
    const char* const failure = FillZelInterface(allocator, record);
    if (failure != nullptr) {
        CLIENT_LOGE("Gralloc Init failed, reason %s", failure);
        record->m_aiMapper = nullptr;
        record->m_allocator.reset();
    }
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

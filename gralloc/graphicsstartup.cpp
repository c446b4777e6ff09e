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

// Written by the loader and kept even when the mapper is then rejected: a later start-up in the
// same process takes it from here without the version test.
AIMapper* s_aiMapper = nullptr;

std::string AllocatorInstance() {
    return std::string(IAllocator::descriptor) + "/default";
}

std::shared_ptr<IAllocator> FindAllocator(const std::string& instance) {
    const ::ndk::SpAIBinder binder(AServiceManager_checkService(instance.c_str()));
    return IAllocator::fromBinder(binder);
}

std::string MapperLibraryName() {
    std::string suffix = kDefaultMapperSuffix;
    const std::shared_ptr<IAllocator> allocator = FindAllocator(AllocatorInstance());
    if (allocator != nullptr) {
        // Unexamined: after a failure the suffix is whatever the call left in it.
        allocator->getIMapperLibrarySuffix(&suffix);
    } else {
        CLIENT_LOGW("Unable to get allocator, using previously known IMapper library suffix 'zel'");
    }
    return "mapper." + suffix + ".so";
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
    const std::string name = MapperLibraryName();
    // Never closed: the mapper's code must stay for the life of the process.
    void* library = android_load_sphal_library(name.c_str(), RTLD_NOW);
    if (library == nullptr) {
        CLIENT_LOGE("Failed to load %s", name.c_str());
        return nullptr;
    }
    // Called without a null test, as this tool does: a library without its one entry ends the run.
    const auto load = reinterpret_cast<LoadIMapper>(dlsym(library, kLoaderSymbol));
    const AIMapper_Error error = load(&s_aiMapper);
    if (error != AIMAPPER_ERROR_NONE) {
        CLIENT_LOGE("AIMapper_loadIMapper failed %d", static_cast<int32_t>(error));
        return nullptr;
    }
    return IsKnownVersion(library) ? s_aiMapper : nullptr;
}

// The start-up of the record; gives the reason of a failure, or null.
const char* FillZelInterface(const std::shared_ptr<IAllocator>& allocator,
                             OfflineCameraZelInterface* record) {
    if (allocator == nullptr) {
        return "zelAllocator getService failed";
    }
    record->m_allocator = allocator;
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
    // Says "mapper", though the name is the allocator's.
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
        // Says "passthrough" of a mapper that is remote; the line depends on nothing else.
        CLIENT_LOGE("Mapper is in passthrough mode");
    }
    return wrapper;
}

std::unique_ptr<OfflineCameraZelInterface> StartZelInterface(
        const std::shared_ptr<IAllocator>& allocator) {
    auto record = std::make_unique<OfflineCameraZelInterface>();
    const char* failure = FillZelInterface(allocator, record.get());
    if (failure != nullptr) {
        CLIENT_LOGE("Gralloc Init failed, reason %s", failure);
        record->m_aiMapper = nullptr;
        record->m_allocator.reset();
    }
    return record;
}

}  // namespace vendor::zel::hardware::camera::offlinecamera::implementation

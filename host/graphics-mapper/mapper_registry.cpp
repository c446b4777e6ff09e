// The mappers that were registered in this process.
#include <host_mapper_registry.h>

#include <map>
#include <mutex>

namespace host {

using ::android::sp;
using ::android::hardware::graphics::mapper::V4_0::IMapper;

namespace {

struct Registry {
    std::mutex mutex;
    std::map<std::string, sp<IMapper>> mappers;
};

Registry& registry() {
    // Never destroyed: threads may still look services up while the process exits.
    static Registry* const instance = new Registry;
    return *instance;
}

}  // namespace

sp<IMapper> findRegisteredMapper(const std::string& serviceName) {
    Registry& known = registry();
    std::lock_guard<std::mutex> lock(known.mutex);
    const auto found = known.mappers.find(serviceName);
    return found == known.mappers.end() ? nullptr : found->second;
}

void registerMapper(const std::string& serviceName, const sp<IMapper>& mapper) {
    sp<IMapper> replaced = mapper;
    Registry& known = registry();
    std::lock_guard<std::mutex> lock(known.mutex);
    std::swap(known.mappers[serviceName], replaced);
}

void unregisterMapper(const std::string& serviceName) {
    // Outlives the lock: the mapper's destructor may call back.
    sp<IMapper> removed;
    Registry& known = registry();
    std::lock_guard<std::mutex> lock(known.mutex);
    const auto found = known.mappers.find(serviceName);
    if (found == known.mappers.end()) return;
    removed = found->second;
    known.mappers.erase(found);
}

}  // namespace host

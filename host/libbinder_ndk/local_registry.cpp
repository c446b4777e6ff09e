// Services by name inside one process.
#include "local_registry.h"

namespace hostbinder {

LocalRegistry& LocalRegistry::instance() {
    static LocalRegistry* const registry = new LocalRegistry;
    return *registry;
}

void LocalRegistry::add(const std::string& name, const ndk::SpAIBinder& binder) {
    ndk::SpAIBinder replaced;  // ends after the lock: its end may run any code
    std::lock_guard<std::mutex> lock(mMutex);
    ndk::SpAIBinder& place = mServices[name];
    replaced = place;
    place = binder;
}

ndk::SpAIBinder LocalRegistry::find(const std::string& name) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mServices.find(name);
    return found == mServices.end() ? ndk::SpAIBinder() : found->second;
}

std::vector<std::string> LocalRegistry::names() {
    std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string> names;
    for (const auto& service : mServices) names.push_back(service.first);
    return names;
}

}  // namespace hostbinder

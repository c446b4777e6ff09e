// Registering, finding and forgetting services.
#include "service_table.h"

#include <android/log.h>
#include <host_service_manager.h>

#include <memory>
#include <utility>

ServiceTable& ServiceTable::instance() {
    static ServiceTable* const table = new ServiceTable;
    return *table;
}

ServiceTable::ServiceTable()
    : mDeathRecipient(AIBinder_DeathRecipient_new([](void* cookie) {
          ServiceTable::instance().removeDead(*static_cast<Registration*>(cookie));
      })) {
    AIBinder_DeathRecipient_setOnUnlinked(
            mDeathRecipient.get(), [](void* cookie) { delete static_cast<Registration*>(cookie); });
}

binder_status_t ServiceTable::add(const std::string& name, const ndk::SpAIBinder& binder) {
    if (!AServiceManager_isValidServiceName(name.c_str()) || binder.get() == nullptr) {
        return STATUS_BAD_VALUE;
    }
    ndk::SpAIBinder replaced;  // released after the lock
    std::lock_guard<std::mutex> lock(mMutex);
    auto registration = std::make_unique<Registration>(Registration{name, binder.get()});
    binder_status_t status =
            AIBinder_linkToDeath(binder.get(), mDeathRecipient.get(), registration.get());
    if (status != STATUS_OK) return status;
    (void)registration.release();  // the link's now
    replaced = mServices[name];
    mServices[name] = binder;
    __android_log_print(ANDROID_LOG_INFO, "servicemanager", "service '%s' of process %d added",
                        name.c_str(), AIBinder_getCallingPid());
    return STATUS_OK;
}

ndk::SpAIBinder ServiceTable::find(const std::string& name) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mServices.find(name);
    return found == mServices.end() ? ndk::SpAIBinder() : found->second;
}

std::vector<std::string> ServiceTable::names() {
    std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string> names;
    for (const auto& service : mServices) names.push_back(service.first);
    return names;
}

void ServiceTable::removeDead(const Registration& registration) {
    ndk::SpAIBinder removed;  // released after the lock
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mServices.find(registration.name);
    // The name may belong to a new object by now.
    if (found == mServices.end() || found->second.get() != registration.binder) return;
    removed = found->second;
    mServices.erase(found);
    __android_log_print(ANDROID_LOG_INFO, "servicemanager", "service '%s' died",
                        registration.name.c_str());
}

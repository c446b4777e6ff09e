// Registering, finding and forgetting services.
#include "service_table.h"

#include <host_service_manager.h>
#include <log_throttle.h>

#include <algorithm>
#include <memory>
#include <utility>

ServiceTable& ServiceTable::instance() {
    static ServiceTable* const table = new ServiceTable;
    return *table;
}

ServiceTable::ServiceTable()
    : mDeathRecipient(AIBinder_DeathRecipient_new([](void* cookie) {
          ServiceTable::instance().removeDead(static_cast<Registration*>(cookie));
      })) {
    AIBinder_DeathRecipient_setOnUnlinked(
            mDeathRecipient.get(), [](void* cookie) { delete static_cast<Registration*>(cookie); });
}

bool ServiceTable::hasRoomLocked(const std::string& name, pid_t process) const {
    const auto found = mServices.find(name);
    const bool isNew = found == mServices.end();
    if (isNew && mServices.size() >= kMaxServices) return false;
    if (!isNew && found->second.process == process) return true;
    const auto added =
            std::count_if(mServices.begin(), mServices.end(),
                          [process](const auto& entry) { return entry.second.process == process; });
    return static_cast<size_t>(added) < kMaxOfAProcess;
}

binder_status_t ServiceTable::add(const std::string& name, const ndk::SpAIBinder& binder,
                                  pid_t process) {
    if (!AServiceManager_isValidServiceName(name.c_str()) || binder.get() == nullptr) {
        return STATUS_BAD_VALUE;
    }
    Service replaced;  // released after the lock
    std::lock_guard<std::mutex> lock(mMutex);
    if (!hasRoomLocked(name, process)) return STATUS_NO_MEMORY;
    auto registration = std::make_unique<Registration>(Registration{name});
    binder_status_t status =
            AIBinder_linkToDeath(binder.get(), mDeathRecipient.get(), registration.get());
    if (status != STATUS_OK) return status;
    Service& place = mServices[name];
    replaced = std::exchange(place, {binder, process, registration.release()});
    if (replaced.current != nullptr) {
        AIBinder_unlinkToDeath(replaced.binder.get(), mDeathRecipient.get(),
                               const_cast<Registration*>(replaced.current));
    }
    static auto* const throttle = new standin_log::LogThrottle;
    if (!throttle->mayWrite("servicemanager")) return STATUS_OK;
    const bool replaces = replaced.current != nullptr && replaced.process != process;
    __android_log_print(
            ANDROID_LOG_INFO, "servicemanager", "service '%s' of process %d added%s", name.c_str(),
            process,
            replaces ? (" instead of that of process " + std::to_string(replaced.process)).c_str()
                     : "");
    return STATUS_OK;
}

ndk::SpAIBinder ServiceTable::find(const std::string& name) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mServices.find(name);
    return found == mServices.end() ? ndk::SpAIBinder() : found->second.binder;
}

std::vector<std::string> ServiceTable::names() {
    std::lock_guard<std::mutex> lock(mMutex);
    std::vector<std::string> names;
    for (const auto& service : mServices) names.push_back(service.first);
    return names;
}

void ServiceTable::removeDead(const Registration* registration) {
    Service removed;  // released after the lock
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mServices.find(registration->name);
    // The name may belong to a new object by now.
    if (found == mServices.end() || found->second.current != registration) return;
    removed = std::move(found->second);
    mServices.erase(found);
    __android_log_print(ANDROID_LOG_INFO, "servicemanager", "service '%s' died",
                        registration->name.c_str());
}

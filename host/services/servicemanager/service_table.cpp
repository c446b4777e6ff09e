// Registering, finding and forgetting services.
#include "service_table.h"

#include <android/log.h>
#include <host_service_manager.h>

#include <utility>

ServiceTable& ServiceTable::Instance() {
    static ServiceTable* const table = new ServiceTable;
    return *table;
}

binder_status_t ServiceTable::Add(const std::string& name, const ndk::SpAIBinder& binder,
                                  pid_t process) {
    if (!AServiceManager_isValidServiceName(name.c_str()) || binder.get() == nullptr) {
        return STATUS_BAD_VALUE;
    }
    Service service;  // the replaced one in the end, released after the lock
    std::lock_guard<std::mutex> lock(m_mutex);
    const uint64_t number = ++m_lastNumber;
    service.binder = binder;
    service.process = process;
    service.number = number;
    if (!service.watch.Begin(binder, [this, name, number] { RemoveDead(name, number); })) {
        return STATUS_DEAD_OBJECT;
    }
    std::swap(m_services[name], service);
    const bool replaces = service.binder.get() != nullptr && service.process != process;
    const std::string instead =
            replaces ? " instead of that of process " + std::to_string(service.process) : "";
    __android_log_print(ANDROID_LOG_INFO, "servicemanager", "service '%s' of process %d added%s",
                        name.c_str(), process, instead.c_str());
    return STATUS_OK;
}

ndk::SpAIBinder ServiceTable::Find(const std::string& name) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_services.find(name);
    return found == m_services.end() ? ndk::SpAIBinder() : found->second.binder;
}

std::vector<std::string> ServiceTable::Names() {
    std::lock_guard<std::mutex> lock(m_mutex);
    std::vector<std::string> names;
    for (const auto& service : m_services) names.push_back(service.first);
    return names;
}

void ServiceTable::RemoveDead(const std::string& name, uint64_t number) {
    Service removed;  // released after the lock
    std::lock_guard<std::mutex> lock(m_mutex);
    const auto found = m_services.find(name);
    // The name may belong to a new object by now.
    if (found == m_services.end() || found->second.number != number) return;
    removed = std::move(found->second);
    m_services.erase(found);
    __android_log_print(ANDROID_LOG_INFO, "servicemanager", "service '%s' died", name.c_str());
}

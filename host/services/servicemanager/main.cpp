// The service manager process: answers under $STANDIN_BINDER_DIR/servicemanager until it is ended.
#include <android/binder_parcel_utils.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <host_binder_trace.h>
#include <host_service_manager.h>

#include <cstdio>
#include <map>
#include <mutex>

#include "death_watch.h"

namespace {

constexpr char kLogTag[] = "servicemanager";

// The services of the stand-in device by name. It holds references only; a service whose process
// dies disappears. Lives as long as the process.
class ServiceTable {
  public:
    // Replaces a service of the same name. `process`: who asks, for the log.
    ndk::ScopedAStatus Add(const std::string& name, const ndk::SpAIBinder& binder, pid_t process) {
        const auto refuse = [&](binder_exception_t exception, const char* problem) {
            __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                                "service '%.127s' of process %d refused: %s", name.c_str(), process,
                                problem);
            return ndk::ScopedAStatus::fromExceptionCodeWithMessage(exception, problem);
        };
        if (!AServiceManager_isValidServiceName(name.c_str()) || binder.get() == nullptr) {
            return refuse(EX_ILLEGAL_ARGUMENT, "the name or the object is not valid");
        }
        Service service{binder, process, {}};  // the replaced one in the end, released unlocked
        const std::lock_guard<std::mutex> lock(m_mutex);
        if (!service.watch.Begin(binder, [this, name] { RemoveDead(name); })) {
            return refuse(EX_ILLEGAL_STATE, "the object is dead");
        }
        std::swap(m_services[name], service);
        const bool replaces = service.binder.get() != nullptr && service.process != process;
        const std::string instead =
                replaces ? " instead of that of process " + std::to_string(service.process) : "";
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "service '%s' of process %d added%s",
                            name.c_str(), process, instead.c_str());
        return ndk::ScopedAStatus::ok();
    }

    // Null if there is none.
    ndk::SpAIBinder Find(const std::string& name) {
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_services.find(name);
        return found == m_services.end() ? ndk::SpAIBinder() : found->second.binder;
    }

    std::vector<std::string> Names() {
        const std::lock_guard<std::mutex> lock(m_mutex);
        std::vector<std::string> names;
        for (const auto& service : m_services) names.push_back(service.first);
        return names;
    }

  private:
    struct Service {
        ndk::SpAIBinder binder;
        pid_t process = -1;  // that added it
        services::DeathWatch watch;
    };

    void RemoveDead(const std::string& name) {
        Service removed;  // released after the lock
        const std::lock_guard<std::mutex> lock(m_mutex);
        const auto found = m_services.find(name);
        // The name may belong to a new object by now.
        if (found == m_services.end() || AIBinder_isAlive(found->second.binder.get())) return;
        removed = std::move(found->second);
        m_services.erase(found);
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "service '%s' died", name.c_str());
    }

    std::mutex m_mutex;  // guards what follows
    std::map<std::string, Service> m_services;
};

ServiceTable& s_table = *new ServiceTable;

// An answer begins with a status; that of "check" and "list" has a value after it.
binder_status_t OnTransact(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* out) {
    const bool check = code == HOST_SERVICE_MANAGER_CHECK;
    const bool add = code == HOST_SERVICE_MANAGER_ADD;
    if (!check && !add && code != HOST_SERVICE_MANAGER_LIST) return STATUS_UNKNOWN_TRANSACTION;
    std::string name;
    ndk::SpAIBinder binder;
    binder_status_t status = STATUS_OK;
    if (check || add) status = ndk::AParcel_readString(in, &name);
    if (add && status == STATUS_OK) status = ndk::AParcel_readNullableStrongBinder(in, &binder);
    if (status != STATUS_OK) return status;
    const auto answer =
            add ? s_table.Add(name, binder, AIBinder_getCallingPid()) : ndk::ScopedAStatus::ok();
    status = AParcel_writeStatusHeader(out, answer.get());
    if (status != STATUS_OK || add) return status;
    return check ? ndk::AParcel_writeNullableStrongBinder(out, s_table.Find(name))
                 : ndk::AParcel_writeVector(out, s_table.Names());
}

AIBinder* NewServiceManager() {
    AIBinder_Class* const managerClass = AIBinder_Class_define(
            HOST_SERVICE_MANAGER_DESCRIPTOR, [](void*) -> void* { return nullptr; }, [](void*) {},
            OnTransact);
    static constexpr const char* kNames[] = {"checkService", "addService", "listServices"};
    AIBinder_Class_setTransactionNames(managerClass, kNames, 3);
    return AIBinder_new(managerClass, nullptr);
}

}  // namespace

int main(int argc, char**) {
    if (argc > 1) {
        fprintf(stderr, "usage: STANDIN_BINDER_DIR=FOLDER servicemanager\n");
        return 2;
    }
    ndk::SpAIBinder manager(NewServiceManager());
    binder_status_t status = AServiceManager_becomeServiceManager(manager.get());
    if (status != STATUS_OK) {
        fprintf(stderr, "servicemanager: %s\n",
                status == STATUS_ALREADY_EXISTS
                        ? "another service manager listens in STANDIN_BINDER_DIR"
                        : "cannot listen: set STANDIN_BINDER_DIR to a folder of mode 0700");
        return 1;
    }
    ABinderProcess_joinThreadPool();
}

// AServiceManager: services by name, kept by the service manager process if there is a folder of
// sockets, else inside this process.
#include <android/binder_manager.h>
#include <android/binder_parcel_utils.h>
#include <host_binder_trace.h>
#include <host_service_manager.h>
#include <unistd.h>

#include <cstring>
#include <map>
#include <mutex>

#include "endpoint.h"
#include "log.h"

using namespace hostbinder;

namespace {

constexpr size_t kMaxNameLength = 127;
constexpr int kPollMilliseconds = 20;
constexpr int kGetServiceMilliseconds = 5000;

// The services of a process without a folder of sockets.
struct LocalServices {
    std::mutex mutex;  // guards byName
    std::map<std::string, ndk::SpAIBinder> byName;
};

LocalServices& TheLocalServices() {
    static LocalServices* const services = new LocalServices;
    return *services;
}

bool HasServiceManager() {
    return SocketFolder() != nullptr;
}

const AIBinder_Class* NewClientClass() {
    // Only for proxies: no object of this class is ever made here.
    AIBinder_Class* clazz = AIBinder_Class_define(
            HOST_SERVICE_MANAGER_DESCRIPTOR, [](void*) -> void* { return nullptr; }, [](void*) {},
            [](AIBinder*, transaction_code_t, const AParcel*, AParcel*) -> binder_status_t {
                return STATUS_UNKNOWN_TRANSACTION;
            });
    static constexpr const char* kNames[] = {"checkService", "addService", "listServices"};
    AIBinder_Class_setTransactionNames(clazz, kNames, 3);
    return clazz;
}

// Null if no service manager listens.
ndk::SpAIBinder ServiceManager() {
    static const AIBinder_Class* const clazz = NewClientClass();
    std::shared_ptr<Peer> peer = Endpoint::Instance().ConnectTo(kServiceManagerSocket);
    if (peer == nullptr) return nullptr;
    ProxyBinder* proxy = peer->References()->ProxyFor(peer, kContextObject, 0);
    proxy->AssumeClass(clazz);
    proxy->AdoptStability(kStabilitySystem);
    return ndk::SpAIBinder(proxy);
}

// One question: `write` adds the arguments, `read` takes the answer behind its status header.
template <typename Write, typename Read>
binder_status_t Ask(transaction_code_t code, Write write, Read read) {
    ndk::SpAIBinder manager = ServiceManager();
    if (manager.get() == nullptr) return STATUS_DEAD_OBJECT;
    ndk::ScopedAParcel request;
    binder_status_t status = AIBinder_prepareTransaction(manager.get(), request.getR());
    if (status == STATUS_OK) status = write(request.get());
    if (status != STATUS_OK) return status;
    ndk::ScopedAParcel reply;
    status = AIBinder_transact(manager.get(), code, request.getR(), reply.getR(), 0);
    if (status != STATUS_OK) return status;
    ndk::ScopedAStatus answer;
    status = AParcel_readStatusHeader(reply.get(), answer.getR());
    if (status != STATUS_OK) return status;
    if (answer.isOk()) return read(reply.get());
    BINDER_LOGE("service manager: %s", answer.getDescription().c_str());
    return answer.getExceptionCode() == EX_ILLEGAL_ARGUMENT ? STATUS_BAD_VALUE
                                                            : STATUS_INVALID_OPERATION;
}

// Null if there is no such service, or no service manager.
ndk::SpAIBinder FindService(const std::string& name) {
    ndk::SpAIBinder binder;
    if (HasServiceManager()) {
        Ask(
                HOST_SERVICE_MANAGER_CHECK,
                [&](AParcel* in) { return ndk::AParcel_writeString(in, name); },
                [&](AParcel* out) { return ndk::AParcel_readNullableStrongBinder(out, &binder); });
        return binder;
    }
    LocalServices& services = TheLocalServices();
    std::lock_guard<std::mutex> lock(services.mutex);
    auto found = services.byName.find(name);
    return found == services.byName.end() ? ndk::SpAIBinder() : found->second;
}

binder_exception_t AddService(const std::string& name, const ndk::SpAIBinder& binder) {
    if (!HasServiceManager()) {
        LocalServices& services = TheLocalServices();
        ndk::SpAIBinder replaced;  // ends after the lock: its end may run any code
        std::lock_guard<std::mutex> lock(services.mutex);
        ndk::SpAIBinder& place = services.byName[name];
        replaced = place;
        place = binder;
        return EX_NONE;
    }
    binder_status_t status = Ask(
            HOST_SERVICE_MANAGER_ADD,
            [&](AParcel* in) {
                binder_status_t written = ndk::AParcel_writeString(in, name);
                return written == STATUS_OK ? AParcel_writeStrongBinder(in, binder.get()) : written;
            },
            [](AParcel*) { return STATUS_OK; });
    if (status == STATUS_OK) return EX_NONE;
    BINDER_LOGE("service '%s' was not added: %s", name.c_str(),
                status == STATUS_DEAD_OBJECT ? "no service manager answers"
                                             : "the service manager refused it");
    return status == STATUS_BAD_VALUE ? EX_ILLEGAL_ARGUMENT : EX_TRANSACTION_FAILED;
}

binder_status_t ListServices(std::vector<std::string>* names) {
    if (HasServiceManager()) {
        return Ask(
                HOST_SERVICE_MANAGER_LIST, [](AParcel*) { return STATUS_OK; },
                [&](AParcel* out) { return ndk::AParcel_readVector(out, names); });
    }
    LocalServices& services = TheLocalServices();
    std::lock_guard<std::mutex> lock(services.mutex);
    for (const auto& service : services.byName) names->push_back(service.first);
    return STATUS_OK;
}

AIBinder* Release(ndk::SpAIBinder binder) {
    AIBinder* raw = binder.get();
    *binder.getR() = nullptr;
    return raw;
}

// Asks until the service is there or limitMilliseconds (negative: no limit) are over.
AIBinder* PollForService(const char* instance, int limitMilliseconds) {
    if (instance == nullptr) return nullptr;
    for (int waited = 0;; waited += kPollMilliseconds) {
        if (AIBinder* binder = Release(FindService(instance))) return binder;
        if (limitMilliseconds >= 0 && waited >= limitMilliseconds) {
            BINDER_LOGW("service '%s' did not appear within %d ms", instance, limitMilliseconds);
            return nullptr;
        }
        if (waited > 0 && waited % 1000 == 0) {
            BINDER_LOGI("waiting for service '%s' for %d s", instance, waited / 1000);
        }
        usleep(kPollMilliseconds * 1000);
    }
}

}  // namespace

bool AServiceManager_isValidServiceName(const char* instance) {
    if (instance == nullptr) return false;
    const size_t length = strlen(instance);
    return length > 0 && length <= kMaxNameLength &&
           strspn(instance, "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_.-/") ==
                   length;
}

binder_exception_t AServiceManager_addService(AIBinder* binder, const char* instance) {
    if (binder == nullptr || !AServiceManager_isValidServiceName(instance)) {
        BINDER_LOGE("cannot add service '%s': %s", instance == nullptr ? "(null)" : instance,
                    binder == nullptr ? "no object given"
                                      : "a name has 1 to 127 characters of A-Za-z0-9_.-/");
        return EX_ILLEGAL_ARGUMENT;
    }
    binder->IncStrong();
    return AddService(instance, ndk::SpAIBinder(binder));
}

AIBinder* AServiceManager_checkService(const char* instance) {
    return instance == nullptr ? nullptr : Release(FindService(instance));
}

AIBinder* AServiceManager_getService(const char* instance) {
    return PollForService(instance, kGetServiceMilliseconds);
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    return PollForService(instance, -1);
}

bool AServiceManager_isDeclared(const char* instance) {
    return instance != nullptr && FindService(instance).get() != nullptr;
}

binder_status_t AServiceManager_forEachService(void* context,
                                               void (*callback)(const char*, void*)) {
    std::vector<std::string> names;
    const binder_status_t status = ListServices(&names);
    for (const std::string& name : names) callback(name.c_str(), context);
    return status;
}

binder_status_t AServiceManager_readInterface(const char* instance, void* context,
                                              void (*callback)(const char*, void*)) {
    const ndk::SpAIBinder binder = FindService(instance);
    if (binder.get() == nullptr) return STATUS_NAME_NOT_FOUND;
    std::string descriptor;
    if (ProxyBinder* const proxy = binder.get()->AsProxy()) {
        const binder_status_t status = proxy->ReadDescriptor(&descriptor);
        if (status != STATUS_OK) return status;
    } else {
        descriptor = binder.get()->Class()->descriptor;
    }
    callback(descriptor.c_str(), context);
    return STATUS_OK;
}

binder_status_t AServiceManager_becomeServiceManager(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    LocalBinder* local = binder->AsLocal();
    if (local == nullptr) return STATUS_BAD_TYPE;
    // The object first: a peer may connect as soon as the socket is there.
    SetContextObject(local);
    return Endpoint::Instance().BecomeServiceManager();
}

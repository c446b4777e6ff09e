// AServiceManager: publishing and finding services, with the service manager process if there is a
// folder of sockets, else inside this process.
#include <android/binder_manager.h>
#include <host_service_manager.h>
#include <time.h>

#include <cstring>
#include <string>
#include <vector>

#include "ibinder.h"
#include "local_registry.h"
#include "log.h"
#include "proxy_binder.h"
#include "service_manager_client.h"

namespace hostbinder {

namespace {

constexpr size_t kMaxNameLength = 127;
constexpr int kPollMilliseconds = 20;
constexpr int kGetServiceMilliseconds = 5000;

ndk::SpAIBinder checkService(const char* instance) {
    if (instance == nullptr) return nullptr;
    return ServiceManagerClient::isConfigured() ? ServiceManagerClient::check(instance)
                                                : LocalRegistry::instance().find(instance);
}

std::vector<std::string> listServices() {
    std::vector<std::string> names;
    if (!ServiceManagerClient::isConfigured()) return LocalRegistry::instance().names();
    ServiceManagerClient::list(&names);
    return names;
}

// Asks until the service is there or limitMilliseconds (negative: no limit) are over.
ndk::SpAIBinder pollForService(const char* instance, int limitMilliseconds) {
    if (instance == nullptr) return nullptr;
    for (int waited = 0;; waited += kPollMilliseconds) {
        ndk::SpAIBinder binder = checkService(instance);
        if (binder.get() != nullptr) return binder;
        if (limitMilliseconds >= 0 && waited >= limitMilliseconds) {
            BINDER_LOGW("service '%s' did not appear within %d ms", instance, limitMilliseconds);
            return nullptr;
        }
        if (waited > 0 && waited % 1000 == 0) {
            BINDER_LOGI("waiting for service '%s' for %d s", instance, waited / 1000);
        }
        const timespec pause{0, kPollMilliseconds * 1000000L};
        nanosleep(&pause, nullptr);
    }
}

AIBinder* release(ndk::SpAIBinder binder) {
    AIBinder* raw = binder.get();
    *binder.getR() = nullptr;
    return raw;
}

}  // namespace

}  // namespace hostbinder

bool AServiceManager_isValidServiceName(const char* instance) {
    if (instance == nullptr) return false;
    const size_t length = strlen(instance);
    return length > 0 && length <= hostbinder::kMaxNameLength &&
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
    AIBinder_incStrong(binder);
    ndk::SpAIBinder reference(binder);
    if (hostbinder::ServiceManagerClient::isConfigured()) {
        return hostbinder::ServiceManagerClient::add(instance, reference);
    }
    hostbinder::LocalRegistry::instance().add(instance, reference);
    return EX_NONE;
}

binder_exception_t AServiceManager_addServiceWithFlags(AIBinder* binder, const char* instance,
                                                       const AServiceManager_AddServiceFlag) {
    return AServiceManager_addService(binder, instance);
}

AIBinder* AServiceManager_checkService(const char* instance) {
    return hostbinder::release(hostbinder::checkService(instance));
}

AIBinder* AServiceManager_getService(const char* instance) {
    return hostbinder::release(
            hostbinder::pollForService(instance, hostbinder::kGetServiceMilliseconds));
}

AIBinder* AServiceManager_waitForService(const char* instance) {
    return hostbinder::release(hostbinder::pollForService(instance, -1));
}

binder_status_t AServiceManager_registerLazyService(AIBinder* binder, const char* instance) {
    binder_exception_t exception = AServiceManager_addService(binder, instance);
    if (exception == EX_NONE) return STATUS_OK;
    return exception == EX_ILLEGAL_ARGUMENT ? STATUS_BAD_VALUE : STATUS_FAILED_TRANSACTION;
}

bool AServiceManager_isDeclared(const char* instance) {
    return hostbinder::checkService(instance).get() != nullptr;
}

void AServiceManager_forEachDeclaredInstance(const char* interface, void* context,
                                             void (*callback)(const char*, void*)) {
    if (interface == nullptr || callback == nullptr) return;
    const std::string prefix = std::string(interface) + "/";
    for (const std::string& name : hostbinder::listServices()) {
        if (name.compare(0, prefix.size(), prefix) == 0) {
            callback(name.c_str() + prefix.size(), context);
        }
    }
}

binder_status_t AServiceManager_forEachService(void* context,
                                               void (*callback)(const char*, void*)) {
    std::vector<std::string> names;
    if (hostbinder::ServiceManagerClient::isConfigured()) {
        binder_status_t status = hostbinder::ServiceManagerClient::list(&names);
        if (status != STATUS_OK) return status;
    } else {
        names = hostbinder::LocalRegistry::instance().names();
    }
    for (const std::string& name : names) callback(name.c_str(), context);
    return STATUS_OK;
}

binder_status_t AServiceManager_readInterface(const char* instance, void* context,
                                              void (*callback)(const char*, void*)) {
    const ndk::SpAIBinder binder = hostbinder::checkService(instance);
    if (binder.get() == nullptr) return STATUS_NAME_NOT_FOUND;
    std::string descriptor;
    if (hostbinder::ProxyBinder* const proxy = binder.get()->asProxy()) {
        const binder_status_t status = proxy->readDescriptor(&descriptor);
        if (status != STATUS_OK) return status;
    } else {
        descriptor = binder.get()->clazz()->descriptor;
    }
    callback(descriptor.c_str(), context);
    return STATUS_OK;
}

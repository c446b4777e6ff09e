// Questions to the service manager process.
#include "service_manager_client.h"

#include <android/binder_parcel_utils.h>
#include <host_binder_trace.h>
#include <host_service_manager.h>

#include "connection.h"
#include "endpoint.h"
#include "log.h"
#include "object_table.h"
#include "socket_address.h"
#include "wire_format.h"

namespace hostbinder {

namespace {

const AIBinder_Class* newClientClass() {
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
ndk::SpAIBinder serviceManager() {
    static const AIBinder_Class* const clazz = newClientClass();
    std::shared_ptr<Connection> connection = Endpoint::instance().connectTo(kServiceManagerSocket);
    if (connection == nullptr) return nullptr;
    ProxyBinder* proxy =
            ObjectTable::instance().proxyFor(connection, connection->objects(), kContextObject, 0);
    proxy->assumeClass(clazz);
    proxy->adoptStability(kStabilitySystem);
    return ndk::SpAIBinder(proxy);
}

// One question: `write` adds the arguments, `read` takes the answer behind its status header.
template <typename Write, typename Read>
binder_status_t ask(transaction_code_t code, Write write, Read read) {
    ndk::SpAIBinder manager = serviceManager();
    if (manager.get() == nullptr) return STATUS_DEAD_OBJECT;
    AParcel* in = nullptr;
    binder_status_t status = AIBinder_prepareTransaction(manager.get(), &in);
    if (status != STATUS_OK) return status;
    ndk::ScopedAParcel request(in);
    status = write(in);
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

}  // namespace

bool ServiceManagerClient::isConfigured() {
    return socketFolder() != nullptr;
}

ndk::SpAIBinder ServiceManagerClient::check(const char* name) {
    ndk::SpAIBinder binder;
    ask(
            HOST_SERVICE_MANAGER_CHECK,
            [&](AParcel* in) { return ndk::AParcel_writeString(in, std::string(name)); },
            [&](AParcel* out) { return ndk::AParcel_readNullableStrongBinder(out, &binder); });
    return binder;
}

binder_exception_t ServiceManagerClient::add(const char* name, const ndk::SpAIBinder& binder) {
    binder_status_t status = ask(
            HOST_SERVICE_MANAGER_ADD,
            [&](AParcel* in) {
                binder_status_t written = ndk::AParcel_writeString(in, std::string(name));
                return written == STATUS_OK ? AParcel_writeStrongBinder(in, binder.get()) : written;
            },
            [](AParcel*) { return STATUS_OK; });
    if (status == STATUS_OK) return EX_NONE;
    BINDER_LOGE("service '%s' was not added: %s", name,
                status == STATUS_DEAD_OBJECT ? "no service manager answers"
                                             : "the service manager refused it");
    return status == STATUS_BAD_VALUE ? EX_ILLEGAL_ARGUMENT : EX_TRANSACTION_FAILED;
}

binder_status_t ServiceManagerClient::list(std::vector<std::string>* names) {
    return ask(
            HOST_SERVICE_MANAGER_LIST, [](AParcel*) { return STATUS_OK; },
            [&](AParcel* out) { return ndk::AParcel_readVector(out, names); });
}

}  // namespace hostbinder

binder_status_t AServiceManager_becomeServiceManager(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    hostbinder::LocalBinder* local = binder->asLocal();
    if (local == nullptr) return STATUS_BAD_TYPE;
    // The object first: a peer may connect as soon as the socket is there.
    hostbinder::ObjectTable::instance().setContextObject(local);
    return hostbinder::Endpoint::instance().becomeServiceManager();
}

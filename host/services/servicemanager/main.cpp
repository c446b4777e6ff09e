// The service manager process: answers under $STANDIN_BINDER_DIR/servicemanager until it is ended.
#include <android/binder_parcel_utils.h>
#include <android/binder_process.h>
#include <android/log.h>
#include <host_binder_trace.h>
#include <host_service_manager.h>

#include <cstdio>

#include "service_table.h"

namespace {

binder_status_t CheckService(const AParcel* in, AParcel* out) {
    std::string name;
    binder_status_t status = ndk::AParcel_readString(in, &name);
    if (status != STATUS_OK) return status;
    status = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
    if (status != STATUS_OK) return status;
    return ndk::AParcel_writeNullableStrongBinder(out, ServiceTable::Instance().Find(name));
}

ndk::ScopedAStatus AnswerTo(binder_status_t added, const std::string& name) {
    if (added == STATUS_OK) return ndk::ScopedAStatus::ok();
    const bool invalid = added == STATUS_BAD_VALUE;
    const char* const problem =
            invalid ? "the name or the object is not valid" : "the object is dead";
    __android_log_print(ANDROID_LOG_ERROR, "servicemanager",
                        "service '%.127s' of process %d refused: %s", name.c_str(),
                        AIBinder_getCallingPid(), problem);
    return invalid ? ndk::ScopedAStatus::fromExceptionCode(EX_ILLEGAL_ARGUMENT)
                   : ndk::ScopedAStatus::fromExceptionCodeWithMessage(EX_ILLEGAL_STATE, problem);
}

binder_status_t AddService(const AParcel* in, AParcel* out) {
    std::string name;
    ndk::SpAIBinder binder;
    binder_status_t status = ndk::AParcel_readString(in, &name);
    if (status == STATUS_OK) status = ndk::AParcel_readNullableStrongBinder(in, &binder);
    if (status != STATUS_OK) return status;
    status = ServiceTable::Instance().Add(name, binder, AIBinder_getCallingPid());
    return AParcel_writeStatusHeader(out, AnswerTo(status, name).get());
}

binder_status_t ListServices(AParcel* out) {
    binder_status_t status = AParcel_writeStatusHeader(out, ndk::ScopedAStatus::ok().get());
    if (status != STATUS_OK) return status;
    return ndk::AParcel_writeVector(out, ServiceTable::Instance().Names());
}

binder_status_t OnTransact(AIBinder*, transaction_code_t code, const AParcel* in, AParcel* out) {
    switch (code) {
        case HOST_SERVICE_MANAGER_CHECK:
            return CheckService(in, out);
        case HOST_SERVICE_MANAGER_ADD:
            return AddService(in, out);
        case HOST_SERVICE_MANAGER_LIST:
            return ListServices(out);
        default:
            return STATUS_UNKNOWN_TRANSACTION;
    }
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

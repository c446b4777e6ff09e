// AIBinder and ABinderProcess: classes, references, calls, death, stability and the pool of
// threads, as programs use them.
#include <android/binder_ibinder_platform.h>
#include <android/binder_process.h>
#include <android/binder_stability.h>
#include <host_binder_trace.h>
#include <unistd.h>

#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

#include "dispatch.h"
#include "log.h"
#include "objects.h"
#include "parcel.h"

namespace {

// A class lives as long as the process, whether or not the program keeps the pointer.
AIBinder_Class* NewClass() {
    static std::mutex* const mutex = new std::mutex;
    static std::deque<AIBinder_Class>* const classes = new std::deque<AIBinder_Class>;
    std::lock_guard<std::mutex> lock(*mutex);
    return &classes->emplace_back();
}

// Whether the object's interface promises what the calling code relies on.
bool CoversCaller(AIBinder* binder, binder_flags_t flags) {
    if (binder->AsLocal() != nullptr) return true;
    const int16_t required = (flags & FLAG_PRIVATE_VENDOR) != 0 ? hostbinder::kStabilityVendor
                                                                : hostbinder::kStabilitySystem;
    return (binder->Stability() & required) == required;
}

binder_status_t CheckCall(AIBinder* binder, transaction_code_t code, const AParcel* in,
                          binder_flags_t flags) {
    constexpr binder_flags_t kAllowedFlags = FLAG_ONEWAY | FLAG_CLEAR_BUF | FLAG_PRIVATE_VENDOR;
    if (code < FIRST_CALL_TRANSACTION || code > LAST_CALL_TRANSACTION) {
        BINDER_LOGE("transaction code %u is outside of the range of a class", code);
        return STATUS_UNKNOWN_TRANSACTION;
    }
    if ((flags & ~kAllowedFlags) != 0) {
        BINDER_LOGE("transaction flags 0x%x are not known", flags & ~kAllowedFlags);
        return STATUS_BAD_VALUE;
    }
    if (in->PreparedFor() != binder) {
        BINDER_LOGE("the request was prepared for another object");
        return STATUS_BAD_VALUE;
    }
    if (!CoversCaller(binder, flags)) {
        BINDER_LOGE("'%s' has stability level %d, too low for this caller",
                    binder->Class() == nullptr ? "?" : binder->Class()->descriptor.c_str(),
                    binder->Stability());
        return STATUS_BAD_TYPE;
    }
    return STATUS_OK;
}

}  // namespace

AIBinder_Class* AIBinder_Class_define(const char* interfaceDescriptor,
                                      AIBinder_Class_onCreate onCreate,
                                      AIBinder_Class_onDestroy onDestroy,
                                      AIBinder_Class_onTransact onTransact) {
    if (interfaceDescriptor == nullptr || onCreate == nullptr || onDestroy == nullptr ||
        onTransact == nullptr) {
        return nullptr;
    }
    AIBinder_Class* const clazz = NewClass();
    clazz->descriptor = interfaceDescriptor;
    clazz->onCreate = onCreate;
    clazz->onDestroy = onDestroy;
    clazz->onTransact = onTransact;
    return clazz;
}

const char* AIBinder_Class_getDescriptor(const AIBinder_Class* clazz) {
    return clazz->descriptor.c_str();
}

void AIBinder_Class_setTransactionNames(AIBinder_Class* clazz, const char* const* names,
                                        size_t count) {
    // A trace line may be using the old names: they stay.
    clazz->transactionNames = new std::vector<std::string>(names, names + count);
}

AIBinder* AIBinder_new(const AIBinder_Class* clazz, void* args) {
    if (clazz == nullptr) {
        BINDER_LOGE("AIBinder_new: no class given");
        return nullptr;
    }
    return new hostbinder::LocalBinder(clazz, clazz->onCreate(args));
}

bool AIBinder_isRemote(const AIBinder* binder) {
    return binder != nullptr && const_cast<AIBinder*>(binder)->AsLocal() == nullptr;
}

bool AIBinder_isAlive(const AIBinder* binder) {
    return binder != nullptr && binder->IsAlive();
}

void AIBinder_incStrong(AIBinder* binder) {
    if (binder != nullptr) binder->IncStrong();
}

void AIBinder_decStrong(AIBinder* binder) {
    if (binder == nullptr) {
        BINDER_LOGE("AIBinder_decStrong: no object given");
        return;
    }
    binder->DecStrong();
}

bool AIBinder_lt(const AIBinder* lhs, const AIBinder* rhs) {
    return std::less<const AIBinder*>()(lhs, rhs);
}

bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    return binder != nullptr && clazz != nullptr && binder->AssociateClass(clazz);
}

const AIBinder_Class* AIBinder_getClass(AIBinder* binder) {
    return binder == nullptr ? nullptr : binder->Class();
}

void* AIBinder_getUserData(AIBinder* binder) {
    hostbinder::LocalBinder* local = binder == nullptr ? nullptr : binder->AsLocal();
    return local == nullptr ? nullptr : local->UserData();
}

struct AIBinder_Weak {
    AIBinder* binder;  // a weak reference
};

AIBinder_Weak* AIBinder_Weak_new(AIBinder* binder) {
    if (binder == nullptr) return nullptr;
    binder->IncWeak();
    return new AIBinder_Weak{binder};
}

void AIBinder_Weak_delete(AIBinder_Weak* weak) {
    if (weak == nullptr) return;
    weak->binder->DecWeak();
    delete weak;
}

AIBinder* AIBinder_Weak_promote(AIBinder_Weak* weak) {
    return weak != nullptr && weak->binder->TryIncStrong() ? weak->binder : nullptr;
}

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    if (binder->Class() == nullptr) {
        BINDER_LOGE("AIBinder_prepareTransaction: the object has no class yet");
        return STATUS_INVALID_OPERATION;
    }
    auto parcel = std::make_unique<AParcel>();
    parcel->SetPreparedFor(binder);
    binder_status_t status =
            hostbinder::WriteInterfaceHeader(parcel.get(), binder->Class()->descriptor);
    if (status == STATUS_OK) *in = parcel.release();
    return status;
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags) {
    if (in == nullptr) return STATUS_UNEXPECTED_NULL;
    std::unique_ptr<AParcel> request(*in);
    *in = nullptr;
    if (out == nullptr) return STATUS_UNEXPECTED_NULL;
    *out = nullptr;
    if (binder == nullptr || request == nullptr) return STATUS_UNEXPECTED_NULL;
    binder_status_t status = CheckCall(binder, code, request.get(), flags);
    if (status != STATUS_OK) return status;
    return binder->Transact(code, request.get(), out, flags);
}

binder_status_t AIBinder_ping(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    AParcel in;
    AParcel* out = nullptr;
    const binder_status_t status = binder->Transact(hostbinder::kPingCode, &in, &out, 0);
    AParcel_delete(out);
    return status;
}

uid_t AIBinder_getCallingUid(void) {
    const hostbinder::CallContext& context = hostbinder::TheCallContext();
    return context.handling ? context.uid : getuid();
}

pid_t AIBinder_getCallingPid(void) {
    const hostbinder::CallContext& context = hostbinder::TheCallContext();
    return context.handling ? context.pid : getpid();
}

bool AIBinder_isHandlingTransaction(void) {
    return hostbinder::TheCallContext().handling;
}

AIBinder_DeathRecipient* AIBinder_DeathRecipient_new(
        AIBinder_DeathRecipient_onBinderDied onBinderDied) {
    return onBinderDied == nullptr ? nullptr : new AIBinder_DeathRecipient(onBinderDied);
}

void AIBinder_DeathRecipient_setOnUnlinked(AIBinder_DeathRecipient* recipient,
                                           AIBinder_DeathRecipient_onBinderUnlinked onUnlinked) {
    if (recipient != nullptr) recipient->SetOnUnlinked(onUnlinked);
}

void AIBinder_DeathRecipient_delete(AIBinder_DeathRecipient* recipient) {
    delete recipient;
}

binder_status_t AIBinder_linkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                     void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    hostbinder::ProxyBinder* proxy = binder->AsProxy();
    return proxy == nullptr ? STATUS_INVALID_OPERATION : proxy->LinkToDeath(recipient, cookie);
}

binder_status_t AIBinder_unlinkToDeath(AIBinder* binder, AIBinder_DeathRecipient* recipient,
                                       void* cookie) {
    if (binder == nullptr || recipient == nullptr) return STATUS_UNEXPECTED_NULL;
    hostbinder::ProxyBinder* proxy = binder->AsProxy();
    return proxy == nullptr ? STATUS_INVALID_OPERATION : proxy->UnlinkToDeath(recipient, cookie);
}

void AIBinder_markVendorStability(AIBinder* binder) {
    binder->MarkStability(hostbinder::kStabilityVendor);
}
void AIBinder_markSystemStability(AIBinder* binder) {
    binder->MarkStability(hostbinder::kStabilitySystem);
}
void AIBinder_markVintfStability(AIBinder* binder) {
    binder->MarkStability(hostbinder::kStabilityVintf);
}

void AIBinder_setMinSchedulerPolicy(AIBinder*, int, int) {}
void AIBinder_setInheritRt(AIBinder*, bool) {}

void ABinderProcess_startThreadPool(void) {
    hostbinder::ThreadPool::Instance().Start();
}

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    if (!hostbinder::ThreadPool::Instance().SetMaxThreads(numThreads)) {
        BINDER_LOGE("the pool is started: its maximum cannot be lowered to %u", numThreads);
        abort();
    }
    return true;
}

bool ABinderProcess_isThreadPoolStarted(void) {
    return hostbinder::ThreadPool::Instance().IsStarted();
}

void ABinderProcess_joinThreadPool(void) {
    hostbinder::ThreadPool::Instance().Join();
}

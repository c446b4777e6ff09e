// Transactions and class queries of remote objects.
#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/binder_parcel.h>
#include <android/binder_status.h>
#include <host_binder_trace.h>

#include <map>
#include <mutex>
#include <vector>

#include "injector.h"

namespace {

using injector::Kind;

// The service that this thread looks up.
thread_local const char* tInstance = nullptr;

struct MethodNames {
    std::mutex mutex;
    std::map<const AIBinder_Class*, std::vector<std::string>> names;
};

MethodNames& methodNames() {
    static MethodNames* const names = new MethodNames;
    return *names;
}

// "android.hardware.graphics.allocator.IAllocator/default" gives "IAllocator".
std::string lastWord(const std::string& descriptor) {
    const std::string whole = descriptor.substr(0, descriptor.find('/'));
    return whole.substr(whole.rfind('.') + 1);
}

std::string methodOf(AIBinder* binder, transaction_code_t code) {
    const AIBinder_Class* const clazz = AIBinder_getClass(binder);
    if (clazz == nullptr) return "?";
    MethodNames& known = methodNames();
    std::lock_guard<std::mutex> lock(known.mutex);
    const std::vector<std::string>& names = known.names[clazz];
    const size_t index = code - FIRST_CALL_TRANSACTION;
    return lastWord(AIBinder_Class_getDescriptor(clazz)) + "." +
           (index < names.size() ? names[index] : std::to_string(code));
}

// Gives the reply of a call whose status is not OK; takes ownership of `status`.
binder_status_t answer(AStatus* status, AParcel** out) {
    AParcel* const reply = AParcel_create();
    const binder_status_t written = AParcel_writeStatusHeader(reply, status);
    AStatus_delete(status);
    AParcel_setDataPosition(reply, 0);
    *out = reply;
    return written;
}

}  // namespace

extern "C" void AIBinder_Class_setTransactionNames(AIBinder_Class* clazz, const char* const* names,
                                                   size_t count) {
    static const auto real = injector::next<decltype(&AIBinder_Class_setTransactionNames)>(
            "AIBinder_Class_setTransactionNames");
    real(clazz, names, count);
    MethodNames& known = methodNames();
    std::lock_guard<std::mutex> lock(known.mutex);
    known.names[clazz].assign(names, names + count);
}

extern "C" AIBinder* AServiceManager_checkService(const char* instance) {
    static const auto real =
            injector::next<decltype(&AServiceManager_checkService)>("AServiceManager_checkService");
    tInstance = instance;
    AIBinder* const found = real(instance);
    tInstance = nullptr;
    return found;
}

extern "C" bool AIBinder_associateClass(AIBinder* binder, const AIBinder_Class* clazz) {
    static const auto real =
            injector::next<decltype(&AIBinder_associateClass)>("AIBinder_associateClass");
    const bool asks = binder != nullptr && clazz != nullptr && AIBinder_isRemote(binder) &&
                      AIBinder_getClass(binder) == nullptr;
    if (asks && injector::fails(Kind::kClass, lastWord(AIBinder_Class_getDescriptor(clazz)))) {
        return false;
    }
    return real(binder, clazz);
}

extern "C" binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code,
                                             AParcel** in, AParcel** out, binder_flags_t flags) {
    static const auto real = injector::next<decltype(&AIBinder_transact)>("AIBinder_transact");
    const Kind kind = injector::kind();
    if (kind < Kind::kDeadObject || kind > Kind::kLostReply || !AIBinder_isRemote(binder) ||
        !injector::fails(kind, methodOf(binder, code), tInstance ? lastWord(tInstance) : "")) {
        return real(binder, code, in, out, flags);
    }
    if (kind == Kind::kLostReply) {
        real(binder, code, in, out, flags);
        AParcel_delete(*out);
        *out = nullptr;
        return STATUS_DEAD_OBJECT;
    }
    AParcel_delete(*in);
    *in = nullptr;
    *out = nullptr;
    switch (kind) {
        case Kind::kException:
            return answer(AStatus_fromExceptionCode(EX_ILLEGAL_STATE), out);
        case Kind::kServiceSpecific:
            return answer(AStatus_fromServiceSpecificError(1), out);
        default:
            return kind == Kind::kDeadObject ? STATUS_DEAD_OBJECT : STATUS_FAILED_TRANSACTION;
    }
}

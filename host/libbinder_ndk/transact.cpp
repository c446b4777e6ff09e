// Making calls: AIBinder_prepareTransaction, AIBinder_transact and the calls every object answers.
#include <android/binder_ibinder_platform.h>
#include <android/binder_stability.h>

#include <memory>

#include "ibinder.h"
#include "local_binder.h"
#include "log.h"
#include "parcel.h"

namespace {

// Whether the object's interface promises what the calling code relies on.
bool coversCaller(AIBinder* binder, binder_flags_t flags) {
    if (binder->asLocal() != nullptr) return true;
    const int16_t required = (flags & FLAG_PRIVATE_VENDOR) != 0 ? hostbinder::kStabilityVendor
                                                                : hostbinder::kStabilitySystem;
    return (binder->stability() & required) == required;
}

binder_status_t checkCall(AIBinder* binder, transaction_code_t code, const AParcel* in,
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
    if (in->preparedFor() != binder) {
        BINDER_LOGE("the request was prepared for another object");
        return STATUS_BAD_VALUE;
    }
    if (!coversCaller(binder, flags)) {
        BINDER_LOGE("'%s' has stability level %d, too low for this caller",
                    binder->clazz() == nullptr ? "?" : binder->clazz()->descriptor.c_str(),
                    binder->stability());
        return STATUS_BAD_TYPE;
    }
    return STATUS_OK;
}

// A call with one of the codes that every object answers.
binder_status_t specialCall(AIBinder* binder, uint32_t code, AParcel* in,
                            std::unique_ptr<AParcel>* reply) {
    AParcel* out = nullptr;
    binder_status_t status = binder->transact(code, in, &out, 0);
    if (status == STATUS_OK) reply->reset(out);
    return status;
}

}  // namespace

binder_status_t AIBinder_prepareTransaction(AIBinder* binder, AParcel** in) {
    if (binder == nullptr || in == nullptr) return STATUS_UNEXPECTED_NULL;
    const AIBinder_Class* clazz = binder->clazz();
    if (clazz == nullptr) {
        BINDER_LOGE("AIBinder_prepareTransaction: the object has no class yet");
        return STATUS_INVALID_OPERATION;
    }
    auto parcel = std::make_unique<AParcel>();
    parcel->setPreparedFor(binder);
    if (clazz->hasInterfaceHeader) {
        binder_status_t status = hostbinder::writeInterfaceHeader(parcel.get(), clazz->descriptor);
        if (status != STATUS_OK) return status;
    }
    *in = parcel.release();
    return STATUS_OK;
}

binder_status_t AIBinder_transact(AIBinder* binder, transaction_code_t code, AParcel** in,
                                  AParcel** out, binder_flags_t flags) {
    if (in == nullptr) return STATUS_UNEXPECTED_NULL;
    std::unique_ptr<AParcel> request(*in);
    *in = nullptr;
    if (out == nullptr) return STATUS_UNEXPECTED_NULL;
    *out = nullptr;
    if (binder == nullptr || request == nullptr) return STATUS_UNEXPECTED_NULL;
    if ((flags & FLAG_CLEAR_BUF) != 0) request->markSensitive();
    binder_status_t status = checkCall(binder, code, request.get(), flags);
    if (status != STATUS_OK) return status;
    return binder->transact(code, request.get(), out, flags);
}

binder_status_t AIBinder_ping(AIBinder* binder) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    AParcel in;
    std::unique_ptr<AParcel> reply;
    return specialCall(binder, hostbinder::kPingCode, &in, &reply);
}

binder_status_t AIBinder_dump(AIBinder* binder, int fd, const char** args, uint32_t numArgs) {
    if (binder == nullptr) return STATUS_UNEXPECTED_NULL;
    if (hostbinder::LocalBinder* local = binder->asLocal()) {
        AIBinder_onDump onDump = local->clazz()->onDump;
        return onDump == nullptr ? STATUS_OK : onDump(binder, fd, args, numArgs);
    }
    AParcel in;
    binder_status_t status = AParcel_writeParcelFileDescriptor(&in, fd);
    if (status == STATUS_OK) status = in.write(static_cast<int32_t>(numArgs));
    for (uint32_t i = 0; status == STATUS_OK && i < numArgs; ++i) {
        status = hostbinder::writeString(&in, args[i]);
    }
    if (status != STATUS_OK) return status;
    std::unique_ptr<AParcel> reply;
    return specialCall(binder, hostbinder::kDumpCode, &in, &reply);
}

binder_status_t AIBinder_getExtension(AIBinder* binder, AIBinder** outExt) {
    if (binder == nullptr || outExt == nullptr) return STATUS_UNEXPECTED_NULL;
    *outExt = nullptr;
    if (hostbinder::LocalBinder* local = binder->asLocal()) {
        *outExt = local->extension();
        return STATUS_OK;
    }
    AParcel in;
    std::unique_ptr<AParcel> reply;
    binder_status_t status = specialCall(binder, hostbinder::kExtensionCode, &in, &reply);
    return status == STATUS_OK ? AParcel_readStrongBinder(reply.get(), outExt) : status;
}

// AStatus: exception code, transport status, service-specific code and message of a call's result.
#include <android/binder_status.h>

#include <cstring>
#include <string>

#include "log.h"
#include "status_values.h"

struct AStatus {
    binder_exception_t exception = EX_NONE;
    binder_status_t status = STATUS_OK;
    int32_t serviceSpecific = 0;
    std::string message;
};

namespace hostbinder {

namespace {

struct StatusName {
    binder_status_t value;
    const char* name;
};
constexpr StatusName kStatusNames[] = {
        {STATUS_OK, "OK"},
        {STATUS_UNKNOWN_ERROR, "UNKNOWN_ERROR"},
        {STATUS_NO_MEMORY, "NO_MEMORY"},
        {STATUS_INVALID_OPERATION, "INVALID_OPERATION"},
        {STATUS_BAD_VALUE, "BAD_VALUE"},
        {STATUS_BAD_TYPE, "BAD_TYPE"},
        {STATUS_NAME_NOT_FOUND, "NAME_NOT_FOUND"},
        {STATUS_PERMISSION_DENIED, "PERMISSION_DENIED"},
        {STATUS_NO_INIT, "NO_INIT"},
        {STATUS_ALREADY_EXISTS, "ALREADY_EXISTS"},
        {STATUS_DEAD_OBJECT, "DEAD_OBJECT"},
        {STATUS_FAILED_TRANSACTION, "FAILED_TRANSACTION"},
        {STATUS_BAD_INDEX, "BAD_INDEX"},
        {STATUS_NOT_ENOUGH_DATA, "NOT_ENOUGH_DATA"},
        {STATUS_WOULD_BLOCK, "WOULD_BLOCK"},
        {STATUS_TIMED_OUT, "TIMED_OUT"},
        {STATUS_UNKNOWN_TRANSACTION, "UNKNOWN_TRANSACTION"},
        {STATUS_FDS_NOT_ALLOWED, "FDS_NOT_ALLOWED"},
        {STATUS_UNEXPECTED_NULL, "UNEXPECTED_NULL"},
};

constexpr const char* kExceptionNames[] = {
        "EX_NONE",
        "EX_SECURITY",
        "EX_BAD_PARCELABLE",
        "EX_ILLEGAL_ARGUMENT",
        "EX_NULL_POINTER",
        "EX_ILLEGAL_STATE",
        "EX_NETWORK_MAIN_THREAD",
        "EX_UNSUPPORTED_OPERATION",
        "EX_SERVICE_SPECIFIC",
        "EX_PARCELABLE",
};

binder_exception_t pruneException(binder_exception_t exception) {
    if (exception <= EX_NONE && exception >= EX_PARCELABLE) return exception;
    if (exception != EX_TRANSACTION_FAILED) {
        BINDER_LOGW("exception code %d is not known, using EX_TRANSACTION_FAILED", exception);
    }
    return EX_TRANSACTION_FAILED;
}

const char* exceptionName(binder_exception_t exception) {
    return exception == EX_TRANSACTION_FAILED ? "EX_TRANSACTION_FAILED"
                                              : kExceptionNames[-exception];
}

AStatus* newException(binder_exception_t exception, const char* message) {
    exception = pruneException(exception);
    if (exception == EX_NONE) return AStatus_newOk();
    AStatus* status = new AStatus;
    status->exception = exception;
    if (exception == EX_TRANSACTION_FAILED) status->status = STATUS_FAILED_TRANSACTION;
    if (message != nullptr) status->message = message;
    return status;
}

}  // namespace

binder_status_t pruneStatus(binder_status_t status) {
    for (const StatusName& known : kStatusNames) {
        if (known.value == status) return status;
    }
    BINDER_LOGW("status %d is not known, using STATUS_UNKNOWN_ERROR", status);
    return STATUS_UNKNOWN_ERROR;
}

const char* statusName(binder_status_t status) {
    for (const StatusName& known : kStatusNames) {
        if (known.value == status) return known.name;
    }
    return "UNKNOWN_ERROR";
}

}  // namespace hostbinder

AStatus* AStatus_newOk(void) {
    static AStatus* const ok = new AStatus;
    return ok;
}

AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
    return hostbinder::newException(exception, nullptr);
}

AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
    return hostbinder::newException(exception, message);
}

AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific) {
    return AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, nullptr);
}

AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
    AStatus* status = hostbinder::newException(EX_SERVICE_SPECIFIC, message);
    status->serviceSpecific = serviceSpecific;
    return status;
}

AStatus* AStatus_fromStatus(binder_status_t value) {
    value = hostbinder::pruneStatus(value);
    if (value == STATUS_OK) return AStatus_newOk();
    AStatus* status = new AStatus;
    status->exception = EX_TRANSACTION_FAILED;
    status->status = value;
    return status;
}

bool AStatus_isOk(const AStatus* status) {
    return status->exception == EX_NONE;
}

binder_exception_t AStatus_getExceptionCode(const AStatus* status) {
    return status->exception;
}

int32_t AStatus_getServiceSpecificError(const AStatus* status) {
    return status->serviceSpecific;
}

binder_status_t AStatus_getStatus(const AStatus* status) {
    return status->status;
}

const char* AStatus_getMessage(const AStatus* status) {
    return status->message.c_str();
}

const char* AStatus_getDescription(const AStatus* status) {
    std::string text = "No error";
    if (status->exception != EX_NONE) {
        text = "Status(" + std::to_string(status->exception) + ", " +
               hostbinder::exceptionName(status->exception) + "): '";
        if (status->exception == EX_SERVICE_SPECIFIC) {
            text += std::to_string(status->serviceSpecific) + ": ";
        } else if (status->exception == EX_TRANSACTION_FAILED) {
            text += std::string(hostbinder::statusName(status->status)) + ": ";
        }
        text += status->message + "'";
    }
    return strdup(text.c_str());
}

void AStatus_deleteDescription(const char* description) {
    free(const_cast<char*>(description));
}

void AStatus_delete(AStatus* status) {
    if (status != AStatus_newOk()) delete status;
}

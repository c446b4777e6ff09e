// Names of transport statuses and of exceptions.
#include "status_names.h"

#include "log.h"

namespace hostbinder {

namespace {

struct KnownStatus {
    binder_status_t value;
    const char* name;
};
constexpr KnownStatus kStatusNames[] = {
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

// By their negative value.
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

}  // namespace

binder_status_t PruneStatus(binder_status_t status) {
    for (const KnownStatus& known : kStatusNames) {
        if (known.value == status) return status;
    }
    BINDER_LOGW("status %d is not known, using STATUS_UNKNOWN_ERROR", status);
    return STATUS_UNKNOWN_ERROR;
}

const char* StatusName(binder_status_t status) {
    for (const KnownStatus& known : kStatusNames) {
        if (known.value == status) return known.name;
    }
    return "UNKNOWN_ERROR";
}

const char* ExceptionName(binder_exception_t exception) {
    return exception == EX_TRANSACTION_FAILED ? "EX_TRANSACTION_FAILED"
                                              : kExceptionNames[-exception];
}

}  // namespace hostbinder

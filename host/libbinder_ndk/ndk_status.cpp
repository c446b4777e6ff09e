// AStatus: exception code, transport status, service-specific code and message of a call's result,
// and the header of a reply, which carries it.
#include <android/binder_status.h>

#include <cstring>
#include <string>

#include "log.h"
#include "parcel.h"
#include "status_names.h"

struct AStatus {
    binder_exception_t exception = EX_NONE;
    binder_status_t status = STATUS_OK;
    int32_t serviceSpecific = 0;
    std::string message;
};

namespace {

binder_exception_t PruneException(binder_exception_t exception) {
    if (exception <= EX_NONE && exception >= EX_PARCELABLE) return exception;
    if (exception != EX_TRANSACTION_FAILED) {
        BINDER_LOGW("exception code %d is not known, using EX_TRANSACTION_FAILED", exception);
    }
    return EX_TRANSACTION_FAILED;
}

AStatus* NewException(binder_exception_t exception, const char* message) {
    exception = PruneException(exception);
    if (exception == EX_NONE) return AStatus_newOk();
    AStatus* status = new AStatus;
    status->exception = exception;
    if (exception == EX_TRANSACTION_FAILED) status->status = STATUS_FAILED_TRANSACTION;
    if (message != nullptr) status->message = message;
    return status;
}

}  // namespace

AStatus* AStatus_newOk(void) {
    static AStatus* const ok = new AStatus;
    return ok;
}

AStatus* AStatus_fromExceptionCode(binder_exception_t exception) {
    return NewException(exception, nullptr);
}

AStatus* AStatus_fromExceptionCodeWithMessage(binder_exception_t exception, const char* message) {
    return NewException(exception, message);
}

AStatus* AStatus_fromServiceSpecificError(int32_t serviceSpecific) {
    return AStatus_fromServiceSpecificErrorWithMessage(serviceSpecific, nullptr);
}

AStatus* AStatus_fromServiceSpecificErrorWithMessage(int32_t serviceSpecific, const char* message) {
    AStatus* status = NewException(EX_SERVICE_SPECIFIC, message);
    status->serviceSpecific = serviceSpecific;
    return status;
}

AStatus* AStatus_fromStatus(binder_status_t value) {
    value = hostbinder::PruneStatus(value);
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
               hostbinder::ExceptionName(status->exception) + "): '";
        if (status->exception == EX_SERVICE_SPECIFIC) {
            text += std::to_string(status->serviceSpecific) + ": ";
        } else if (status->exception == EX_TRANSACTION_FAILED) {
            text += std::string(hostbinder::StatusName(status->status)) + ": ";
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

namespace {

// Skips a block whose size word, already read, counts itself.
binder_status_t SkipRest(const AParcel* parcel, int32_t blockSize) {
    if (blockSize < 4) return STATUS_BAD_VALUE;
    const size_t rest = static_cast<size_t>(blockSize) - 4;
    return rest == 0 || parcel->Take(rest) != nullptr ? STATUS_OK : STATUS_NOT_ENOUGH_DATA;
}

// The part of a reply's header behind the exception code.
binder_status_t ReadException(const AParcel* parcel, AStatus* result) {
    binder_status_t status = hostbinder::ReadString(parcel, &result->message);
    if (status != STATUS_OK) return status;
    int32_t stackTrace = 0;
    status = parcel->Read(&stackTrace);
    if (status == STATUS_OK && stackTrace != 0) status = SkipRest(parcel, stackTrace);
    if (status != STATUS_OK) return status;
    if (result->exception == EX_SERVICE_SPECIFIC) return parcel->Read(&result->serviceSpecific);
    if (result->exception == EX_PARCELABLE) {
        int32_t size = 0;
        status = parcel->Read(&size);
        if (status == STATUS_OK && size != 0) status = SkipRest(parcel, size);
    }
    return status;
}

}  // namespace

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    if (status->exception == EX_TRANSACTION_FAILED) return status->status;
    binder_status_t result = parcel->Write(status->exception);
    if (status->exception == EX_NONE || result != STATUS_OK) return result;
    result = hostbinder::WriteString(parcel, status->message);
    if (result == STATUS_OK) result = parcel->Write(int32_t{0});  // no stack trace
    if (result == STATUS_OK && status->exception == EX_SERVICE_SPECIFIC) {
        result = parcel->Write(status->serviceSpecific);
    }
    if (result == STATUS_OK && status->exception == EX_PARCELABLE) {
        result = parcel->Write(int32_t{0});
    }
    return result;
}

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    int32_t exception = 0;
    binder_status_t result = parcel->Read(&exception);
    if (result != STATUS_OK) return result;
    if (exception == hostbinder::kSkipBlockException) {
        int32_t blockSize = 0;
        result = parcel->Read(&blockSize);
        if (result == STATUS_OK) result = SkipRest(parcel, blockSize);
        if (result != STATUS_OK) return result;
        exception = EX_NONE;
    }
    if (exception == EX_NONE) {
        *status = AStatus_newOk();
        return STATUS_OK;
    }
    AStatus* const received = NewException(exception, nullptr);
    result = ReadException(parcel, received);
    if (result == STATUS_OK) {
        *status = received;
    } else {
        AStatus_delete(received);
    }
    return result;
}

// The header of a request (which interface it is for) and of a reply (how the call went).
#include "parcel.h"

namespace {

// Skips a block whose size word, already read, counts itself.
binder_status_t skipRest(const AParcel* parcel, int32_t blockSize) {
    if (blockSize < 4) return STATUS_BAD_VALUE;
    const size_t rest = static_cast<size_t>(blockSize) - 4;
    return rest == 0 || parcel->take(rest) != nullptr ? STATUS_OK : STATUS_NOT_ENOUGH_DATA;
}

// The part of an exception's header behind the exception code.
binder_status_t readException(const AParcel* parcel, binder_exception_t exception,
                              AStatus** result) {
    std::string message;
    binder_status_t status = hostbinder::readString(parcel, &message);
    if (status != STATUS_OK) return status;
    int32_t stackTrace = 0;
    status = parcel->read(&stackTrace);
    if (status == STATUS_OK && stackTrace != 0) status = skipRest(parcel, stackTrace);
    if (status != STATUS_OK) return status;

    if (exception == EX_SERVICE_SPECIFIC) {
        int32_t code = 0;
        status = parcel->read(&code);
        if (status == STATUS_OK) {
            *result = AStatus_fromServiceSpecificErrorWithMessage(code, message.c_str());
        }
        return status;
    }
    if (exception == EX_PARCELABLE) {
        int32_t size = 0;
        status = parcel->read(&size);
        if (status == STATUS_OK && size != 0) status = skipRest(parcel, size);
        if (status != STATUS_OK) return status;
    }
    *result = AStatus_fromExceptionCodeWithMessage(exception, message.c_str());
    return STATUS_OK;
}

}  // namespace

namespace hostbinder {

binder_status_t writeInterfaceHeader(AParcel* parcel, const std::string& descriptor) {
    parcel->write(kStrictModePresent);
    parcel->write(kWorkSourceUnset);
    parcel->write(kHeaderTag);
    return writeString(parcel, descriptor);
}

binder_status_t checkInterfaceHeader(const AParcel* parcel, const std::string& descriptor) {
    uint32_t strictMode = 0;
    int32_t workSource = 0;
    uint32_t tag = 0;
    std::string named;
    if (parcel->read(&strictMode) != STATUS_OK || parcel->read(&workSource) != STATUS_OK ||
        parcel->read(&tag) != STATUS_OK || tag != kHeaderTag ||
        readString(parcel, &named) != STATUS_OK || named != descriptor) {
        return STATUS_BAD_TYPE;
    }
    return STATUS_OK;
}

}  // namespace hostbinder

binder_status_t AParcel_writeStatusHeader(AParcel* parcel, const AStatus* status) {
    const binder_exception_t exception = AStatus_getExceptionCode(status);
    if (exception == EX_TRANSACTION_FAILED) return AStatus_getStatus(status);
    binder_status_t result = parcel->write(exception);
    if (exception == EX_NONE || result != STATUS_OK) return result;
    result = hostbinder::writeString(parcel, AStatus_getMessage(status));
    if (result == STATUS_OK) result = parcel->write(int32_t{0});  // no stack trace
    if (result == STATUS_OK && exception == EX_SERVICE_SPECIFIC) {
        result = parcel->write(AStatus_getServiceSpecificError(status));
    }
    if (result == STATUS_OK && exception == EX_PARCELABLE) result = parcel->write(int32_t{0});
    return result;
}

binder_status_t AParcel_readStatusHeader(const AParcel* parcel, AStatus** status) {
    int32_t exception = 0;
    binder_status_t result = parcel->read(&exception);
    if (result != STATUS_OK) return result;
    if (exception == hostbinder::kSkipBlockException) {
        int32_t blockSize = 0;
        result = parcel->read(&blockSize);
        if (result == STATUS_OK) result = skipRest(parcel, blockSize);
        if (result != STATUS_OK) return result;
        exception = EX_NONE;
    }
    if (exception == EX_NONE) {
        *status = AStatus_newOk();
        return STATUS_OK;
    }
    return readException(parcel, exception, status);
}

// Result codes of binder calls: transport statuses, exception codes and AStatus, which carries
// both.
#pragma once

#include <assert.h>  // first: the C library declares a function of the macro's name below
#include <errno.h>
#include <stdbool.h>
#include <stdint.h>
#include <sys/cdefs.h>

#ifndef __BIONIC__
#ifndef __INTRODUCED_IN
#define __INTRODUCED_IN(n)
#endif
#ifndef __ANDROID_API__
#define __ANDROID_API__ 10000
#endif
#ifndef __assert
#include <stdlib.h>
#include <syslog.h>
#define __assert(file, line, message)                                              \
    do {                                                                           \
        syslog(LOG_ERR, "%s:%d: %s", (file), (int)(line), (const char*)(message)); \
        abort();                                                                   \
    } while (0)
#endif
#endif

__BEGIN_DECLS

// Transport statuses. Anything else passed to the library becomes STATUS_UNKNOWN_ERROR.
enum {
    STATUS_OK = 0,

    STATUS_UNKNOWN_ERROR = (-2147483647 - 1),
    STATUS_NO_MEMORY = -ENOMEM,
    STATUS_INVALID_OPERATION = -ENOSYS,
    STATUS_BAD_VALUE = -EINVAL,
    STATUS_BAD_TYPE = (STATUS_UNKNOWN_ERROR + 1),
    STATUS_NAME_NOT_FOUND = -ENOENT,
    STATUS_PERMISSION_DENIED = -EPERM,
    STATUS_NO_INIT = -ENODEV,
    STATUS_ALREADY_EXISTS = -EEXIST,
    STATUS_DEAD_OBJECT = -EPIPE,
    STATUS_FAILED_TRANSACTION = (STATUS_UNKNOWN_ERROR + 2),
    STATUS_BAD_INDEX = -EOVERFLOW,
    STATUS_NOT_ENOUGH_DATA = -ENODATA,
    STATUS_WOULD_BLOCK = -EWOULDBLOCK,
    STATUS_TIMED_OUT = -ETIMEDOUT,
    STATUS_UNKNOWN_TRANSACTION = -EBADMSG,
    STATUS_FDS_NOT_ALLOWED = (STATUS_UNKNOWN_ERROR + 7),
    STATUS_UNEXPECTED_NULL = (STATUS_UNKNOWN_ERROR + 8),
};
typedef int32_t binder_status_t;

// Exception codes of a reply. Anything else becomes EX_TRANSACTION_FAILED.
enum {
    EX_NONE = 0,
    EX_SECURITY = -1,
    EX_BAD_PARCELABLE = -2,
    EX_ILLEGAL_ARGUMENT = -3,
    EX_NULL_POINTER = -4,
    EX_ILLEGAL_STATE = -5,
    EX_NETWORK_MAIN_THREAD = -6,
    EX_UNSUPPORTED_OPERATION = -7,
    EX_SERVICE_SPECIFIC = -8,
    EX_PARCELABLE = -9,

    // The call did not get through; AStatus_getStatus says why.
    EX_TRANSACTION_FAILED = -129,
};
typedef int32_t binder_exception_t;

// The result of a call. Constructors return an object the caller owns and ends with AStatus_delete.
struct AStatus;
typedef struct AStatus AStatus;

// One object for the whole process; deleting it does nothing.
__attribute__((warn_unused_result)) AStatus* AStatus_newOk(void) __INTRODUCED_IN(29);
__attribute__((warn_unused_result)) AStatus* AStatus_fromExceptionCode(binder_exception_t exception)
        __INTRODUCED_IN(29);
// The message is copied.
__attribute__((warn_unused_result)) AStatus* AStatus_fromExceptionCodeWithMessage(
        binder_exception_t exception, const char* message) __INTRODUCED_IN(29);
__attribute__((warn_unused_result)) AStatus* AStatus_fromServiceSpecificError(
        int32_t serviceSpecific) __INTRODUCED_IN(29);
__attribute__((warn_unused_result)) AStatus* AStatus_fromServiceSpecificErrorWithMessage(
        int32_t serviceSpecific, const char* message) __INTRODUCED_IN(29);
// STATUS_OK gives an OK object, anything else EX_TRANSACTION_FAILED with that status.
__attribute__((warn_unused_result)) AStatus* AStatus_fromStatus(binder_status_t status)
        __INTRODUCED_IN(29);

bool AStatus_isOk(const AStatus* status) __INTRODUCED_IN(29);
binder_exception_t AStatus_getExceptionCode(const AStatus* status) __INTRODUCED_IN(29);
// 0 unless the exception is EX_SERVICE_SPECIFIC.
int32_t AStatus_getServiceSpecificError(const AStatus* status) __INTRODUCED_IN(29);
// STATUS_OK unless the exception is EX_TRANSACTION_FAILED.
binder_status_t AStatus_getStatus(const AStatus* status) __INTRODUCED_IN(29);
// Never null; owned by the status.
const char* AStatus_getMessage(const AStatus* status) __INTRODUCED_IN(29);
// For people. The caller owns the text and ends it with AStatus_deleteDescription.
__attribute__((warn_unused_result)) const char* AStatus_getDescription(const AStatus* status)
        __INTRODUCED_IN(30);
void AStatus_deleteDescription(const char* description) __INTRODUCED_IN(30);
void AStatus_delete(AStatus* status) __INTRODUCED_IN(29);

__END_DECLS

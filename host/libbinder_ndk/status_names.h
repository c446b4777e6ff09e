// Names and bounds of transport statuses and of exceptions.
#pragma once

#include <android/binder_status.h>

namespace hostbinder {

// The status itself, or STATUS_UNKNOWN_ERROR (with a warning) if it is none of the known ones.
binder_status_t PruneStatus(binder_status_t status);

// "DEAD_OBJECT" and the like, for logs and the trace.
const char* StatusName(binder_status_t status);

// "EX_ILLEGAL_STATE" and the like, of a known exception.
const char* ExceptionName(binder_exception_t exception);

}  // namespace hostbinder

// Host only: names for the trace of transactions (environment variable STANDIN_BINDER_TRACE_FD).
#pragma once

#include <android/binder_ibinder.h>

__BEGIN_DECLS

// names[k] is the method with code FIRST_CALL_TRANSACTION + k; the strings are copied. Without
// names a trace line shows the code.
void AIBinder_Class_setTransactionNames(AIBinder_Class* clazz, const char* const* names,
                                        size_t count);

__END_DECLS

// The threads on which a process serves incoming calls. Outgoing calls need none of them.
#pragma once

#include <android/binder_status.h>
#include <stdint.h>
#include <sys/cdefs.h>

__BEGIN_DECLS

// Starts one pool thread; more start on demand, up to the maximum. Calls queue until then.
void ABinderProcess_startThreadPool(void);
// Threads that may start on demand, beyond the first; 15 unless set. True on success.
// Lowering it after the pool was started ends the process.
bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads);
bool ABinderProcess_isThreadPoolStarted(void);
// The calling thread serves calls and does not return.
void ABinderProcess_joinThreadPool(void);

__END_DECLS

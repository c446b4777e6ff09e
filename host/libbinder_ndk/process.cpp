// ABinderProcess: the process's thread pool.
#include <android/binder_process.h>

#include <cstdlib>

#include "endpoint.h"
#include "log.h"
#include "thread_pool.h"

using hostbinder::ThreadPool;

void ABinderProcess_startThreadPool(void) {
    ThreadPool::instance().start();
}

bool ABinderProcess_setThreadPoolMaxThreadCount(uint32_t numThreads) {
    if (!ThreadPool::instance().setMaxThreads(numThreads)) {
        BINDER_LOGE("the pool is started: its maximum cannot be lowered to %u", numThreads);
        abort();
    }
    return true;
}

bool ABinderProcess_isThreadPoolStarted(void) {
    return ThreadPool::instance().isStarted();
}

void ABinderProcess_joinThreadPool(void) {
    ThreadPool::instance().join();
}

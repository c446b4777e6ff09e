// The current thread's incoming call: who makes it, and the chain it belongs to.
#include "call_context.h"

#include <android/binder_ibinder.h>
#include <unistd.h>

namespace hostbinder {

namespace {
thread_local CallContext tContext;
}  // namespace

const CallContext& callContext() {
    return tContext;
}

ScopedCallContext::ScopedCallContext(const CallContext& context) : mOuter(tContext) {
    tContext = context;
}

ScopedCallContext::~ScopedCallContext() {
    tContext = mOuter;
}

}  // namespace hostbinder

uid_t AIBinder_getCallingUid(void) {
    const hostbinder::CallContext& context = hostbinder::callContext();
    return context.handling ? context.uid : getuid();
}

pid_t AIBinder_getCallingPid(void) {
    const hostbinder::CallContext& context = hostbinder::callContext();
    return context.handling ? context.pid : getpid();
}

bool AIBinder_isHandlingTransaction(void) {
    return hostbinder::callContext().handling;
}

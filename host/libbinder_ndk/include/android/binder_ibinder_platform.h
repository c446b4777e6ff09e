// AIBinder functions for platform code: flags and hints that mean little on a workstation.
#pragma once

#include <android/binder_ibinder.h>

__BEGIN_DECLS

enum {
    // The buffers of the call are cleared after use.
    FLAG_CLEAR_BUF = 0x20,
};

// There are no security contexts here: accepted, and no context is ever reported.
void AIBinder_setRequestingSid(AIBinder* binder, bool requestingSid) __INTRODUCED_IN(31);
__attribute__((weak, warn_unused_result)) const char* AIBinder_getCallingSid(void)
        __INTRODUCED_IN(31);

// Scheduling hints; accepted without effect. policy is SCHED_*, priority as for that policy.
void AIBinder_setMinSchedulerPolicy(AIBinder* binder, int policy, int priority) __INTRODUCED_IN(33);
void AIBinder_setInheritRt(AIBinder* binder, bool inheritRt) __INTRODUCED_IN(33);

__END_DECLS

// AIBinder functions for platform code: flags and hints that mean little on a workstation.
#pragma once

#include <android/binder_ibinder.h>

__BEGIN_DECLS

enum {
    // The call's buffers are to be cleared after use. Accepted without effect.
    FLAG_CLEAR_BUF = 0x20,
};

// Scheduling hints; accepted without effect. policy is SCHED_*, priority as for that policy.
void AIBinder_setMinSchedulerPolicy(AIBinder* binder, int policy, int priority) __INTRODUCED_IN(33);
void AIBinder_setInheritRt(AIBinder* binder, bool inheritRt) __INTRODUCED_IN(33);

__END_DECLS

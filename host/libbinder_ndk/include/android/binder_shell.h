// Shell commands to an object. Its presence gives ndk::ICInterface the handleShellCommand method;
// no command comes here.
#pragma once

#include <android/binder_ibinder.h>

__BEGIN_DECLS

// The descriptors and argv are borrowed for the call.
typedef binder_status_t (*AIBinder_handleShellCommand)(AIBinder* binder, int in, int out, int err,
                                                       const char** argv, uint32_t argc);

__END_DECLS

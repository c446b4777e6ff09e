// The library's log lines: one tag, one short macro per priority, and a throttle for each place
// that writes.
#pragma once

#include <log_throttle.h>

#define BINDER_LOG(priority, ...)                                   \
    do {                                                            \
        static auto* const throttle = new standin_log::LogThrottle; \
        if (throttle->mayWrite("binder")) {                         \
            __android_log_print(priority, "binder", __VA_ARGS__);   \
        }                                                           \
    } while (false)

#define BINDER_LOGE(...) BINDER_LOG(ANDROID_LOG_ERROR, __VA_ARGS__)
#define BINDER_LOGW(...) BINDER_LOG(ANDROID_LOG_WARN, __VA_ARGS__)
#define BINDER_LOGI(...) BINDER_LOG(ANDROID_LOG_INFO, __VA_ARGS__)

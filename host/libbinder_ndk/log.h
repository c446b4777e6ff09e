// The library's log lines: one tag, one short macro per priority.
#pragma once

#include <android/log.h>

#define BINDER_LOGE(...) __android_log_print(ANDROID_LOG_ERROR, "binder", __VA_ARGS__)
#define BINDER_LOGW(...) __android_log_print(ANDROID_LOG_WARN, "binder", __VA_ARGS__)
#define BINDER_LOGI(...) __android_log_print(ANDROID_LOG_INFO, "binder", __VA_ARGS__)

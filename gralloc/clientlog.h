// Platform-log lines of the client, its callbacks and its graphics code: one tag for all of them.
#pragma once

#include <android/log.h>

#define CLIENT_LOG_TAG "OfflineCameraClient"

// Macros, so that the compiler checks each format against its arguments.
#define CLIENT_LOGD(...) __android_log_print(ANDROID_LOG_DEBUG, CLIENT_LOG_TAG, __VA_ARGS__)
#define CLIENT_LOGI(...) __android_log_print(ANDROID_LOG_INFO, CLIENT_LOG_TAG, __VA_ARGS__)
#define CLIENT_LOGW(...) __android_log_print(ANDROID_LOG_WARN, CLIENT_LOG_TAG, __VA_ARGS__)
#define CLIENT_LOGE(...) __android_log_print(ANDROID_LOG_ERROR, CLIENT_LOG_TAG, __VA_ARGS__)

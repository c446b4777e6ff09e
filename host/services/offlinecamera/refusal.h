// How the service says no: one log line and a service-specific error with the same text.
#pragma once

#include <android/binder_auto_utils.h>
#include <android/log.h>

#include <string>

namespace offlinecamera {

inline constexpr char kLogTag[] = "OfflineCameraService";

// Service-specific error codes of this package's interfaces.
enum ServiceError : int32_t {
    kIllegalArgument = 1,
    kWrongState = 2,   // the call does not fit what the session is doing
    kNoResources = 3,  // too many requests
    kInternal = 4,
};

// One error line in the platform log.
inline void LogProblem(const std::string& problem) {
    __android_log_write(ANDROID_LOG_ERROR, kLogTag, problem.c_str());
}

// `problem`: what was wrong, with the value that was found.
inline ndk::ScopedAStatus Refuse(const char* operation, ServiceError error,
                                 const std::string& problem) {
    LogProblem(std::string(operation) + " refused: " + problem);
    return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(error, problem.c_str());
}

}  // namespace offlinecamera

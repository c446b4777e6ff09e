// Refusals: log line and status.
#include "refusal.h"

#include <android/log.h>

namespace offlinecamera {

ndk::ScopedAStatus Refuse(const char* operation, ServiceError error, const std::string& problem) {
    LogProblem(std::string(operation) + " refused: " + problem);
    return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(error, problem.c_str());
}

void LogProblem(const std::string& problem) {
    __android_log_write(ANDROID_LOG_ERROR, kLogTag, problem.c_str());
}

}  // namespace offlinecamera

// Refusals: log line and status.
#include "refusal.h"

#include <log_throttle.h>

namespace offlinecamera {

ndk::ScopedAStatus Refuse(const char* operation, ServiceError error, const std::string& problem) {
    LogProblem(std::string(operation) + " refused: " + problem);
    return ndk::ScopedAStatus::fromServiceSpecificErrorWithMessage(error, problem.c_str());
}

void LogProblem(const std::string& problem) {
    static auto* const throttle = new standin_log::LogThrottle;
    if (!throttle->mayWrite(kLogTag)) return;
    __android_log_write(ANDROID_LOG_ERROR, kLogTag, problem.c_str());
}

}  // namespace offlinecamera

// Names of what a report tells.

#include "report.h"

#include <string.h>

namespace runreport {

namespace {

constexpr int kUsageStatus = 255;
constexpr int kFirstNoDevice = 125;
constexpr int kLastNoDevice = 127;
constexpr int kSignalBase = 128;
constexpr int kLastSignal = 64;

}  // namespace

Ending Run::ending() const {
    if (status == 0) return Ending::kFinished;
    if (status == kUsageStatus) return Ending::kUsageError;
    if (status >= kFirstNoDevice && status <= kLastNoDevice) return Ending::kNoDevice;
    if (status > kSignalBase && status <= kSignalBase + kLastSignal) return Ending::kSignal;
    return Ending::kOther;
}

std::string Run::signalName() const {
    if (ending() != Ending::kSignal) return "";
    const int number = status - kSignalBase;
    const char* const known = sigabbrev_np(number);
    return known != nullptr ? std::string("SIG") + known : "signal " + std::to_string(number);
}

const char* name(Ending ending) {
    switch (ending) {
        case Ending::kFinished:
            return "finished";
        case Ending::kUsageError:
            return "usage-error";
        case Ending::kSignal:
            return "signal";
        case Ending::kNoDevice:
            return "no-device";
        case Ending::kOther:
            break;
    }
    return "other";
}

const char* name(PhaseEnd end) {
    switch (end) {
        case PhaseEnd::kDone:
            return "done";
        case PhaseEnd::kFailed:
            return "failed";
        case PhaseEnd::kTimedOut:
            return "timed-out";
        case PhaseEnd::kCutShort:
            break;
    }
    return "cut-short";
}

const char* name(Severity severity) {
    return severity == Severity::kError ? "error" : "warning";
}

}  // namespace runreport

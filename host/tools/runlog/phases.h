// The steps of a run, told from what the tool's main thread logged and called.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "facts.h"
#include "runlog.h"

namespace runlog {

enum class PhaseEnd { kDone, kFailed, kTimedOut, kCutShort };

// A stretch of the main thread; phases follow each other without gap or overlap.
struct Phase {
    std::string name;
    int64_t startUs = 0;
    int64_t endUs = 0;
    bool waits = false;
    PhaseEnd end = PhaseEnd::kDone;
    std::string detail;  // what it worked on; may be empty
};

// Phases in order, from the run's start to its end `durationUs` later; the first is "device", in
// which the stand-in device comes up. None when the tool logged nothing. `log` and `calls` are in
// order of time, `facts` are of `log`; `cutShort`: a signal ended the run.
std::vector<Phase> FindPhases(const std::vector<Line>& log, const std::vector<Call>& calls,
                              const Facts& facts, int64_t durationUs, bool cutShort);

// The phase at that time; null when there is none.
const Phase* PhaseAt(const std::vector<Phase>& phases, int64_t timeUs);

}  // namespace runlog

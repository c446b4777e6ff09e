// The binder trace of a run.
#pragma once

#include <string>
#include <vector>

#include "report.h"
#include "run_clock.h"

namespace runreport {

inline constexpr size_t kMaxCalls = 20'000;

struct TraceFile {
    std::vector<Call> calls;  // in order of their starts; the first kMaxCalls of the file
    std::string problem;      // empty, or what is missing
};

// Lines that are not of the trace's form (a last one cut short) are left out and counted in
// `problem`.
TraceFile readTrace(const std::string& path, const RunClock& clock);

}  // namespace runreport

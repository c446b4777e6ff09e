// Platform logs of a run.
#pragma once

#include <string>
#include <vector>

#include "report.h"
#include "run_clock.h"

namespace runreport {

// Of a longer log the first and the last of these many lines are kept, and between them errors.
inline constexpr size_t kKeptAtEachEnd = 20'000;
inline constexpr size_t kKeptErrors = 5'000;

struct LogFile {
    std::vector<LogLine> lines;  // in the file's order
    uint64_t omitted = 0;
    std::string problem;  // empty, or why it is not complete
};

// Lines that are not of the log's form (output of a program) keep the time of the line before.
LogFile readLog(const std::string& path, bool ofDevice, const RunClock& clock);

// Both in one order of time; lines of the same time stay as they were, those of `first` first.
std::vector<LogLine> mergeLogs(std::vector<LogLine> first, std::vector<LogLine> second);

}  // namespace runreport

// What one run under a fault came to, in the words of the fault matrix.

#include "tests/end_to_end/fault_outcome.h"

#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <functional>
#include <regex>
#include <sstream>

namespace end_to_end {

namespace {

std::string endOf(int status) {
    const char* const name = status > 128 ? sigabbrev_np(status - 128) : nullptr;
    return name ? std::string("SIG") + name : std::to_string(status);
}

// Seconds of the day of a line that begins "MM-DD HH:MM:SS.uuuuuu".
double timeOf(const std::string& line) {
    unsigned hours = 0, minutes = 0;
    double seconds = 0;
    sscanf(line.c_str(), "%*s %u:%u:%lf", &hours, &minutes, &seconds);
    return hours * 3600 + minutes * 60 + seconds;
}

// Counts the tool's waits of 5 s that lasted so long. A run that goes on for much longer than them
// is slow beyond what a busy machine explains.
std::string waitsOf(const std::string& log, double duration) {
    int waits = 0;
    double begin = 0;
    std::istringstream lines(log);
    for (std::string line; std::getline(lines, line);) {
        if (std::regex_search(line, std::regex(": Wait.* (time|timeout_ms) 5000$"))) {
            begin = timeOf(line);
        } else if (line.find(" received ") != std::string::npos) {
            const double lasted = timeOf(line) - begin;
            if (lasted > 4.9 || lasted < 0) ++waits;  // below 0: over midnight
        }
    }
    const std::string text = waits == 0 ? "none" : waits == 1 ? "5 s" : "5 s + 5 s";
    return duration < waits * 5 + 30 ? text : text + ", then slow";
}

void fillFromLog(const std::vector<LogLine>& log, Outcome* outcome) {
    static const std::regex& addresses = *new std::regex("0x[0-9a-f]+");
    std::smatch match;
    std::string shutter, result;
    std::vector<std::string> errors;
    for (const LogLine& line : log) {
        static const std::regex& shutterLine =
                *new std::regex("WaitForShutter frame \\d+ received (\\d)");
        static const std::regex& resultLine =
                *new std::regex("WaitCaptureResultCompleted status is (-?\\d+)");
        if (std::regex_match(line.message, match, shutterLine)) {
            shutter = match[1] == "1" ? "yes" : "no";
        } else if (std::regex_match(line.message, match, resultLine)) {
            result = match[1];
        } else if (line.message == "CloseOfflineSession") {
            outcome->closed = true;
        }
        if (!strchr("EF", line.priority)) continue;
        const std::string error = std::string(1, line.priority) + " " +
                                  std::regex_replace(line.message, addresses, "ADDRESS");
        if (std::find(errors.begin(), errors.end(), error) == errors.end()) {
            outcome->errors += (errors.empty() ? "`" : "<br>`") + error + "`";
            errors.push_back(error);
        }
    }
    if (result.empty()) return;
    // A shutter that came before the wait has no line.
    outcome->request = (shutter.empty() ? "yes" : shutter) + ", " + result;
}

}  // namespace

Outcome outcomeOf(const DeviceRun& device, const RunResult& result, double duration) {
    Outcome outcome;
    outcome.end = endOf(result.status);
    outcome.waits = waitsOf(readFile(device.folder() + "/tool.log"), duration);
    fillFromLog(result.log, &outcome);
    for (const auto& [name, size] : result.dumps) {
        if (name.rfind("OfflineAidl_", 0) != 0) continue;
        outcome.dumps.push_back(
                {name, size, std::hash<std::string>()(readFile(device.dumpPath(name)))});
    }
    return outcome;
}

}  // namespace end_to_end

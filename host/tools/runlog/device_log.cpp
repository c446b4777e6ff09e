// What only a device's log has: several runs, and crashes as the platform reports them.

#include <stdio.h>

#include <algorithm>
#include <map>

#include "runlog.h"

namespace runlog {

namespace {

constexpr size_t kMaxRuns = 1'000;  // that are remembered while a log is read
constexpr size_t kMaxFrames = 4;    // of a backtrace: who called whom where it crashed

// The text after a word; empty without the word.
std::string After(const std::string& text, const std::string& word) {
    const size_t at = text.find(word);
    return at == text.npos ? "" : text.substr(at + word.size());
}

// Of a line by the crashing process itself, or of the block with a backtrace that another process
// writes: that names the crashed one only after its first lines.
void TakeCrashLine(const Line& line, Crash* crash) {
    const char* const text = line.message.c_str();
    char name[64] = {};
    int signal = 0;
    if (sscanf(text, "Fatal signal %9d", &signal) == 1) {
        crash->signal = signal;
        const std::string process = After(line.message, ", pid ");
        if (sscanf(process.c_str(), "%9d (%63[^)])", &crash->pid, name) == 2) crash->program = name;
    } else if (sscanf(text, "pid: %9d, tid: %*d, name: ", &crash->pid) == 1) {
        const std::string program = After(line.message, ">>> ");
        crash->program = program.substr(0, program.find(" <<<"));
    } else if (sscanf(text, "signal %9d", &signal) == 1) {
        crash->signal = signal;
    } else if (line.message.rfind("Cause: ", 0) == 0 ||
               line.message.rfind("Abort message: ", 0) == 0) {
        crash->reason = After(line.message, ": ");
    } else if (const size_t frame = line.message.find_first_not_of(' ');
               frame != line.message.npos && line.message.compare(frame, 2, "#0") == 0 &&
               crash->frames.size() < kMaxFrames) {
        crash->frames.push_back(line.message.substr(frame, line.message.find(" (BuildId") - frame));
    }
}

void Complete(const Crash& part, Crash* crash) {
    if (crash->program.empty() || !part.frames.empty()) crash->program = part.program;
    if (crash->signal == 0) crash->signal = part.signal;
    if (crash->reason.empty()) crash->reason = part.reason;
    if (part.frames.size() > crash->frames.size()) crash->frames = part.frames;
}

}  // namespace

base::Result<std::optional<LoggedRun>> FindRun(const std::string& path, std::optional<int> pid) {
    std::map<int, LoggedRun> runs;  // the last one of each process
    const auto starts = [](const auto& a, const auto& b) {
        return a.second.firstLine < b.second.firstLine;
    };
    const auto read = ReadLog(path, 0, [&](const Line& line, uint64_t number) {
        if (pid && line.pid != *pid) return false;
        if (line.tag != "OfflineCameraTest" && line.tag != "OfflineCameraClient") return false;
        const bool begins = line.message.rfind("main: offline camera client connect", 0) == 0;
        LoggedRun& run = runs[line.pid];
        if (begins || run.lines == 0) run = {line.pid, number, 0};
        ++run.lines;
        if (runs.size() > kMaxRuns) {
            runs.erase(std::min_element(runs.begin(), runs.end(), starts));
        }
        return false;
    });
    if (!read.Ok()) return read.GetFailure();
    if (runs.empty()) return std::optional<LoggedRun>();
    return std::optional(std::max_element(runs.begin(), runs.end(), starts)->second);
}

bool IsOfCrash(const Line& line) {
    return line.tag == "DEBUG" || line.message.rfind("Fatal signal ", 0) == 0;
}

std::vector<Crash> FindCrashes(const std::vector<Line>& log) {
    std::map<int, Crash> parts;  // by the writing process
    std::vector<Crash> crashes;
    for (const Line& line : log) {
        if (!IsOfCrash(line)) continue;
        const bool begins = line.message.rfind("*** ***", 0) == 0;
        Crash& part = parts[line.pid];
        if (begins) part = Crash();
        if (part.timeUs == 0) part.timeUs = line.timeUs;
        TakeCrashLine(line, &part);
        if (part.pid == 0) continue;
        const auto known = std::find_if(crashes.begin(), crashes.end(),
                                        [&](const Crash& crash) { return crash.pid == part.pid; });
        if (known == crashes.end()) {
            crashes.push_back(part);
        } else {
            Complete(part, &*known);
        }
    }
    return crashes;
}

}  // namespace runlog

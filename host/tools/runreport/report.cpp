// Reads logs, trace and frames of a run, then draws conclusions.

#include "report.h"

#include <string.h>

#include <algorithm>

namespace runreport {

namespace {

// What `read` finds in an input, or what is missing; nothing for an input that was not given.
template <class Content>
Content Read(const std::string& path, base::Result<Content> (*read)(const std::string&, int64_t),
             Report* report) {
    if (path.empty()) return {};
    base::Result<Content> content = read(path, report->run.startedUs);
    if (content.Ok()) return std::move(content).Value();
    report->missing.push_back(content.Error());
    return {};
}

void TakeLog(const std::string& path, bool fromServices, Report* report) {
    runlog::Log log = Read(path, runlog::ReadLog, report);
    report->omittedLogLines += log.omitted;
    for (runlog::Line& line : log.lines) {
        line.fromServices = fromServices;
        report->log.push_back(std::move(line));
    }
}

void TakeTrace(const std::string& path, Report* report) {
    runlog::Trace trace = Read(path, runlog::ReadTrace, report);
    if (trace.unreadable + trace.surplus > 0) {
        report->missing.push_back(path + ": " + std::to_string(trace.unreadable) +
                                  " lines are no transactions, " + std::to_string(trace.surplus) +
                                  " are too many");
    }
    report->traceIsWhole = !trace.calls.empty() && trace.surplus == 0;
    report->calls = std::move(trace.calls);
    for (runlog::Call& call : report->calls) {
        const bool cut = call.status.empty();
        if (cut) call.durationUs = std::max<int64_t>(report->run.durationUs - call.startUs, 0);
    }
}

}  // namespace

std::string Run::Ending() const {
    if (status == 0) return "finished";
    if (status == 255) return "usage-error";
    if (status >= 125 && status <= 127) return "no-device";
    return Signal() != 0 ? "signal" : "other";
}

int Run::Signal() const {
    return status > 128 && status <= 128 + 64 ? status - 128 : 0;
}

std::string Run::SignalName() const {
    if (Signal() == 0) return "";
    const char* const known = sigabbrev_np(Signal());
    return known ? std::string("SIG") + known : "signal " + std::to_string(Signal());
}

Report MakeReport(const Inputs& inputs, Pictures pictures) {
    Report report;
    report.run = inputs.run;
    TakeLog(inputs.log, false, &report);
    TakeLog(inputs.deviceLog, true, &report);
    std::stable_sort(
            report.log.begin(), report.log.end(),
            [](const runlog::Line& a, const runlog::Line& b) { return a.timeUs < b.timeUs; });
    TakeTrace(inputs.trace, &report);
    report.facts = runlog::FindFacts(report.log);
    ReadFrames(inputs, pictures, &report);
    report.phases = runlog::FindPhases(report.log, report.calls, report.facts,
                                       report.run.durationUs, report.run.Signal() != 0);
    report.problems = FindProblems(report);
    return report;
}

}  // namespace runreport

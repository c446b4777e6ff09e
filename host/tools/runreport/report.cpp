// Reads logs, trace and frames of a run, then draws conclusions.

#include "report.h"

#include <string.h>

#include <algorithm>
#include <iterator>

#include "frames.h"

namespace runreport {

namespace {

constexpr int kSignalBase = 128;
constexpr int kLastSignal = 64;

void ReadLog(const std::string& path, bool fromServices, Report* report) {
    if (path.empty()) return;
    base::Result<runlog::Log> log = runlog::ReadLog(path, report->run.startedUs);
    if (!log.Ok()) {
        report->missing.push_back(log.Error());
        return;
    }
    report->omittedLogLines += log.Value().omitted;
    for (runlog::Line& line : log.Value().lines) {
        line.fromServices = fromServices;
        report->log.push_back(std::move(line));
    }
}

void ReadTrace(const std::string& path, Report* report) {
    if (path.empty()) return;
    base::Result<runlog::Trace> trace = runlog::ReadTrace(path, report->run.startedUs);
    if (!trace.Ok()) {
        report->missing.push_back(trace.Error());
        return;
    }
    const uint64_t unreadable = trace.Value().unreadable;
    const uint64_t surplus = trace.Value().surplus;
    if (unreadable + surplus > 0) {
        report->missing.push_back(path + ": " + std::to_string(unreadable) +
                                  " lines are no transactions, " + std::to_string(surplus) +
                                  " are too many");
    }
    report->calls = std::move(trace.Value().calls);
}

}  // namespace

Ending Run::GetEnding() const {
    if (status == 0) return Ending::kFinished;
    if (status == 255) return Ending::kUsageError;
    if (status >= 125 && status <= 127) return Ending::kNoDevice;
    return Signal() != 0 ? Ending::kSignal : Ending::kOther;
}

int Run::Signal() const {
    return status > kSignalBase && status <= kSignalBase + kLastSignal ? status - kSignalBase : 0;
}

std::string Run::SignalName() const {
    if (Signal() == 0) return "";
    const char* const known = sigabbrev_np(Signal());
    return known ? std::string("SIG") + known : "signal " + std::to_string(Signal());
}

Report MakeReport(const Inputs& inputs) {
    Report report;
    report.run = inputs.run;
    ReadLog(inputs.log, false, &report);
    ReadLog(inputs.deviceLog, true, &report);
    std::stable_sort(
            report.log.begin(), report.log.end(),
            [](const runlog::Line& a, const runlog::Line& b) { return a.timeUs < b.timeUs; });
    ReadTrace(inputs.trace, &report);
    const runlog::Facts facts = runlog::FindFacts(report.log);
    ReadFrames(facts.sources, inputs, &report);
    report.phases = runlog::FindPhases(report.log, report.calls, facts, report.run.durationUs,
                                       report.run.GetEnding() == Ending::kSignal);
    report.problems = FindProblems(report);
    return report;
}

}  // namespace runreport

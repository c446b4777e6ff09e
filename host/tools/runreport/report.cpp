// Reads logs, trace and frames of a run, then draws conclusions.

#include "report.h"

#include <string.h>

#include <algorithm>

namespace runreport {

namespace {

// What an input has, or nothing and a remark.
template <class Content>
Content Known(base::Result<Content> content, Report* report) {
    if (content.Ok()) return std::move(content).Value();
    report->missing.push_back(content.Error());
    return {};
}

void TakeLog(const std::string& path, bool fromServices, Report* report) {
    if (path.empty()) return;
    runlog::Log log = Known(runlog::ReadLog(path, report->run.startedUs), report);
    report->omittedLogLines += log.omitted;
    for (runlog::Line& line : log.lines) {
        line.fromServices = fromServices;
        report->log.push_back(std::move(line));
    }
}

// Of a device's log, which holds all its programs: one run of the tool, and crashes of any process
// until shortly after it.
void TakeDeviceLog(const Inputs& inputs, Report* report) {
    constexpr int64_t kCrashIsLoggedWithinUs = 10'000'000;
    const auto run = Known(runlog::FindRun(inputs.log, inputs.pid), report);
    if (!run) {
        report->missing.push_back(inputs.log + ": no line of the tool in it");
        return;
    }
    runlog::Log log =
            Known(runlog::ReadLog(inputs.log, 0,
                                  [&](const runlog::Line& line, uint64_t number) {
                                      return number >= run->firstLine &&
                                             (line.pid == run->pid || runlog::IsOfCrash(line));
                                  }),
                  report);
    report->omittedLogLines = log.omitted;
    report->run.durationUs = 0;  // the command's is longer: it fetched all this
    int64_t endUs = 0;
    for (const runlog::Line& line : log.lines) {
        if (line.pid == run->pid) endUs = std::max(endUs, line.timeUs);
    }
    for (runlog::Line& line : log.lines) {
        if (line.timeUs > endUs + kCrashIsLoggedWithinUs) continue;
        line.fromServices = line.pid != run->pid;
        report->run.durationUs = std::max(report->run.durationUs, line.timeUs);
        report->log.push_back(std::move(line));
    }
    report->crashes = runlog::FindCrashes(report->log);
    report->toolPid = run->pid;
    if (!report->log.empty() && report->log.back().tid == 0) {
        report->missing.push_back(
                "the threads of lines: the log's format has none, so that a step may be a "
                "callback's");
    }
    if (report->run.durationUs == 0) {
        report->missing.push_back("times: the log's format has none");
    }
    report->missing.push_back("binder calls: a device keeps no trace of them");
    report->missing.push_back("the service's own log: of other processes, only crashes are shown");
}

void TakeTrace(const std::string& path, Report* report) {
    if (path.empty()) return;
    runlog::Trace trace = Known(runlog::ReadTrace(path, report->run.startedUs), report);
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
    if (!status) return "unknown";
    if (status == 0) return "finished";
    if (status == 255) return "usage-error";
    if (status >= 125 && status <= 127) return "no-device";
    return Signal() != 0 ? "signal" : "other";
}

int Run::Signal() const {
    return status > 128 && status <= 128 + 64 ? *status - 128 : 0;
}

std::string Run::SignalName() const {
    if (Signal() == 0) return "";
    const char* const known = sigabbrev_np(Signal());
    return known ? std::string("SIG") + known : "signal " + std::to_string(Signal());
}

Report MakeReport(const Inputs& inputs, Pictures pictures) {
    Report report;
    report.run = inputs.run;
    if (report.run.place == Place::kWorkstation) {
        TakeLog(inputs.log, false, &report);
        TakeLog(inputs.deviceLog, true, &report);
    } else {
        TakeDeviceLog(inputs, &report);
    }
    std::stable_sort(
            report.log.begin(), report.log.end(),
            [](const runlog::Line& a, const runlog::Line& b) { return a.timeUs < b.timeUs; });
    TakeTrace(inputs.trace, &report);
    report.facts = runlog::FindFacts(report.log);
    ReadFrames(inputs, pictures, &report);
    // A crash tells the status of a run that came without one.
    for (const runlog::Crash& crash : report.crashes) {
        if (!report.run.status && crash.pid == report.toolPid && crash.signal > 0)
            report.run.status = 128 + crash.signal;
    }
    report.phases = runlog::FindPhases(report.log, report.calls, report.facts,
                                       report.run.durationUs, report.run.Signal() != 0);
    // What comes before a device's first line is not known.
    if (report.run.place != Place::kWorkstation && !report.phases.empty()) {
        report.phases.erase(report.phases.begin());
    }
    report.problems = FindProblems(report);
    return report;
}

}  // namespace runreport

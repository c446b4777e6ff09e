// Reads logs, trace and frames, then draws conclusions.

#include "make_report.h"

#include <utility>

#include "frames.h"
#include "log_reader.h"
#include "problems.h"
#include "run_clock.h"
#include "timeline.h"
#include "trace_reader.h"

namespace runreport {

namespace {

void noteMissing(std::string problem, Report* report) {
    if (!problem.empty()) report->missing.push_back(std::move(problem));
}

void readLogs(const Options& options, const RunClock& clock, Report* report) {
    LogFile tool = readLog(options.logFile, false, clock);
    LogFile device = readLog(options.deviceLogFile, true, clock);
    noteMissing(tool.problem, report);
    noteMissing(device.problem, report);
    report->omittedLogLines = tool.omitted + device.omitted;
    report->log = mergeLogs(std::move(tool.lines), std::move(device.lines));
}

void readFrames(const Options& options, Report* report) {
    report->sources = findSources(report->log, options.dataFolder);
    for (const std::string& path : options.dumps) report->dumps.emplace_back().path = path;
    std::vector<Frame*> all;
    for (Frame& frame : report->sources) all.push_back(&frame);
    for (Frame& frame : report->dumps) all.push_back(&frame);
    examineFrames(all);
}

}  // namespace

Report makeReport(const Options& options) {
    const RunClock clock(options.run.startedUs);
    Report report;
    report.run = options.run;
    readLogs(options, clock, &report);
    TraceFile trace = readTrace(options.traceFile, clock);
    noteMissing(trace.problem, &report);
    report.calls = std::move(trace.calls);
    readFrames(options, &report);
    report.phases = makePhases(report);
    findProblems(options.explanationsFiles, &report);
    return report;
}

}  // namespace runreport

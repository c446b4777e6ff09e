// Problems: lines of the log, conclusions and the run's end, with causes and cures.

#include <explanations/explanations.h>

#include <algorithm>
#include <tuple>

#include "conclusions.h"

namespace runreport {

namespace {

using explanations::Explanation;
using runlog::Phase;

constexpr size_t kMaxErrorLines = 200;  // of different messages: a page stays readable
constexpr size_t kMaxProblems = 400;

std::string Joined(std::string_view text) {
    std::string line(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

// What log and trace tell of this run goes before what the table says of all.
void Explain(const Explanation* explanation, Place place, Problem* problem) {
    problem->concluded = !problem->cause.empty();
    if (!explanation) return;
    if (problem->cause.empty()) problem->cause = Joined(explanation->cause);
    if (!problem->cure.empty()) return;
    problem->cure = Joined(explanation->cure);
    if (place != Place::kWorkstation && !explanation->onDevice.empty()) {
        problem->cure += " " + Joined(explanation->onDevice);
    }
}

void AddErrorLines(const Report& report, std::vector<Problem>* problems) {
    for (const runlog::Error& error : runlog::DifferentErrors(report.log)) {
        if (problems->size() == kMaxErrorLines) return;
        if (IsToldElsewhere(report, error.line)) continue;
        Problem problem;
        problem.text = error.line.message;
        problem.timeUs = error.line.timeUs;
        problem.count = error.count;
        problem.logged = true;
        ConcludeLine(report, error.line, &problem);
        Explain(explanations::Explain(problem.text), report.run.place, &problem);
        problems->push_back(problem);
    }
}

// What services log afterwards follows from the end.
int64_t LastSignOfTool(const Report& report) {
    int64_t timeUs = report.calls.empty() ? 0 : std::max<int64_t>(report.calls.back().startUs, 0);
    for (const runlog::Line& line : report.log) {
        if (!line.fromServices) timeUs = std::max(timeUs, line.timeUs);
    }
    return timeUs;
}

void AddEnding(const Report& report, std::vector<Problem>* problems) {
    const Run& run = report.run;
    const std::string ending = run.Ending();
    if (ending == "finished" || ending == "unknown") return;
    Problem problem;
    problem.text = ending == "usage-error" ? "The tool refused its arguments"
                   : ending == "signal"    ? "The run was ended by " + run.SignalName()
                   : ending == "no-device"
                           ? "The run did not start"
                           : "The run ended with status " + std::to_string(*run.status);
    problem.timeUs = ending == "signal" ? LastSignOfTool(report) : run.durationUs;
    if (ending == "signal") problem.cause = CauseOfSignal(report);
    Explain(explanations::ExplainStatus(*run.status), run.place, &problem);
    problems->push_back(problem);
}

}  // namespace

std::vector<Problem> FindProblems(const Report& report) {
    std::vector<Problem> problems;
    AddErrorLines(report, &problems);
    for (Problem& problem : FindConclusions(report)) {
        const auto same = std::find_if(problems.begin(), problems.end(), [&](const Problem& known) {
            return !known.logged && known.text == problem.text;
        });
        if (same != problems.end()) {
            ++same->count;
            continue;
        }
        if (problems.size() == kMaxProblems) continue;
        Explain(explanations::Explain(problem.text), report.run.place, &problem);
        problems.push_back(problem);
    }
    AddEnding(report, &problems);
    std::stable_sort(problems.begin(), problems.end(), [](const Problem& a, const Problem& b) {
        return std::tie(b.isRoot, a.timeUs) < std::tie(a.isRoot, b.timeUs);  // roots first
    });
    for (Problem& problem : problems) {
        for (const Phase& phase : report.phases) {
            if (problem.phase.empty() || phase.startUs <= problem.timeUs)
                problem.phase = phase.name;
        }
    }
    return problems;
}

}  // namespace runreport

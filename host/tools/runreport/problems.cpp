// Problems: lines of the log, conclusions and the run's end, with causes and cures.

#include <explanations/explanations.h>

#include <algorithm>

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
        Problem problem;
        problem.text = error.line.message;
        problem.timeUs = error.line.timeUs;
        problem.count = error.count;
        problem.logged = true;
        if (!ConcludeLine(report, error.line, &problem)) continue;
        Explain(explanations::Explain(problem.text), report.run.place, &problem);
        problems->push_back(problem);
    }
}

// What services log afterwards follows from the end.
int64_t LastSignOfTool(const Report& report) {
    int64_t timeUs = 0;
    for (const runlog::Line& line : report.log) {
        if (!line.fromServices) timeUs = std::max(timeUs, line.timeUs);
    }
    for (const runlog::Call& call : report.calls) timeUs = std::max(timeUs, call.startUs);
    return timeUs;
}

void AddEnding(const Report& report, std::vector<Problem>* problems) {
    const Run& run = report.run;
    const Ending ending = run.GetEnding();
    if (ending == Ending::kFinished || ending == Ending::kUnknown) return;
    Problem problem;
    problem.text = ending == Ending::kUsageError ? "The tool refused its arguments"
                   : ending == Ending::kSignal   ? "The run was ended by " + run.SignalName()
                   : ending == Ending::kNoDevice
                           ? "The run did not start"
                           : "The run ended with status " + std::to_string(*run.status);
    problem.timeUs = run.durationUs;
    if (ending == Ending::kSignal) {
        problem.cause = CauseOfSignal(report);
        problem.timeUs = LastSignOfTool(report);
    }
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
    std::stable_sort(problems.begin(), problems.end(),
                     [](const Problem& a, const Problem& b) { return a.timeUs < b.timeUs; });
    std::stable_partition(problems.begin(), problems.end(),
                          [](const Problem& problem) { return problem.isRoot; });
    for (Problem& problem : problems) {
        for (const Phase& phase : report.phases) {
            if (problem.phase.empty() || phase.startUs <= problem.timeUs)
                problem.phase = phase.name;
        }
    }
    return problems;
}

}  // namespace runreport

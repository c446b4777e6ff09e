// Problems from log, phases, sources and status.

#include <explanations/explanations.h>

#include <algorithm>

#include "report.h"

namespace runreport {

namespace {

using explanations::Explanation;
using runlog::Phase;
using runlog::PhaseEnd;

constexpr size_t kMaxErrorLines = 200;  // of different messages: a page stays readable

std::string Joined(std::string_view text) {
    std::string line(text);
    std::replace(line.begin(), line.end(), '\n', ' ');
    return line;
}

Problem Explained(const std::string& text, int64_t timeUs, const Explanation* explanation) {
    Problem problem;
    problem.text = text;
    problem.timeUs = timeUs;
    if (explanation) {
        problem.cause = Joined(explanation->cause);
        problem.cure = Joined(explanation->cure);
    }
    return problem;
}

void AddFinding(const char* severity, const char* text, int64_t timeUs, const std::string& phase,
                std::vector<Problem>* problems) {
    problems->push_back(Explained(text, timeUs, explanations::Explain(text)));
    problems->back().severity = severity;
    problems->back().phase = phase;
}

void AddErrorLines(const std::vector<runlog::Line>& log, std::vector<Problem>* problems) {
    for (const runlog::Error& error : runlog::DifferentErrors(log)) {
        if (problems->size() == kMaxErrorLines) return;
        const std::string& message = error.line.message;
        problems->push_back(Explained(message, error.line.timeUs, explanations::Explain(message)));
        problems->back().count = error.count;
        problems->back().logged = true;
    }
}

void AddPhases(const std::vector<Phase>& phases, std::vector<Problem>* problems) {
    for (const Phase& phase : phases) {
        const bool timedOut = phase.end == PhaseEnd::kTimedOut;
        const auto add = [&](const char* severity, const char* text) {
            AddFinding(severity, text, phase.endUs, phase.name, problems);
        };
        if (timedOut && phase.name == "shutter") {
            add("warning", "No shutter message came in time");
        } else if (timedOut) {
            add("error", "No complete result came in time");
        } else if (phase.end == PhaseEnd::kFailed && phase.name == "open") {
            add("error", "The service gave no session");
        }
    }
}

void AddUnreadSources(const Report& report, std::vector<Problem>* problems) {
    const bool unread = std::any_of(report.sources.begin(), report.sources.end(),
                                    [](const Frame& source) { return source.leftUnread; });
    int64_t timeUs = 0;
    for (const Phase& phase : report.phases) {
        if (phase.name == "fill") timeUs = phase.startUs;
    }
    if (unread) AddFinding("warning", "The input frames were left empty", timeUs, "", problems);
}

void AddEnding(const Run& run, std::vector<Problem>* problems) {
    const Ending ending = run.GetEnding();
    if (ending == Ending::kFinished) return;
    const std::string text = ending == Ending::kUsageError ? "The tool refused its arguments"
                             : ending == Ending::kSignal
                                     ? "The run was ended by " + run.SignalName()
                             : ending == Ending::kNoDevice
                                     ? "The run did not start"
                                     : "The run ended with status " + std::to_string(run.status);
    problems->push_back(Explained(text, run.durationUs, explanations::ExplainStatus(run.status)));
}

}  // namespace

std::vector<Problem> FindProblems(const Report& report) {
    std::vector<Problem> problems;
    AddErrorLines(report.log, &problems);
    AddPhases(report.phases, &problems);
    AddUnreadSources(report, &problems);
    AddEnding(report.run, &problems);
    std::stable_sort(problems.begin(), problems.end(),
                     [](const Problem& a, const Problem& b) { return a.timeUs < b.timeUs; });
    for (Problem& problem : problems) {
        if (!problem.phase.empty()) continue;
        for (const Phase& phase : report.phases) {
            if (problem.phase.empty() || phase.startUs <= problem.timeUs)
                problem.phase = phase.name;
        }
    }
    return problems;
}

}  // namespace runreport

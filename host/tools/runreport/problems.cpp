// Problems from log, phases, sources and status.

#include "problems.h"

#include <explanations/explanations.h>

#include <algorithm>
#include <fstream>
#include <map>

#include "timeline.h"

namespace runreport {

namespace {

using explanations::Explanation;

// Entries of the page may begin in the middle of a sentence.
std::string sentence(std::string text) {
    if (!text.empty() && text[0] >= 'a' && text[0] <= 'z') text[0] += 'A' - 'a';
    return text;
}

class Explainer {
  public:
    Explainer(const std::vector<std::string>& paths, std::vector<std::string>* missing) {
        for (const std::string& path : paths) {
            std::ifstream page(path);
            const std::vector<Explanation> lines = explanations::ReadExplanations(page);
            if (lines.empty()) missing->push_back(path + ": no explanations of error lines in it");
            mLines.insert(mLines.end(), lines.begin(), lines.end());
            page.clear();
            page.seekg(0);
            const std::vector<Explanation> statuses = explanations::ReadExitStatuses(page);
            mStatuses.insert(mStatuses.end(), statuses.begin(), statuses.end());
        }
    }

    void explainLine(Problem* problem) const {
        take(explanations::Explain(mLines, problem->text), problem);
    }
    void explainStatus(int status, Problem* problem) const {
        take(explanations::ExplainStatus(mStatuses, status), problem);
    }

  private:
    static void take(const Explanation* explanation, Problem* problem) {
        if (explanation == nullptr) return;
        problem->cause = sentence(explanation->cause);
        problem->cure = sentence(explanation->cure);
    }

    std::vector<Explanation> mLines;
    std::vector<Explanation> mStatuses;
};

void addErrorLines(const Explainer& explainer, Report* report) {
    std::map<std::string, size_t> known;  // index of the problem of a message
    for (const LogLine& line : report->log) {
        if (!line.isError()) continue;
        const auto [found, added] = known.emplace(line.message, report->problems.size());
        if (!added) {
            ++report->problems[found->second].count;
            continue;
        }
        if (report->problems.size() == kMaxProblems) {
            known.erase(found);
            continue;
        }
        Problem problem;
        problem.text = line.message;
        problem.timeUs = line.timeUs;
        problem.logged = true;
        explainer.explainLine(&problem);
        report->problems.push_back(std::move(problem));
    }
}

Problem timeOut(const Phase& phase) {
    Problem problem;
    problem.timeUs = phase.endUs;
    problem.phase = phase.name;
    if (phase.name == "shutter") {
        problem.severity = Severity::kWarning;
        problem.text = "No shutter message came in time";
        problem.cause = "The service sent no shutter message with the frame number of the request.";
        problem.cure =
                "Let the service call `notify` with a shutter of that frame when exposure starts; "
                "the tool goes on and waits for the result all the same.";
    } else {
        problem.text = "No complete result came in time";
        problem.cause =
                "The service sent no result for the frame, or one whose stream and buffer numbers "
                "are not those of the request's output buffers.";
        problem.cure =
                "Compare the lines `ContainsTheSameBuffers` of the log: each result buffer has to "
                "name stream and buffer of the request, and all of them have to come.";
    }
    return problem;
}

void addPhases(Report* report) {
    for (const Phase& phase : report->phases) {
        if (phase.end == PhaseEnd::kTimedOut) report->problems.push_back(timeOut(phase));
        if (phase.name == "open" && phase.end == PhaseEnd::kFailed) {
            Problem problem;
            problem.text = "The service gave no session";
            problem.cause =
                    "It refused `openOfflineSession` or died in it. The tool logs a session that "
                    "it "
                    "got and nothing without one.";
            problem.cure = "Read what the service logged at this moment, in the log below.";
            problem.timeUs = phase.endUs;
            problem.phase = phase.name;
            report->problems.push_back(std::move(problem));
        }
    }
}

void addUnreadSources(Report* report) {
    const bool unread = std::any_of(report->sources.begin(), report->sources.end(),
                                    [](const Frame& source) { return source.leftUnread; });
    if (!unread) return;
    Problem problem;
    problem.severity = Severity::kWarning;
    problem.text = "The input frames were left empty";
    problem.cause =
            "Nothing answered the tool's query for the plane layout of its buffers, so it opened "
            "its source files and read no row of them.";
    problem.cure = "Run with `--planes`, which provides the answer.";
    for (const Phase& phase : report->phases) {
        if (phase.name == "fill") problem.timeUs = phase.startUs;
    }
    report->problems.push_back(std::move(problem));
}

void addEnding(const Explainer& explainer, Report* report) {
    const Run& run = report->run;
    Problem problem;
    problem.timeUs = run.durationUs;
    explainer.explainStatus(run.status, &problem);
    switch (run.ending()) {
        case Ending::kFinished:
            return;
        case Ending::kUsageError:
            problem.text = "The tool refused its arguments";
            break;
        case Ending::kSignal:
            problem.text = "The run was ended by " + run.signalName();
            break;
        case Ending::kNoDevice:
            problem.text = "The run did not start";
            break;
        case Ending::kOther:
            problem.text = "The run ended with status " + std::to_string(run.status);
            break;
    }
    report->problems.push_back(std::move(problem));
}

}  // namespace

void findProblems(const std::vector<std::string>& explanations, Report* report) {
    const Explainer explainer(explanations, &report->missing);
    addErrorLines(explainer, report);
    addPhases(report);
    addUnreadSources(report);
    addEnding(explainer, report);
    std::stable_sort(report->problems.begin(), report->problems.end(),
                     [](const Problem& a, const Problem& b) { return a.timeUs < b.timeUs; });
    for (Problem& problem : report->problems) {
        const Phase* const phase = phaseAt(report->phases, problem.timeUs);
        if (phase != nullptr && problem.phase.empty()) problem.phase = phase->name;
    }
}

}  // namespace runreport

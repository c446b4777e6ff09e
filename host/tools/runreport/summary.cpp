// Sentences from the facts of the log.

#include <ctype.h>
#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <terminal/terminal.h>
#include <unistd.h>

#include <algorithm>

#include "report.h"

namespace runreport {

namespace {

void Say(const std::string& text) {
    fprintf(stderr, "%srun: %s\n", terminal::BlankedLine().c_str(), text.c_str());
}

// What happened, and why where that is known of this run.
std::string Sentence(const Problem& problem) {
    std::string text = problem.text + (problem.concluded ? ": " + problem.cause : "");
    if (!problem.logged) text[0] = static_cast<char>(tolower(text[0]));
    text.erase(std::remove(text.begin(), text.end(), '`'), text.end());
    return text;
}

// "the shutter", "the result", or nothing while the tool does not wait.
std::string CurrentWait(const Inputs& inputs) {
    struct stat info = {};
    const bool ofThisRun = stat(inputs.log.c_str(), &info) == 0 &&
                           info.st_mtime >= inputs.run.startedUs / 1'000'000;
    if (!ofThisRun) return "";
    const base::Result<runlog::Log> log = runlog::ReadLog(inputs.log);
    if (!log.Ok()) return "";
    const runlog::Facts facts = runlog::FindFacts(log.Value().lines);
    if (facts.waits.empty() || facts.waits.back().endUs) return "";
    return facts.waits.back().forShutter ? "the shutter" : "the result";
}

}  // namespace

bool PrintSummary(const Report& report) {
    const Run& run = report.run;
    if (report.log.empty() && run.place == Place::kDevice) Say("no line of the tool in its log");
    if (report.log.empty()) return true;  // what stopped the tool has been said
    const auto isError = [](const Problem& problem) { return problem.severity == "error"; };
    const auto first = std::find_if(report.problems.begin(), report.problems.end(), isError);
    const auto errors = std::count_if(report.problems.begin(), report.problems.end(), isError);
    const bool nothingWritten =
            report.facts.sessionOpened && report.dumps.empty() && run.place != Place::kImported;
    if (run.Signal() != 0) {
        const char* const name = sigabbrev_np(run.Signal());
        Say(terminal::Red("the tool was ended by signal " + std::to_string(run.Signal()) + " (" +
                          (name ? name : "?") + ")"));
    } else if (nothingWritten) {
        Say(terminal::Red("no file was written"));
    }
    if (first != report.problems.end()) {
        const std::string order =
                errors > 1 ? "first of " + std::to_string(errors) + " errors: " : "";
        Say(terminal::Red(order + Sentence(*first)));
    }
    for (const Problem& problem : report.problems) {
        if (!isError(problem)) Say(terminal::Yellow(Sentence(problem)));
    }
    const auto& waits = report.facts.waits;
    return run.Signal() == 0 && !nothingWritten && errors == 0 &&
           std::none_of(waits.begin(), waits.end(),
                        [](const runlog::Wait& wait) { return wait.TimedOut(); });
}

void FollowWaits(const Inputs& inputs) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    terminal::Progress progress;
    std::string last;
    for (int seconds = 1;; ++seconds) {
        sleep(1);
        const std::string wait = CurrentWait(inputs);
        if (wait != last) seconds = 1;
        last = wait;
        if (!wait.empty()) {
            progress.Show("run: the tool waits for " + wait + ", " + std::to_string(seconds) +
                          " s");
        }
    }
}

}  // namespace runreport

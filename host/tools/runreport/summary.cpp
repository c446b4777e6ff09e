// Sentences from the facts of the log.

#include <signal.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/stat.h>
#include <terminal/terminal.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>

#include "report.h"

namespace runreport {

namespace {

void Say(const std::string& text) {
    fprintf(stderr, "%srun: %s\n", terminal::BlankedLine().c_str(), text.c_str());
}

// The path as a user would write it here.
std::string Here(const std::string& path) {
    std::error_code none;
    const std::string folder = std::filesystem::current_path(none).string() + "/";
    return path.compare(0, folder.size(), folder) == 0 ? path.substr(folder.size()) : path;
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

void PrintSummary(const Inputs& inputs) {
    const base::Result<runlog::Log> log = runlog::ReadLog(inputs.log);
    if (!log.Ok() || log.Value().lines.empty()) return;  // what stopped the tool has been said
    const runlog::Facts facts = runlog::FindFacts(log.Value().lines);
    const Run& run = inputs.run;
    if (run.Signal() != 0) {
        const char* const name = sigabbrev_np(run.Signal());
        Say(terminal::Red("the tool was ended by signal " + std::to_string(run.Signal()) + " (" +
                          (name ? name : "?") + ")"));
    } else if (facts.sessionOpened && inputs.dumps.empty()) {
        Say(terminal::Red("no file was written"));
    }
    if (facts.errorCount > 0) {
        Say(terminal::Red("the last one of " + std::to_string(facts.errorCount) + " errors in " +
                          Here(inputs.log) + ": " + facts.lastError));
    }
    const bool planes =
            std::find(run.options.begin(), run.options.end(), "--planes") != run.options.end();
    if (!facts.sources.empty() && !planes) {
        Say(terminal::Yellow(
                "the input frames were left empty: nothing answers the tool's plane-layout query, "
                "so it read no row of its source files (--planes provides the answer)"));
    }
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

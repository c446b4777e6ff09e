// The program: the report of a run, and what ./run says about its log.

#include <base/options.h>
#include <errno.h>
#include <stdio.h>
#include <string.h>

#include <cmath>
#include <fstream>

#include "report.h"

namespace {

using base::Done;
using base::Failure;
using base::Result;

struct Options {
    runreport::Inputs inputs;
    std::string htmlFile;
    std::string jsonFile;
    bool summary = false;
    bool followWaits = false;
    bool sources = false;
    std::string import;
    bool help = false;
};

// Seconds since the epoch, with a fraction after either sign that locales have for it.
base::Option Seconds(const char* name, const char* help, int64_t* micros) {
    return {name, "SECONDS", help, [micros](const std::string& word) -> Result<Done> {
                std::string text = word;
                for (char& letter : text) letter = letter == ',' ? '.' : letter;
                char* end = nullptr;
                const double seconds = strtod(text.c_str(), &end);
                if (*end != '\0' || !(seconds >= 0 && seconds < 1e11)) {
                    return Failure{"a number of seconds"};
                }
                *micros = std::llround(seconds * 1e6);
                return Done{};
            }};
}

// Leaves the help in `help`.
Result<Options> ReadOptions(const std::vector<std::string>& words, std::string* help) {
    Options options;
    runreport::Inputs& inputs = options.inputs;
    int64_t ended = 0;
    std::optional<uint64_t> status, pid;
    const std::vector<base::Option> table = {
            base::Text("--html", "FILE", "the page: one file that needs no other and no network",
                       &options.htmlFile),
            base::Text("--json", "FILE", "the same facts for programs", &options.jsonFile),
            base::Switch("--summary", "what ./run says about the log, on standard error",
                         &options.summary),
            base::Switch("--follow-waits", "at a terminal show the tool's waits until killed",
                         &options.followWaits),
            Seconds("--started", "when the run started, since the epoch, with fraction",
                    &inputs.run.startedUs),
            Seconds("--ended", "when it ended", &ended),
            base::Number("--status", "N", "its status", 0, 255, &status),
            base::Texts("--option", "WORD", "an option that the device was given; may be repeated",
                        &inputs.run.options),
            base::Text("--log", "FILE", "the tool's platform log", &inputs.log),
            base::Text("--device-log", "FILE", "the services' log", &inputs.deviceLog),
            base::Text("--trace", "FILE", "the binder trace", &inputs.trace),
            base::Text("--data", "DIR", "what the tool saw as /data/vendor/camera",
                       &inputs.dataFolder),
            base::Texts("--dump", "FILE", "a file that the run wrote; may be repeated",
                        &inputs.dumps),
            base::Text("--device", "NAME",
                       "it was on this device; its log may have other lines, too",
                       &inputs.run.device),
            base::Text("--import", "DIR", "all that is known is a folder with a device's log",
                       &options.import),
            base::Number("--pid", "N", "a device's run is this process's, not the last in the log",
                         1, INT32_MAX, &pid),
            base::Switch("--sources",
                         "the tool's source files on standard output: path, bytes per "
                         "row and rows of its buffer",
                         &options.sources),
            base::Switch("--help", "show this help", &options.help)};
    *help = "usage: runreport [OPTIONS] -- COMMAND [ARGUMENTS]\n"
            "Writes what is known about a run as a page and for programs.\n\n" +
            base::OptionHelp(table) +
            "\nStatus 0 when the report was written, 1 when not, 2 for a usage error; of "
            "--summary\nalone 1 where the run went wrong. Inputs that cannot be read are named in "
            "the report.\n";
    const auto command = base::ReadOptions(table, words, base::Order::kBeforeWords);
    if (!command.Ok()) return command.GetFailure();
    inputs.run.command = command.Value();
    inputs.run.durationUs = std::max<int64_t>(ended - inputs.run.startedUs, 0);
    inputs.run.status = static_cast<int>(status.value_or(0));
    if (pid) inputs.pid = static_cast<int>(*pid);
    if (!inputs.run.device.empty()) inputs.run.place = runreport::Place::kDevice;
    if (options.htmlFile.empty() && options.jsonFile.empty() && !options.summary &&
        !options.followWaits && !options.sources && !options.help) {
        return Failure{"none of --html, --json, --summary, --sources and --follow-waits is given"};
    }
    return options;
}

// A sentence on standard error when it fails. An empty path is an output that was not asked for.
bool Write(const std::string& path, const std::string& text) {
    if (path.empty()) return true;
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) fprintf(stderr, "runreport: %s: cannot write: %s\n", path.c_str(), strerror(errno));
    return static_cast<bool>(file);
}

int PrintSources(const runreport::Inputs& inputs) {
    const auto report = runreport::MakeReport(inputs, runreport::Pictures::kNone);
    for (const runlog::Source& source : report.facts.sources) {
        printf("%s\t%u\t%u\n", source.path.c_str(), source.stride, source.scanlines);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    std::string help;
    const auto read = ReadOptions(base::WordsOf(argc, argv), &help);
    if (!read.Ok()) {
        fprintf(stderr, "runreport: %s; try 'runreport --help'\n", read.Error().c_str());
        return 2;
    }
    Options options = read.Value();
    if (!options.import.empty()) {
        auto imported = runreport::ImportFolder(options.import, options.inputs);
        if (!imported.Ok()) {
            fprintf(stderr, "run: --import %s\n", imported.Error().c_str());
            return 2;
        }
        options.inputs = std::move(imported).Value();
    }
    if (options.help) return fputs(help.c_str(), stdout) < 0;
    if (options.followWaits) runreport::FollowWaits(options.inputs);
    if (options.sources) return PrintSources(options.inputs);
    bool written = true;
    if (!options.htmlFile.empty() || !options.jsonFile.empty()) {
        const runreport::Report report =
                runreport::MakeReport(options.inputs, runreport::Pictures::kReduced);
        const bool jsonWritten = Write(options.jsonFile, runreport::ReportJson(report));
        written = Write(options.htmlFile, runreport::ReportPage(report)) && jsonWritten;
    }
    const bool succeeded = !options.summary || runreport::PrintSummary(options.inputs);
    const bool alone = options.htmlFile.empty() && options.jsonFile.empty();
    return written && (succeeded || !alone) ? 0 : 1;
}

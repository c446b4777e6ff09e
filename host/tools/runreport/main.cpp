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
    std::string html, json;  // files
    int64_t endedUs = 0;     // since the epoch
    std::optional<uint64_t> status, pid;
    bool summary = false;
    bool followWaits = false;
    bool sources = false;
    std::string import;  // folder
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

std::vector<base::Option> TableOf(Options* options) {
    runreport::Inputs& inputs = options->inputs;
    return {base::Text("--html", "FILE", "the page: one file that needs no other and no network",
                       &options->html),
            base::Text("--json", "FILE", "the same facts for programs", &options->json),
            base::Switch("--summary", "what ./run says about the log, on standard error",
                         &options->summary),
            base::Switch("--follow-waits", "at a terminal show the tool's waits until killed",
                         &options->followWaits),
            Seconds("--started", "when the run started, since the epoch, with fraction",
                    &inputs.run.startedUs),
            Seconds("--ended", "when it ended", &options->endedUs),
            base::Number("--status", "N", "its status", 0, 255, &options->status),
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
                       &options->import),
            base::Number("--pid", "N", "a device's run is this process's, not the last in the log",
                         1, INT32_MAX, &options->pid),
            base::Switch("--sources",
                         "the tool's source files on standard output: path, bytes per "
                         "row and rows of its buffer",
                         &options->sources),
            base::Switch("--help", "show this help", &options->help)};
}

std::string HelpOf(const std::vector<base::Option>& table) {
    return "usage: runreport [OPTIONS] -- COMMAND [ARGUMENTS]\n"
           "Writes what is known about a run as a page and for programs.\n\n" +
           base::OptionHelp(table) +
           "\nStatus 0 when the report was written, 1 when not, 2 for a usage error; of --summary\n"
           "alone 1 where the run went wrong. Inputs that cannot be read are named in the "
           "report.\n";
}

// A sentence on standard error when it fails.
bool Write(const std::string& path, const std::string& text) {
    std::ofstream file(path, std::ios::binary);
    file << text;
    file.close();
    if (!file) fprintf(stderr, "runreport: %s: cannot write: %s\n", path.c_str(), strerror(errno));
    return static_cast<bool>(file);
}

int PrintSources(const runreport::Report& report) {
    for (const runlog::Source& source : report.facts.sources) {
        printf("%s\t%u\t%u\n", source.path.c_str(), source.stride, source.scanlines);
    }
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    Options options;
    const std::vector<base::Option> table = TableOf(&options);
    auto command = base::ReadOptions(table, base::WordsOf(argc, argv), base::Order::kBeforeWords);
    const bool writes = !options.html.empty() || !options.json.empty();
    if (command.Ok() && !writes && !options.summary && !options.followWaits && !options.sources &&
        !options.help) {
        command =
                Failure{"none of --html, --json, --summary, --sources and --follow-waits is given"};
    }
    if (!command.Ok()) {
        fprintf(stderr, "runreport: %s; try 'runreport --help'\n", command.Error().c_str());
        return 2;
    }
    if (options.help) return fputs(HelpOf(table).c_str(), stdout) < 0;
    runreport::Inputs& inputs = options.inputs;
    inputs.run.command = command.Value();
    inputs.run.durationUs = std::max<int64_t>(options.endedUs - inputs.run.startedUs, 0);
    inputs.run.status = static_cast<int>(options.status.value_or(0));
    if (options.pid) inputs.pid = static_cast<int>(*options.pid);
    if (!inputs.run.device.empty()) inputs.run.place = runreport::Place::kDevice;
    if (!options.import.empty()) {
        auto imported = runreport::ImportFolder(options.import, inputs);
        if (!imported.Ok()) {
            fprintf(stderr, "run: --import %s\n", imported.Error().c_str());
            return 2;
        }
        inputs = std::move(imported).Value();
    }
    if (options.followWaits) runreport::FollowWaits(inputs);
    const runreport::Report report = runreport::MakeReport(
            inputs, writes ? runreport::Pictures::kReduced : runreport::Pictures::kNone);
    if (options.sources) return PrintSources(report);
    bool done = options.json.empty() || Write(options.json, runreport::ReportJson(report));
    done &= options.html.empty() || Write(options.html, runreport::ReportPage(report));
    const bool succeeded = !options.summary || runreport::PrintSummary(report);
    return done && (succeeded || writes) ? 0 : 1;
}

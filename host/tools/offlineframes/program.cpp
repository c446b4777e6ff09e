// Chooses the command, prints what it reports.

#include <stdio.h>
#include <terminal/terminal.h>

#include <algorithm>

#include "commands.h"

namespace offlineframes {
namespace {

struct Command {
    const CommandSpec& (*spec)();
    Result<Report> (*run)(const CommandLine& line);
};

constexpr Command kCommands[] = {
        {packSpec, runPack},
        {sourcesSpec, runSources},
        {viewSpec, runView},
        {compareSpec, runCompare},
};

std::string programHelp() {
    std::string text =
            "usage: offlineframes COMMAND ...\n\n"
            "Makes the frames that the offline camera tests read, and shows those they dump.\n\n";
    for (const Command& command : kCommands) {
        const CommandSpec& spec = command.spec();
        const std::string name = spec.name;
        text += "  " + name + std::string(10 - name.size(), ' ') + spec.summary + "\n";
    }
    return text + "\n\"offlineframes COMMAND --help\" tells a command's options.\n";
}

const Command* findCommand(const std::string& name) {
    for (const Command& command : kCommands) {
        if (name == command.spec().name) return &command;
    }
    return nullptr;
}

int fail(const std::string& text, int status) {
    fprintf(stderr, "offlineframes: %s\n", terminal::red(text).c_str());
    return status;
}

int misuse(const std::string& text, const std::string& helpOf) {
    return fail(text + "\n\"offlineframes " + helpOf + "--help\" tells what there is", 2);
}

// Standard output may be a full disk: what could not be printed is a failure.
int print(const std::string& text) {
    if (fputs(text.c_str(), stdout) < 0 || fflush(stdout) != 0) {
        return fail("cannot write to standard output", 1);
    }
    return 0;
}

// Frames are large: most commands take about a second.
Result<Report> runCommand(const Command& command, const CommandLine& line) {
    terminal::Progress progress;
    progress.show(std::string("offlineframes: ") + command.spec().name + " ...");
    return command.run(line);
}

bool asksForHelp(const std::string& word) {
    return word == "--help" || word == "-h";
}

}  // namespace

int runProgram(const std::vector<std::string>& words) {
    if (words.empty()) return misuse("no command given", "");
    if (asksForHelp(words[0])) return print(programHelp());
    const Command* const command = findCommand(words[0]);
    if (!command) return misuse("unknown command \"" + words[0] + "\"", "");
    const CommandSpec& spec = command->spec();
    const std::vector<std::string> rest(words.begin() + 1, words.end());
    const auto optionsEnd = std::find(rest.begin(), rest.end(), "--");
    if (std::any_of(rest.begin(), optionsEnd, asksForHelp)) return print(helpText(spec));
    const Result<CommandLine> line = readCommandLine(spec, rest);
    const std::string name = std::string(spec.name) + " ";
    const std::string prefix = std::string(spec.name) + ": ";
    if (!line.ok()) return misuse(prefix + line.error(), name);
    const Result<Report> report = runCommand(*command, line.value());
    if (!report.ok()) {
        return report.failure().misuse ? misuse(prefix + report.error(), name)
                                       : fail(report.error(), 1);
    }
    fputs(report.value().notes.c_str(), stderr);
    return print(report.value().output);
}

}  // namespace offlineframes

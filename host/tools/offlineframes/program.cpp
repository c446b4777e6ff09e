// Chooses the command, reads its words, prints what it reports.

#include <stdio.h>
#include <terminal/terminal.h>

#include <algorithm>

#include "commands.h"

namespace offlineframes {
namespace {

std::string ProgramHelp(const std::vector<Command>& commands) {
    std::string text =
            "usage: offlineframes COMMAND ...\n\n"
            "Makes the frames that the offline camera tests read, and shows those they dump.\n\n";
    for (const Command& command : commands) {
        const std::string name = command.name;
        text += "  " + name + std::string(10 - name.size(), ' ') + command.summary + "\n";
    }
    return text + "\n\"offlineframes COMMAND --help\" tells a command's options.\n";
}

std::string HelpOf(const Command& command) {
    std::string text = std::string("usage: offlineframes ") + command.name + " [OPTION...]";
    for (const char* word : command.words) text += std::string(" ") + word;
    return text + "\n\n" + command.purpose + "\n\n" + base::OptionHelp(command.options);
}

int Fail(const std::string& text, int status) {
    fprintf(stderr, "offlineframes: %s\n", terminal::red(text).c_str());
    return status;
}

int Misuse(const std::string& text, const std::string& helpOf) {
    return Fail(text + "\n\"offlineframes " + helpOf + "--help\" tells what there is", 2);
}

// Standard output may be a full disk: what could not be printed is a failure.
int Print(const std::string& text) {
    if (fputs(text.c_str(), stdout) >= 0 && fflush(stdout) == 0) return 0;
    return Fail("cannot write to standard output", 1);
}

bool AsksForHelp(const std::string& word) {
    return word == "--help" || word == "-h";
}

Result<Report> RunCommand(const Command& command, const std::vector<std::string>& line) {
    const auto words = base::ReadOptions(command.options, line, base::Order::kAnywhere);
    if (!words.Ok()) return words.GetFailure();
    const size_t given = words.Value().size();
    const size_t needed = command.words.size();
    if (given < needed) return Failure{std::string("missing ") + command.words[given], true};
    if (given > needed) return Failure{"unexpected word \"" + words.Value()[needed] + "\"", true};
    // Frames are large: most commands take about a second.
    terminal::Progress progress;
    progress.show(std::string("offlineframes: ") + command.name + " ...");
    return command.run(words.Value());
}

}  // namespace

int runProgram(const std::vector<std::string>& words) {
    const std::vector<Command> commands = AllCommands();
    if (words.empty()) return Misuse("no command given", "");
    if (AsksForHelp(words[0])) return Print(ProgramHelp(commands));
    const auto command = std::find_if(commands.begin(), commands.end(),
                                      [&](const Command& c) { return words[0] == c.name; });
    if (command == commands.end()) return Misuse("unknown command \"" + words[0] + "\"", "");
    const std::vector<std::string> line(words.begin() + 1, words.end());
    const auto optionsEnd = std::find(line.begin(), line.end(), "--");
    if (std::any_of(line.begin(), optionsEnd, AsksForHelp)) return Print(HelpOf(*command));
    const Result<Report> report = RunCommand(*command, line);
    if (report.Ok()) {
        fputs(report.Value().notes.c_str(), stderr);
        return Print(report.Value().output);
    }
    if (!report.GetFailure().misuse) return Fail(report.Error(), 1);
    return Misuse(words[0] + ": " + report.Error(), words[0] + " ");
}

}  // namespace offlineframes

// The program's commands. Each is a table (words, options, help) and a function that does it.
#pragma once

#include <base/options.h>

#include <functional>
#include <string>
#include <vector>

#include "result.h"

namespace offlineframes {

// What a command prints when it is done: `output` on standard output, `notes` on standard error.
struct Report {
    std::string output;
    std::string notes;
};

struct Command {
    const char* name;
    const char* summary;             // a phrase for the list of commands
    const char* purpose;             // sentences for its own help
    std::vector<const char*> words;  // plain words the command needs, all of them
    std::vector<base::Option> options;
    std::function<Result<Report>(const std::vector<std::string>& words)> run;
};

// pack, sources, view and compare. Their options are read once: a command runs at most once.
std::vector<Command> AllCommands();

// The whole program after main(): `words` without the program's name. Prints and gives the exit
// status: 0 done, 1 failed, 2 wrong command line.
int runProgram(const std::vector<std::string>& words);

}  // namespace offlineframes

// The program's commands. Each is a spec (arguments, options, help) and a function that does it.
#pragma once

#include <string>
#include <vector>

#include "option_table.h"
#include "result.h"

namespace offlineframes {

// What a command prints when it is done: `output` on standard output, `notes` on standard error.
struct Report {
    std::string output;
    std::string notes;
};

const CommandSpec& packSpec();
Result<Report> runPack(const CommandLine& line);

const CommandSpec& sourcesSpec();
Result<Report> runSources(const CommandLine& line);

const CommandSpec& viewSpec();
Result<Report> runView(const CommandLine& line);

const CommandSpec& compareSpec();
Result<Report> runCompare(const CommandLine& line);

// The whole program after main(): `words` without the program's name. Prints and gives the exit
// status: 0 done, 1 failed, 2 wrong command line.
int runProgram(const std::vector<std::string>& words);

}  // namespace offlineframes

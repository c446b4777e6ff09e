// The command line of deviceshell.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace deviceshell {

struct Options {
    std::string dataFolder;      // bound at /data/vendor/camera; empty: a private, empty folder
    std::string serviceProgram;  // runs instead of the reference service; empty: the reference one
    std::string logFile;         // platform log of the command; empty: dropped
    std::string deviceLogFile;   // platform log and output of the services; empty: dropped
    std::string traceFile;       // binder trace of the command; empty: none
    std::string runRecordFile;   // the last run of the tool in a shell; empty: not recorded
    std::vector<std::string> faults;  // NAME or NAME=ARG each
    bool withoutService = false;
    bool withoutAllocator = false;
    bool planes = false;
    bool verbose = false;
    bool dieWithParent = false;
    bool help = false;
    std::vector<std::string> command;  // program and arguments; empty: a shell
};

// Reads the arguments that follow the program's name. Options end at the first other word or at
// "--". Nothing, with a sentence in `error`, when an option is unknown, misses its value or
// excludes another one. Touches no file.
std::optional<Options> parseOptions(const std::vector<std::string>& arguments, std::string* error);

// Checks that the folder and the program the options name are there, and makes their paths
// absolute. False with a sentence in `error` that names what is missing.
bool resolvePaths(Options* options, std::string* error);

// True when the faults should be listed instead of running anything.
bool asksForFaultList(const Options& options);

extern const char* const kHelp;

}  // namespace deviceshell

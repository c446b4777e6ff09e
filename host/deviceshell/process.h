// Starting a program and telling how it ended.
#pragma once

#include <sys/types.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace deviceshell {

struct ProgramStart {
    std::vector<std::string> argv;  // argv[0] is looked for in PATH unless it has a '/'
    std::vector<std::pair<std::string, std::string>> setEnvironment;
    std::vector<std::string> unsetEnvironment;
    std::vector<int> keepOpen;  // close-on-exec descriptors that the program gets
    int input = -1;             // become descriptors 0, 1 and 2; -1: inherited
    int output = -1;
    int error = -1;
    int startSignal = -1;       // the program waits for a byte from here; -1: it does not wait
    unsigned limitSeconds = 0;  // SIGALRM ends the program after this time; 0: no limit
    bool ownTerminal = false;   // own process group, which gets the terminal of descriptor 0
    bool ownGroup = false;      // own process group: the terminal's signals do not reach it
};

// Forks and executes; the program has no signal blocked. Only for a process with one thread.
// -1 with errno when there is no further process. A program that cannot be executed says so on
// its standard error and ends with 127 (not found) or 126.
pid_t startProgram(const ProgramStart& start);

// The words a shell would use as status: the exit status, or 128 + n for signal n.
int shellStatus(int waitStatus);

// "ended with status 3" or "was ended by signal 11 (Segmentation fault)".
std::string describeEnd(int waitStatus);

// Runs a program to its end and returns its standard output and exit status; its standard error
// is read, too, or the caller's. Nothing when it cannot be started, was ended by a signal or took
// over 10 s.
struct ProgramOutput {
    int status = 0;
    std::string text;
};
enum class ReadErrors { Not, Too };
std::optional<ProgramOutput> readProgram(const std::vector<std::string>& argv,
                                         ReadErrors errors = ReadErrors::Not);

// Writes one line "deviceshell: ..." to standard error.
void complain(const std::string& sentence);

}  // namespace deviceshell

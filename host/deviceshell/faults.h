// The faults that the reference service and the allocator can be told to show.
#pragma once

#include <optional>
#include <string>
#include <vector>

namespace deviceshell {

// One program's list, as it prints it for "--fault help": a line for each fault that begins with
// the fault's name. `text` is the list as printed.
struct FaultList {
    std::string text;
    std::vector<std::string> names;
};

// Asks the program. Nothing when it cannot be asked.
std::optional<FaultList> askForFaults(const std::string& program);

// The names in a printed list: the first word of every line that begins with a small letter,
// leading blanks skipped.
std::vector<std::string> faultNames(const std::string& text);

// True when the list holds the fault "NAME" or "NAME=ARG".
bool knowsFault(const FaultList& list, const std::string& fault);

// Starts a program with the faults it is to show, only to read them. Empty when it takes them
// together and with their arguments, else its sentence, which begins with its name.
std::string refusalOfFaults(std::vector<std::string> argv);

}  // namespace deviceshell

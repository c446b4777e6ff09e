// What runs on the device: decided outside, carried out inside.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "options.h"

namespace deviceshell {

// A program of the device that runs beside the command.
struct DeviceProgram {
    std::vector<std::string> argv;  // argv[0] an absolute path
    std::string serviceName;        // what it registers; empty: it is the service manager
};

// Numbers of descriptors that the inside inherits.
struct DeviceDescriptors {
    int status = -1;     // write end; the command's shell status goes here as one int
    int control = -1;    // socket; see control.h
    int log = -1;        // platform log of the command
    int deviceLog = -1;  // platform log and output of the programs
    int trace = -1;      // binder trace of the command; -1: none
    int runRecord = -1;  // see recorded_run.cpp; -1: none

    std::vector<int> all() const { return {status, control, log, deviceLog, trace, runRecord}; }
};

// Whether the command is a shell that this program chose, and for whom.
enum class ShellKind { None, Script, Terminal };

struct DevicePlan {
    DeviceDescriptors descriptors;
    bool verbose = false;
    ShellKind shell = ShellKind::None;
    std::vector<DeviceProgram> programs;  // the service manager first
    std::vector<std::string> command;
};

// Decides the programs from the options: those of this system lie in `binaryFolder`. Faults go to
// the program whose list has them. Nothing, with a sentence in `error` that names it, when a
// program is missing or no program knows a fault. Without a command, the command is a shell of
// this kind.
std::optional<DevicePlan> makePlan(const Options& options, const std::string& binaryFolder,
                                   ShellKind shell, std::string* error);

// The printed fault lists of both programs. Nothing, with a sentence in `error`, when a program is
// missing or does not answer.
std::optional<std::string> listFaults(const std::string& binaryFolder, std::string* error);

// First word of the arguments by which deviceshell starts itself inside the device.
constexpr const char* kInsideWord = "--inside";

// The plan as arguments (kInsideWord first) and back. Nothing when the words are no plan.
std::vector<std::string> encodePlan(const DevicePlan& plan);
std::optional<DevicePlan> decodePlan(const std::vector<std::string>& words);

}  // namespace deviceshell

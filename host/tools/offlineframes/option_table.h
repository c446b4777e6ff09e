// Command lines read by a table of options; the same table prints the help.
#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "frame_geometry.h"
#include "result.h"

namespace offlineframes {

struct OptionSpec {
    const char* name;   // with its dashes
    const char* value;  // what stands for its value in the help; null for a switch
    const char* help;
};

struct CommandSpec {
    const char* name;
    const char* summary;                 // a phrase for the list of commands
    const char* purpose;                 // sentences for its own help
    std::vector<const char*> arguments;  // plain words the command needs, all of them
    std::vector<OptionSpec> options;
};

struct CommandLine {
    std::map<std::string, std::string> options;  // by name; a switch has an empty value
    std::vector<std::string> arguments;          // as many as the command needs

    bool has(const std::string& option) const { return options.count(option) != 0; }

    // The option's value, nothing when it was not given, a failure naming the option when it is not
    // of the kind asked for.
    Result<std::optional<uint64_t>> number(const std::string& option, uint64_t minimum,
                                           uint64_t maximum) const;
    Result<std::optional<double>> positiveReal(const std::string& option, double maximum) const;
    Result<std::optional<PictureSize>> size(const std::string& option) const;  // WIDTHxHEIGHT
    Result<std::optional<FrameFormat>> format(const std::string& option) const;
};

// Reads the words after the command's name: options as "--name value" or "--name=value", before or
// after the arguments, "--" ends them. Fails, naming the word, for an unknown or repeated option, a
// missing or unwanted value, a missing or surplus argument.
Result<CommandLine> readCommandLine(const CommandSpec& command,
                                    const std::vector<std::string>& words);

std::string helpText(const CommandSpec& command);

}  // namespace offlineframes

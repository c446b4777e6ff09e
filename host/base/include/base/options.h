// Command lines read by a table of options, which also writes the help.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/result.h"

namespace base {

struct Option {
    const char* name;   // with its dashes
    const char* value;  // names the value in the help; null for a switch
    const char* help;   // lines, separated by '\n'
    // Stores the value, which is empty for a switch only. Fails with what the value is not: "a
    // number from 1 to 9".
    std::function<Result<Done>(const std::string&)> take;
    bool repeats = false;
};

// Options that store into what they are given, which outlives the reading.
Option Switch(const char* name, const char* help, bool* given);
Option Text(const char* name, const char* value, const char* help, std::string* text);
Option Texts(const char* name, const char* value, const char* help,
             std::vector<std::string>* texts);
Option Number(const char* name, const char* value, const char* help, uint64_t minimum,
              uint64_t maximum, std::optional<uint64_t>* number);

// Where options may come.
enum class Order {
    kAnywhere,     // between the other words, too; "--" ends them
    kBeforeWords,  // the first other word, or "--", ends them
};

// Reads options as "--name value" or "--name=value" and returns the other words. Fails with a
// misuse that names the option: unknown, repeated, without its value, or with a value of another
// kind.
Result<std::vector<std::string>> ReadOptions(const std::vector<Option>& options,
                                             const std::vector<std::string>& words, Order order);

// The words of main's arguments after the program's name.
std::vector<std::string> WordsOf(int argc, char** argv);

// The table as indented lines of a help text.
std::string OptionHelp(const std::vector<Option>& options);

}  // namespace base

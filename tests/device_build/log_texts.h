// The texts that the tool's sources can print, taken from the sources.
#pragma once

#include <string>
#include <vector>

namespace device_build {

struct LogText {
    char priority;     // 'D', 'I', 'W', 'E'; 'P' for a line on standard output
    std::string text;  // "…" in place of each printf conversion; __func__ is the function's name
    std::string place;
};

// A printf format with "…" in place of each conversion.
std::string WithoutConversions(const std::string& format);

// All of client/, driver/ and gralloc/ below `project`.
std::vector<LogText> ReadLogTexts(const std::string& project);

}  // namespace device_build

// Filling in templates of C++ text.
#include "text.h"

#include <cstdlib>
#include <iostream>
#include <sstream>

namespace aidlc {
namespace {

std::string ExpandLine(const std::string& line, const Substitutions& substitutions) {
    std::string result;
    size_t from = 0;
    while (true) {
        const size_t start = line.find('$', from);
        const size_t end = start == std::string::npos ? start : line.find('$', start + 1);
        if (end == std::string::npos) {
            return result + line.substr(from);
        }
        const std::string name = line.substr(start + 1, end - start - 1);
        const auto found = substitutions.find(name);
        if (found == substitutions.end()) {
            std::cerr << "aidlc: internal error: no text for $" << name << "$\n";
            std::abort();
        }
        result += line.substr(from, start - from) + found->second;
        from = end + 1;
    }
}

bool IsOnePlaceholder(const std::string& line) {
    const size_t first = line.find_first_not_of(' ');
    return first != std::string::npos && line[first] == '$' && line.size() > first + 1 &&
           line.find('$', first + 1) == line.size() - 1;
}

}  // namespace

std::string Expand(const std::string& pattern, const Substitutions& substitutions) {
    std::istringstream lines(pattern);
    std::string result;
    std::string line;
    while (std::getline(lines, line)) {
        const std::string expanded = ExpandLine(line, substitutions);
        const bool vanishes =
                IsOnePlaceholder(line) && expanded.find_first_not_of(' ') == std::string::npos;
        if (vanishes) {
            continue;
        }
        result += expanded;
        result += !expanded.empty() && expanded.back() == '\n' ? "" : "\n";
    }
    return result;
}

std::string Join(const std::vector<std::string>& parts, const std::string& separator) {
    std::string result;
    for (size_t i = 0; i < parts.size(); i++) {
        result += (i == 0 ? "" : separator) + parts[i];
    }
    return result;
}

std::string Quote(const std::string& text) {
    return "\"" + text + "\"";
}

std::string Escape(const std::string& text) {
    std::string result;
    for (const char c : text) {
        result += c == '"' || c == '\\' ? "\\" : "";
        result += c;
    }
    return result;
}

}  // namespace aidlc

// Finds the entry of a message or status.

#include "explanations.h"

#include <fnmatch.h>

#include <algorithm>
#include <string>

namespace explanations {

namespace {

// For fnmatch(): nothing else in a line has a meaning there.
std::string Pattern(std::string_view line) {
    constexpr std::string_view kAnyText = "…";
    std::string pattern(line);
    for (size_t at; (at = pattern.find(kAnyText)) != pattern.npos;) {
        pattern.replace(at, kAnyText.size(), "*");
    }
    return pattern;
}

}  // namespace

const std::vector<Explanation>& Table() {
    constexpr Kind kStatus = Kind::kStatus, kFinding = Kind::kFinding, kTool = Kind::kTool,
                   kStandIn = Kind::kStandIn;
    static const auto& table = *new std::vector<Explanation>{
#include "lines.def"
    };
    return table;
}

bool Matches(std::string_view line, std::string_view message) {
    return fnmatch(Pattern(line).c_str(), std::string(message).c_str(), FNM_NOESCAPE) == 0;
}

const Explanation* Explain(std::string_view message) {
    const Explanation* best = nullptr;
    ptrdiff_t bestSize = -1;
    for (const Explanation& candidate : Table()) {
        if (candidate.kind == Kind::kStatus) continue;
        for (const std::string_view line : candidate.lines) {
            const std::string pattern = Pattern(line);
            const auto literal = static_cast<ptrdiff_t>(pattern.size()) -
                                 std::count(pattern.begin(), pattern.end(), '*');
            if (literal <= bestSize || !Matches(line, message)) continue;
            best = &candidate;
            bestSize = literal;
        }
    }
    return best;
}

const Explanation* ExplainStatus(int status) {
    const std::string number = std::to_string(status);
    const Explanation* found = nullptr;
    for (const Explanation& candidate : Table()) {
        if (candidate.kind != Kind::kStatus) continue;
        if (candidate.lines[0] == number) return &candidate;
        if (candidate.lines[0] == "128 + n" && status > 128) found = &candidate;
    }
    return found;
}

}  // namespace explanations

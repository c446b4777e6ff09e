// Finds the entry of a message or status.

#include "explanations.h"

#include <string>

namespace explanations {

namespace {

constexpr std::string_view kAnyText = "…";

// Bytes of the line that are not "…".
size_t LiteralSize(std::string_view line) {
    size_t size = line.size();
    for (size_t at = line.find(kAnyText); at != line.npos; at = line.find(kAnyText, at + 1)) {
        size -= kAnyText.size();
    }
    return size;
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

// The first piece is at the message's start, the last one at its end, each other one at its first
// occurrence after the one before.
bool Matches(std::string_view line, std::string_view message) {
    size_t end = line.find(kAnyText);
    if (end == line.npos) return line == message;
    if (message.substr(0, end) != line.substr(0, end)) return false;
    message.remove_prefix(end);
    line.remove_prefix(end + kAnyText.size());
    while ((end = line.find(kAnyText)) != line.npos) {
        const size_t found = message.find(line.substr(0, end));
        if (found == message.npos) return false;
        message.remove_prefix(found + end);
        line.remove_prefix(end + kAnyText.size());
    }
    return message.size() >= line.size() && message.substr(message.size() - line.size()) == line;
}

const Explanation* Explain(std::string_view message) {
    const Explanation* best = nullptr;
    size_t bestSize = 0;
    for (const Explanation& candidate : Table()) {
        if (candidate.kind == Kind::kStatus) continue;
        for (const std::string_view line : candidate.lines) {
            if (!Matches(line, message) || (best && LiteralSize(line) <= bestSize)) continue;
            best = &candidate;
            bestSize = LiteralSize(line);
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

// Cause and cure of what a run may say or come to: the table of lines.def. Any thread.
#pragma once

#include <string_view>
#include <vector>

namespace explanations {

enum class Kind {
    kStatus,   // an exit status, or "128 + n" for those of signals
    kFinding,  // a conclusion of a run's report
    kTool,     // a line of the tool's log
    kStandIn,  // a line of the stand-in device
};

struct Explanation {
    Kind kind;
    std::vector<std::string_view> lines;  // "…" stands for any text, also for none
    std::string_view cause;               // Markdown, with line breaks
    std::string_view cure;
    std::string_view onDevice = {};  // what else to do on a real device
};

// The whole table, in the order of its file.
const std::vector<Explanation>& Table();

// The entry with a line that matches the whole message (without priority, tag or time); among
// several the one with the most literal text, then the first. Null when none does.
const Explanation* Explain(std::string_view message);

// The entry of exactly this status, else that of "128 + n" for a status above 128, else null.
const Explanation* ExplainStatus(int status);

// True when `message` is `line` with any text in place of each "…".
bool Matches(std::string_view line, std::string_view message);

}  // namespace explanations

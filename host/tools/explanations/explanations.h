// Cause and cure of every line and status of a run, as docs/device.md (the tool) and
// docs/stand_in.md (the stand-in device) explain them.
//
// The pages are Markdown. Below the headings "## Exit statuses" and "## Error lines" each entry is
//
//     ### `the line, with … for each value`
//
//     Cause: a paragraph.
//
//     Cure: a paragraph.
//
// Headings that follow each other without a text between them share the text that comes next.
// Everything else of a page is for readers only. No function here keeps state; any thread.
#pragma once

#include <iosfwd>
#include <string>
#include <string_view>
#include <vector>

namespace explanations {

struct Explanation {
    std::string line;   // the heading's text; "…" (U+2026) stands for any text, also for none
    std::string cause;  // one line of Markdown text; empty where the page gives none
    std::string cure;   // as cause
};

// The entries of "Error lines", in the page's order. A page without them gives none.
std::vector<Explanation> ReadExplanations(std::istream& page);

// The entries of "Exit statuses": a number each, or "128 + n" for the statuses of signals.
std::vector<Explanation> ReadExitStatuses(std::istream& page);

// True when `message` is `line` with any text in place of each "…".
bool MatchesLine(std::string_view line, std::string_view message);

// The entry whose line matches the whole message (without priority, tag or time); among several
// the one with the most literal text, then the first. Null when no line matches. The result
// points into `explanations`.
const Explanation* Explain(const std::vector<Explanation>& explanations,
                           std::string_view logMessage);

// The entry of exactly this status, else that of "128 + n" for a status above 128, else null.
const Explanation* ExplainStatus(const std::vector<Explanation>& statuses, int status);

}  // namespace explanations

// What a run of the tool may come to when one call below it fails.
#pragma once

#include <string>
#include <vector>

namespace end_to_end {

// The kind that fails no single call: the process may have so many descriptors, and no more.
constexpr char kDescriptorLimit[] = "descriptor-limit";

// Two ends of a run: with shutter and result, dumped; and without, after the tool's waits.
constexpr char kCompleted[] = "completed";
constexpr char kTimedOut[] = "timed out";

// The end of a run in a word or two: how far it came, if it ended by itself and in good order.
std::string endOf(int status, const std::vector<std::string>& messages);

// Why the end of a run of `mode`, with plane layouts, in which `call` ("FUNCTION SUBJECT #K")
// failed, is not the one that the tool's rules give; empty if it is.
std::string judge(const std::string& mode, const std::string& call, const std::string& end,
                  const std::vector<std::string>& messages);

}  // namespace end_to_end

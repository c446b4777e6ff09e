// What a line of the log tells about the phase it stands in.
#pragma once

#include <string>

#include "report.h"

namespace runreport {

// Sets the phase's detail and end from lines that tell something about it; others change nothing.
void describePhase(const std::string& message, Phase* phase);

// "18,874,368 bytes"
std::string bytesText(uint64_t bytes);

}  // namespace runreport

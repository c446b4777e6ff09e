// What ./run says on standard error about the tool's log.
#pragma once

#include "report.h"

namespace runreport {

// The sentences after a run: its signal, its last error, what else is not as it seems.
void PrintSummary(const Inputs& inputs);

// At a terminal shows which wait the tool is in, once a second, until this process is killed or its
// parent ends. A log that is older than the run's start does not count.
[[noreturn]] void FollowWaits(const Inputs& inputs);

}  // namespace runreport

// The steps of a run, told from what its main thread logged and called.
#pragma once

#include <vector>

#include "report.h"

namespace runreport {

// Phases in order, from the run's start to its end; the first is "device", in which the stand-in
// device comes up. Reads log (in order of time), calls and run; fills nothing in for a run whose
// tool logged nothing.
std::vector<Phase> makePhases(const Report& report);

// The phase in which the time lies; null when there is none.
const Phase* phaseAt(const std::vector<Phase>& phases, int64_t timeUs);

}  // namespace runreport

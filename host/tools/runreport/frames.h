// The frames that a run read and wrote, with geometry and a reduced picture.
#pragma once

#include "report.h"

namespace runreport {

// Fills report->sources and report->dumps by the report's facts. Sources outside the inputs' data
// folder are left out; a file without a picture has a note that says why.
void ReadFrames(const Inputs& inputs, Pictures pictures, Report* report);

}  // namespace runreport

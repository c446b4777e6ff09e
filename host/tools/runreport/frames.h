// The frames that a run read and wrote, with geometry and a reduced picture.
#pragma once

#include <vector>

#include "report.h"

namespace runreport {

// Fills report->sources and report->dumps. Sources outside the inputs' data folder are left out; a
// file without a picture has a note that says why.
void ReadFrames(const std::vector<runlog::Source>& sources, const Inputs& inputs, Report* report);

}  // namespace runreport

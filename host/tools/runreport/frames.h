// The frames that a run read and wrote, with geometry and a reduced picture.
#pragma once

#include <string>
#include <vector>

#include "report.h"

namespace runreport {

// Each source file that the log's lines say was opened, once, in order. `dataFolder` is what the
// tool saw as /data/vendor/camera.
std::vector<Frame> findSources(const std::vector<LogLine>& log, const std::string& dataFolder);

// Reads every frame's file, several at a time, and fills in size, geometry and picture; a note
// where that fails.
void examineFrames(std::vector<Frame*> frames);

}  // namespace runreport

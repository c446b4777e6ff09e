// What the stand-in device can complain of, taken from its sources.
#pragma once

#include <string>
#include <vector>

#include "tests/device_build/log_texts.h"

namespace device_build {

// All errors and warnings of ./run, of deviceshell, of the workstation's libraries and of the
// services, below `project`; "…" stands for each value. `priority` is 'E' for all of them.
std::vector<LogText> ReadStandInTexts(const std::string& project);

}  // namespace device_build

// The device's first process: starts the programs, runs the command, ends them.
#pragma once

#include "device_plan.h"

namespace deviceshell {

// Carries the plan out as process 1 of the device and writes the command's shell status (or 125
// after a complaint) to the plan's status descriptor. When it returns, the caller must end: the
// kernel then ends every process that is left. The result is the status, too.
int runInside(const DevicePlan& plan);

}  // namespace deviceshell

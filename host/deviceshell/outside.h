// The user's side: opens the files, starts the sandbox, passes signals on.
#pragma once

#include "device_plan.h"
#include "options.h"

namespace deviceshell {

// Runs the plan in a sandbox and returns the status that deviceshell ends with. SIGINT, SIGTERM,
// SIGHUP and SIGQUIT that are sent to this process go to the command; if it does not end within
// 2 s it is killed, and the status is 128 + the signal's number. (The terminal's Ctrl-C reaches
// the command by itself and sets no limit.) No process of the device is left on return.
int runOutside(const Options& options, DevicePlan plan, const std::string& self);

}  // namespace deviceshell

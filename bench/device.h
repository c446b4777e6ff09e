// The stand-in device that everything is measured in, and processes beside the program's own.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

// Goes on inside a device with plane layouts, whose data folder holds the source files: this
// program starts anew in it, and the call returns there. Ends the program where that fails.
void GoIntoDevice();

// The device's data folder, as the programs in it see it.
inline constexpr char kDataFolder[] = "/data/vendor/camera/offlinecameratest/";

// Starts a program, looked up in PATH when it has no '/'. Its standard output and error go to
// `output`, a borrowed descriptor. Ends this program if it cannot be started.
pid_t Start(const std::vector<std::string>& command, int output);

// Waits for its end: the exit status, or 128 + the signal.
int WaitFor(pid_t child);

}  // namespace bench

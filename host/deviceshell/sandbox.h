// The device's file system, as arguments of bubblewrap.
#pragma once

#include <string>
#include <vector>

#include "options.h"

namespace deviceshell {

// Places that the device has of its own; everything else is the host's, read-only.
constexpr const char* kDataFolder = "/data/vendor/camera";
constexpr const char* kBinaryFolder = "/vendor/bin";
constexpr const char* kHalFolder = "/vendor/lib64/hw";
constexpr const char* kBinderFolder = "/binder";

// Arguments that show the host's root folder `hostRoot` ("/" except in tests) read-only at the
// device's "/", leaving out the places in `own` (absolute paths): folders above one of them are
// made anew and filled entry by entry. Symbolic links are made again, not followed.
std::vector<std::string> mirrorArguments(const std::string& hostRoot,
                                         const std::vector<std::string>& own);

// The whole of bubblewrap's command line up to the program that it runs: one process namespace
// whose first process is that program, and which ends when the caller ends.
std::vector<std::string> sandboxArguments(const Options& options, const std::string& binaryFolder);

}  // namespace deviceshell

// Starting the library's own threads.
#pragma once

#include <functional>

namespace hostbinder {

// Runs body on a detached thread with all signals blocked, so that handlers run on the program's
// own threads. name: at most 15 characters. False (with a log line) if there is no thread left.
bool startThread(const char* name, std::function<void()> body);

}  // namespace hostbinder

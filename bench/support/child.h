// Processes that a measurement needs beside its own.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace bench {

/** Starts a program, looked up in PATH when it has no '/'. Its standard output and error go to
 * `output`, a descriptor (borrowed). A program that cannot be started ends this one. */
pid_t Start(const std::vector<std::string>& command, int output);

/** Waits for its end; the exit status, or 128 + the signal. */
int WaitFor(pid_t child);

}  // namespace bench

// deviceinit: bubblewrap's parent on the user's side, and the first process in the device.
#pragma once

#include <string>
#include <vector>

namespace deviceshell {

using Words = std::vector<std::string>;

constexpr int kNoDevice = 125;  // status when the device did not come up

// Starts bubblewrap with these words and returns the status that deviceshell ends with. SIGINT,
// SIGTERM, SIGHUP and SIGQUIT that are sent to this process go to the command; the terminal's
// Ctrl-C reaches it by itself. With `lendTerminal` the terminal of standard input is the command's
// until it ends. No process of the device is left.
int RunOutside(const Words& arguments, bool lendTerminal);

// Starts the programs, runs the command and ends them all. Returns the command's status, or
// kNoDevice after a complaint; then the caller ends, and with it every process that is left. A
// command that is still there 2 s after a signal is killed: 128 + n. `words` are, for each program,
// the name that it registers (empty: it is the service manager), its path, its words and an empty
// word; then "--" and the command. The programs' log is descriptor STANDIN_LOG_FD.
int RunInside(const Words& words, bool takeTerminal);

// Between them a socket of this number. The first process writes kReady when the terminal's signals
// reach it, and waits for kStart; other bytes that it gets are numbers of signals.
constexpr const char* kControlVariable = "DEVICESHELL_CONTROL_FD";
constexpr unsigned char kReady = 1;
constexpr unsigned char kStart = 0;

// Becomes the program, looked for in PATH; where that fails it says so and ends with kNoDevice.
[[noreturn]] void Become(const Words& argv);

// Writes one line "deviceshell: ..." to standard error.
void Complain(const std::string& sentence);

}  // namespace deviceshell

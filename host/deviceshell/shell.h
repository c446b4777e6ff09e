// The shell that runs on the device when no command is given.
#pragma once

#include <sys/types.h>
#include <termios.h>

#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "device_plan.h"

namespace deviceshell {

// For a person when standard input and standard error are a terminal, as the shell itself decides.
ShellKind shellKindHere();

// False for a background job of the terminal of standard input.
bool mayUseTerminal();

std::vector<std::string> shellCommand();
std::vector<std::pair<std::string, std::string>> shellEnvironment();

// What a person is told first: how to run the tool, what else is at hand, how to leave.
extern const char* const kGreeting;

// Lends the terminal of standard input to a shell for as long as the object lives, and takes it
// back with its settings as they were.
class LentTerminal {
  public:
    LentTerminal();
    ~LentTerminal();
    LentTerminal(const LentTerminal&) = delete;
    LentTerminal& operator=(const LentTerminal&) = delete;

  private:
    std::optional<termios> m_settings;
};

// Makes the calling process a process group of its own, and that the terminal's foreground group.
// To be called before exec, with SIGTTOU blocked.
void takeTerminal();

}  // namespace deviceshell

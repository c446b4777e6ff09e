// The shell that runs on the device when no command is given.

#include "shell.h"

#include <signal.h>
#include <unistd.h>

#include "sandbox.h"

namespace deviceshell {

const char* const kGreeting =
        "A shell on the stand-in device; 'exit' takes the device down.\n"
        "  vexofflinecameratest -t B2Y    the tool; its files are in /data/vendor/camera (cd)\n"
        "  service list                   the registered services\n"
        "  logcat -d, trace -d            platform log and binder calls so far (without -d: "
        "follow)\n";

ShellKind shellKindHere() {
    return isatty(STDIN_FILENO) && isatty(STDERR_FILENO) ? ShellKind::Terminal : ShellKind::Script;
}

bool mayUseTerminal() {
    const pid_t user = tcgetpgrp(STDIN_FILENO);
    return user == getpgrp() || user < 0;
}

std::vector<std::string> shellCommand() {
    return {"bash", "--noprofile", "--norc"};
}

// No history: the only place to keep one is the user's data folder.
std::vector<std::pair<std::string, std::string>> shellEnvironment() {
    return {{"HOME", kDataFolder}, {"PS1", "standin:$PWD $ "}, {"HISTFILE", ""}};
}

LentTerminal::LentTerminal() {
    termios settings = {};
    if (tcgetattr(STDIN_FILENO, &settings) == 0) m_settings = settings;
}

LentTerminal::~LentTerminal() {
    // Who changes a terminal from the background is stopped, unless it ignores that.
    void (*const before)(int) = signal(SIGTTOU, SIG_IGN);
    tcsetpgrp(STDIN_FILENO, getpgrp());
    if (m_settings) tcsetattr(STDIN_FILENO, TCSADRAIN, &*m_settings);
    signal(SIGTTOU, before);
}

void takeTerminal() {
    setpgid(0, 0);
    tcsetpgrp(STDIN_FILENO, getpid());
}

}  // namespace deviceshell

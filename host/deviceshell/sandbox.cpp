// Starts bubblewrap and ends with its command's status; no process of the device is left then.
// SIGINT, SIGTERM, SIGHUP and SIGQUIT that are sent to this process go to the device's first
// process; the terminal's Ctrl-C reaches that one by itself.
//
// usage: sandbox [--die-with-parent] [--terminal] BUBBLEWRAP'S ARGUMENTS
//
// --die-with-parent: gets SIGTERM as the calling process ends; --terminal: the terminal of standard
// input is the command's until it ends.
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "deviceinit.h"

namespace deviceshell {
namespace {

// For the device's end after a signal; its own limits are 2 s.
constexpr int kPatienceMilliseconds = 6000;

// Blocked from here on, also in bubblewrap, which would otherwise die of a Ctrl-C meant for the
// command, and in the first process until it reads them.
int WatchSignals() {
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD}) {
        sigaddset(&watched, number);
    }
    sigprocmask(SIG_BLOCK, &watched, nullptr);
    signal(SIGCHLD, SIG_DFL);  // else the ends of children would be lost
    return signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
}

// `status` gets what bubblewrap tells as JSON: the first process's id, later its exit code.
pid_t StartBubblewrap(Words arguments, int status) {
    const pid_t parent = getpid();
    const pid_t bubblewrap = fork();
    if (bubblewrap != 0) return bubblewrap;
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // until bubblewrap asks for it
    if (getppid() != parent) _exit(kNoDevice);
    fcntl(status, F_SETFD, 0);
    arguments.insert(arguments.begin(), {"bwrap", "--json-status-fd", std::to_string(status)});
    Become(arguments);
}

std::string ReadSome(int descriptor) {
    char text[256];
    const ssize_t size = read(descriptor, text, sizeof text);
    return std::string(text, size > 0 ? static_cast<size_t>(size) : 0);
}

int Run(const Words& arguments) {
    const int signals = WatchSignals();
    int ends[2];
    const bool piped = pipe2(ends, O_CLOEXEC) == 0;
    const pid_t bubblewrap = piped ? StartBubblewrap(arguments, ends[1]) : -1;
    if (bubblewrap < 0) {
        Complain(std::string("cannot start the device: ") + strerror(errno));
        return kNoDevice;
    }
    close(ends[1]);
    std::string told = ReadSome(ends[0]);
    pid_t first = 0;
    sscanf(told.c_str(), "{ \"child-pid\": %d", &first);
    int status = 0, last = 0;  // `last` is the signal that was passed on
    while (waitpid(bubblewrap, &status, WNOHANG) == 0) {
        pollfd source = {signals, POLLIN, 0};
        if (poll(&source, 1, last ? kPatienceMilliseconds : -1) == 0) kill(bubblewrap, SIGKILL);
        signalfd_siginfo signal = {};
        while (read(signals, &signal, sizeof signal) == sizeof signal) {
            const int number = static_cast<int>(signal.ssi_signo);
            // What the terminal sends reaches the first process, too; only a hang-up must end it.
            if (number == SIGCHLD || (signal.ssi_code == SI_KERNEL && number != SIGHUP)) continue;
            last = number;
            kill(first != 0 ? first : bubblewrap, number);
        }
    }
    for (std::string more = "{"; !more.empty(); told += more) more = ReadSome(ends[0]);
    const bool ran = told.find("exit-code") != std::string::npos;
    if (ran && WIFEXITED(status)) return WEXITSTATUS(status);
    if (last != 0) return 128 + last;
    Complain("the device did not come up: bubblewrap ended before the command ran");
    return kNoDevice;
}

int RunWithTerminal(const Words& arguments) {
    const pid_t user = tcgetpgrp(STDIN_FILENO);
    if (user >= 0 && user != getpgrp()) {
        Complain("a shell in the background cannot use the terminal; give a COMMAND");
        return 2;
    }
    termios settings = {};
    const bool known = tcgetattr(STDIN_FILENO, &settings) == 0;
    const int status = Run(arguments);
    // A process that changes a terminal from the background is stopped, unless it ignores that.
    signal(SIGTTOU, SIG_IGN);
    tcsetpgrp(STDIN_FILENO, getpgrp());
    if (known) tcsetattr(STDIN_FILENO, TCSADRAIN, &settings);
    return status;
}

}  // namespace
}  // namespace deviceshell

int main(int, char** argv) {
    bool lendsTerminal = false;
    for (++argv; *argv != nullptr; ++argv) {
        if (strcmp(*argv, "--terminal") == 0) {
            lendsTerminal = true;
        } else if (strcmp(*argv, "--die-with-parent") == 0) {
            prctl(PR_SET_PDEATHSIG, SIGTERM);
        } else {
            break;
        }
    }
    deviceshell::Words arguments;
    while (*argv != nullptr) arguments.emplace_back(*argv++);
    // Descriptors 0 to 2 exist from here on, so that no other becomes the command's input.
    int number = 0;
    while (number >= 0 && number <= STDERR_FILENO) number = open("/dev/null", O_RDWR);
    close(number);
    return lendsTerminal ? deviceshell::RunWithTerminal(arguments) : deviceshell::Run(arguments);
}

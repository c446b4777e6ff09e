// deviceinit on the user's side: starts bubblewrap, passes signals on.
#include <errno.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

#include "deviceinit.h"

namespace deviceshell {
namespace {

constexpr int kPatienceMilliseconds =
        6000;  // for the device's end after a signal; its own limits are 2 s

class Sandbox {
  public:
    bool Start(Words arguments);  // false after a complaint
    int UntilEnd();

  private:
    void Take(const signalfd_siginfo& signal);

    pid_t m_bubblewrap = -1;
    int m_signals = -1;
    int m_control = -1;
    bool m_ready = false;  // the first process
    int m_last = 0;        // the last signal that was passed on
};

// The signals stay blocked in bubblewrap, which would otherwise die of a Ctrl-C meant for the
// command, and in the first process.
bool Sandbox::Start(Words arguments) {
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD}) {
        sigaddset(&watched, number);
    }
    sigprocmask(SIG_BLOCK, &watched, nullptr);
    signal(SIGCHLD, SIG_DFL);  // else the ends of children would be lost
    signal(SIGPIPE, SIG_IGN);  // the device may end while a signal is passed on
    m_signals = signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
    int control[2];
    const pid_t parent = getpid();
    if (m_signals < 0 || socketpair(AF_UNIX, SOCK_STREAM, 0, control) != 0 ||
        (m_bubblewrap = fork()) < 0) {
        Complain(std::string("cannot start the device: ") + strerror(errno));
        return false;
    }
    close(control[m_bubblewrap == 0 ? 0 : 1]);
    m_control = control[0];
    if (m_bubblewrap != 0) return true;
    prctl(PR_SET_PDEATHSIG, SIGKILL);  // until bubblewrap asks for it
    if (getppid() != parent) _exit(kNoDevice);
    signal(SIGPIPE, SIG_DFL);
    setenv(kControlVariable, std::to_string(control[1]).c_str(), 1);
    arguments.insert(arguments.begin(), "bwrap");
    Become(arguments);
}

int Sandbox::UntilEnd() {
    int status = 0;
    while (waitpid(m_bubblewrap, &status, WNOHANG) == 0) {
        pollfd sources[2] = {{m_signals, POLLIN, 0}, {m_ready ? -1 : m_control, POLLIN, 0}};
        const int count = poll(sources, 2, m_last ? kPatienceMilliseconds : -1);
        if (count == 0) kill(m_bubblewrap, SIGKILL);
        signalfd_siginfo signal = {};
        while (read(m_signals, &signal, sizeof signal) == sizeof signal) Take(signal);
        unsigned char byte = 0;
        if (sources[1].revents && read(m_control, &byte, 1) == 1) {
            // Signals that came before are passed on now.
            m_ready = true;
            if (write(m_control, &kStart, 1) < 0) continue;
        }
    }
    if (m_ready && WIFEXITED(status)) return WEXITSTATUS(status);
    if (m_last != 0) return 128 + m_last;
    Complain("the device did not come up: bubblewrap ended before the command ran");
    return kNoDevice;
}

void Sandbox::Take(const signalfd_siginfo& signal) {
    const int number = static_cast<int>(signal.ssi_signo);
    // What the terminal sends reaches the first process, too, as soon as it is ready; only a
    // hang-up must end it.
    const bool reachesIt = m_ready && signal.ssi_code == SI_KERNEL && number != SIGHUP;
    if (number == SIGCHLD || reachesIt) return;
    m_last = number;
    const unsigned char byte = static_cast<unsigned char>(number);
    if (write(m_control, &byte, 1) < 0) kill(m_bubblewrap, SIGKILL);
}

int Run(const Words& arguments) {
    Sandbox sandbox;
    return sandbox.Start(arguments) ? sandbox.UntilEnd() : kNoDevice;
}

}  // namespace

int RunOutside(const Words& arguments, bool lendTerminal) {
    if (!lendTerminal) return Run(arguments);
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

}  // namespace deviceshell

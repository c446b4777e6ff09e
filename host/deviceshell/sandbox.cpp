// Starts bubblewrap and ends with its command's status; no process of the device is left then.
// SIGINT, SIGTERM, SIGHUP and SIGQUIT that are sent to this process go to the device's first
// process; the terminal's Ctrl-C reaches the command by itself.
//
// usage: sandbox [--terminal] BUBBLEWRAP'S ARGUMENTS
//
// --terminal: the command takes the terminal of standard input, which is given back as it was.
#include <fcntl.h>
#include <stdio.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>

#include "process.h"

namespace deviceshell {
namespace {

// For the device's end after a signal; its own limits are 2 s.
constexpr long kPatienceMilliseconds = 6000;

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

int Run(const Words& arguments) {
    // Also in bubblewrap, which would otherwise die of a Ctrl-C meant for the command.
    MaskSignals(SIG_BLOCK);
    int ends[2];
    const bool piped = pipe2(ends, O_CLOEXEC) == 0;
    const pid_t bubblewrap = piped ? StartBubblewrap(arguments, ends[1]) : -1;
    if (bubblewrap < 0) {
        Complain(std::string("cannot start the device: ") + strerror(errno));
        return kNoDevice;
    }
    close(ends[1]);
    FILE* const told = fdopen(ends[0], "r");
    pid_t first = 0;
    if (fscanf(told, "{ \"child-pid\": %d", &first) != 1) first = bubblewrap;
    int status = 0, passedOn = 0;
    while (waitpid(bubblewrap, &status, WNOHANG) == 0) {
        const siginfo_t signal = NextSignal(passedOn ? kPatienceMilliseconds : kForever);
        // What the terminal sends reaches the command, too; but at a hang-up, all has to end.
        const bool reached = signal.si_code == SI_KERNEL && signal.si_signo != SIGHUP;
        if (signal.si_signo == 0) kill(bubblewrap, SIGKILL);
        if (signal.si_signo == 0 || signal.si_signo == SIGCHLD || reached) continue;
        passedOn = signal.si_signo;
        kill(first, passedOn);
    }
    bool ran = false;
    char line[256];
    while (fgets(line, sizeof line, told)) ran = ran || strstr(line, "exit-code");
    if (ran && WIFEXITED(status)) return WEXITSTATUS(status);
    if (passedOn != 0) return 128 + passedOn;
    Complain("the device did not come up: bubblewrap ended before the command ran");
    return kNoDevice;
}

// The command may be killed before it gives the terminal back.
int RunWithTerminal(const Words& arguments) {
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

int main(int argc, char** argv) {
    // Descriptors 0 to 2 exist from here on, so that no other becomes the command's input.
    int number = 0;
    while (number >= 0 && number <= STDERR_FILENO) number = open("/dev/null", O_RDWR);
    close(number);
    const deviceshell::Words words(argv + 1, argv + argc);
    if (words[0] != "--terminal") return deviceshell::Run(words);
    return deviceshell::RunWithTerminal({words.begin() + 1, words.end()});
}

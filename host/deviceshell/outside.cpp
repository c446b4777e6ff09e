// The user's side: opens the files, starts the sandbox, passes signals on.

#include "outside.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/signalfd.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

#include "control.h"
#include "process.h"
#include "sandbox.h"
#include "shell.h"

namespace deviceshell {

namespace {

constexpr int kUsage = 2;
constexpr int kNoDevice = 125;
constexpr int kGraceMilliseconds = 2000;

// Opens for whole lines appended by several writers; -1 with a complaint.
int openLog(const std::string& path) {
    const int number = open(path.empty() ? "/dev/null" : path.c_str(),
                            O_WRONLY | O_CREAT | O_TRUNC | O_APPEND | O_CLOEXEC, 0644);
    if (number < 0) complain(path + ": " + strerror(errno));
    return number;
}

// A log without a file, for a shell to read through the descriptor; -1 with a complaint.
int openMemory(const char* name) {
    const int number = memfd_create(name, MFD_CLOEXEC);
    if (number >= 0 && fcntl(number, F_SETFL, O_APPEND) == 0) return number;
    complain(std::string("cannot keep the ") + name + ": " + strerror(errno));
    return -1;
}

// A shell has everything at hand: one log of all programs, as on a device, and the trace.
bool openFiles(const Options& options, bool forShell, DeviceDescriptors* numbers) {
    const bool keepLog = forShell && options.logFile.empty();
    numbers->log = keepLog ? openMemory("log") : openLog(options.logFile);
    if (numbers->log < 0) return false;
    numbers->deviceLog = forShell && options.deviceLogFile.empty()
                                 ? fcntl(numbers->log, F_DUPFD_CLOEXEC, 0)
                                 : openLog(options.deviceLogFile);
    if (numbers->deviceLog < 0) return false;
    if (!options.runRecordFile.empty() &&
        (numbers->runRecord = openLog(options.runRecordFile)) < 0) {
        return false;
    }
    const bool keepTrace = forShell && options.traceFile.empty();
    if (!keepTrace && options.traceFile.empty()) return true;
    numbers->trace = keepTrace ? openMemory("trace") : openLog(options.traceFile);
    return numbers->trace >= 0;
}

sigset_t watchedSignals() {
    sigset_t signals;
    sigemptyset(&signals);
    for (const int number : {SIGINT, SIGTERM, SIGHUP, SIGQUIT, SIGCHLD}) {
        sigaddset(&signals, number);
    }
    return signals;
}

// The signals stay blocked in bubblewrap, which would otherwise die of a Ctrl-C meant for the
// command; the device's first process unblocks them for its children.
pid_t startSandbox(const std::vector<std::string>& arguments, const DeviceDescriptors& numbers) {
    const pid_t parent = getpid();
    const pid_t pid = fork();
    if (pid != 0) return pid;
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(kNoDevice);
    for (const int number : numbers.all()) {
        if (number >= 0) fcntl(number, F_SETFD, 0);
    }
    for (const char* name : {"STANDIN_HAL_PATH", "STANDIN_LOG_ECHO", "STANDIN_BINDER_TRACE_FD",
                             "STANDIN_RUN_RECORD_FD"}) {
        unsetenv(name);
    }
    setenv("STANDIN_BINDER_DIR", kBinderFolder, 1);
    setenv("STANDIN_LOG_FD", std::to_string(numbers.deviceLog).c_str(), 1);
    std::vector<char*> argv;
    for (const std::string& word : arguments) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    execvp(argv[0], argv.data());
    complain(std::string(argv[0]) + ": " + strerror(errno) + "; install bubblewrap");
    _exit(kNoDevice);
}

// Waits for the sandbox; the number of the last signal that was passed on, or 0.
class Watch {
  public:
    Watch(pid_t sandbox, int signals, int control)
        : m_sandbox(sandbox), m_signals(signals), m_control(control) {}

    int untilEnd() {
        int status = 0;
        while (waitpid(m_sandbox, &status, WNOHANG) == 0) {
            pollfd sources[2] = {{m_signals, POLLIN, 0}, {m_here ? -1 : m_control, POLLIN, 0}};
            const int ready = poll(sources, 2, m_limited ? kGraceMilliseconds : -1);
            if (ready == 0) escalate();
            signalfd_siginfo signal = {};
            while (read(m_signals, &signal, sizeof signal) == sizeof signal) take(signal);
            if (sources[1].revents) letStart();
        }
        return m_last;
    }

  private:
    void take(const signalfd_siginfo& signal) {
        const int number = static_cast<int>(signal.ssi_signo);
        if (number == SIGCHLD) return;
        // What the terminal sends goes to the command, too, as soon as somebody is there to take
        // it; only a hang-up must end it.
        const bool fromTerminal = signal.ssi_code == SI_KERNEL;
        if (fromTerminal && number != SIGHUP && m_here) return;
        m_last = number;
        m_limited = true;
        passOn(number);
    }

    void letStart() {
        unsigned char byte = 0;
        if (read(m_control, &byte, 1) == 1) passOn(kStart);
        m_here = true;  // or gone
    }

    void passOn(int number) const {
        const unsigned char byte = static_cast<unsigned char>(number);
        if (write(m_control, &byte, 1) < 0 && errno != EPIPE) kill(m_sandbox, SIGKILL);
    }

    void escalate() {
        if (m_killed) {
            kill(m_sandbox, SIGKILL);
        } else {
            passOn(SIGKILL);
        }
        m_killed = true;
    }

    const pid_t m_sandbox;
    const int m_signals;
    const int m_control;
    int m_last = 0;
    bool m_here = false;  // the first process has said so
    bool m_limited = false;
    bool m_killed = false;
};

// The status that the device's first process left; without one the sandbox did not come up.
int takeStatus(int statusEnd, int lastSignal) {
    int status = 0;
    const bool told = read(statusEnd, &status, sizeof status) == sizeof status;
    if (told && !(lastSignal != 0 && status == 128 + SIGKILL)) return status;
    if (lastSignal != 0) return 128 + lastSignal;
    complain("the device did not come up: bubblewrap ended before the command ran");
    return kNoDevice;
}

}  // namespace

int runOutside(const Options& options, DevicePlan plan, const std::string& self) {
    DeviceDescriptors& numbers = plan.descriptors;
    if (!openFiles(options, plan.shell != ShellKind::None, &numbers)) return kUsage;
    std::optional<LentTerminal> lent;
    if (plan.shell == ShellKind::Terminal) lent.emplace();
    int statusEnds[2];
    int controlEnds[2];
    const sigset_t watched = watchedSignals();
    sigprocmask(SIG_BLOCK, &watched, nullptr);
    const int signals = signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
    if (signals < 0 || pipe2(statusEnds, O_CLOEXEC) != 0 ||
        socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, controlEnds) != 0) {
        complain(std::string("cannot start the device: ") + strerror(errno));
        return kNoDevice;
    }
    numbers.status = statusEnds[1];
    numbers.control = controlEnds[0];

    std::vector<std::string> arguments = sandboxArguments(options, self.substr(0, self.rfind('/')));
    arguments.push_back(self);
    const std::vector<std::string> inside = encodePlan(plan);
    arguments.insert(arguments.end(), inside.begin(), inside.end());
    const pid_t sandbox = startSandbox(arguments, numbers);
    if (sandbox < 0) {
        complain(std::string("cannot start the device: ") + strerror(errno));
        return kNoDevice;
    }
    close(statusEnds[1]);
    close(controlEnds[0]);
    signal(SIGPIPE, SIG_IGN);  // the sandbox may end while a signal is passed on
    const int lastSignal = Watch(sandbox, signals, controlEnds[1]).untilEnd();
    return takeStatus(statusEnds[0], lastSignal);
}

}  // namespace deviceshell

// The device's first process: starts the programs, runs the command, ends them.

#include "inside.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <map>

#include "control.h"
#include "process.h"
#include "readiness.h"
#include "sandbox.h"
#include "shell.h"

namespace deviceshell {

namespace {

constexpr int kNoDevice = 125;
constexpr rlim_t kMaxDescriptors = 32768;
constexpr int kStopSeconds = 2;  // for the programs to end by themselves after SIGTERM

using Deadline = timespec;

Deadline after(int seconds) {
    Deadline deadline = {};
    clock_gettime(CLOCK_MONOTONIC, &deadline);
    deadline.tv_sec += seconds;
    return deadline;
}

int millisecondsUntil(const Deadline& deadline) {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long left =
            (deadline.tv_sec - now.tv_sec) * 1000 + (deadline.tv_nsec - now.tv_nsec) / 1'000'000;
    return left < 0 ? 0 : static_cast<int>(left);
}

class Device {
  public:
    explicit Device(const DevicePlan& plan) : m_plan(plan), m_numbers(plan.descriptors) {}

    int run() {
        if (!prepare()) return kNoDevice;
        int status = kNoDevice;
        if (awaitCaller(&status) && startPrograms(&status)) status = runCommand();
        stopPrograms();
        return status;
    }

  private:
    struct Event {
        // TerminalSignal: the terminal's Ctrl-C, which a running command gets by itself.
        enum Kind { TimedOut, ChildEnded, Signal, TerminalSignal, CallerGone } kind;
        pid_t pid;   // of ChildEnded
        int number;  // wait status of ChildEnded, number of a signal
    };

    bool prepare();
    bool awaitCaller(int* status);
    bool startPrograms(int* status);
    bool startProgram(const DeviceProgram& program);
    bool awaitAnswers(const std::vector<std::string>& names, int* status);
    bool noteMissedStart(const Event& event, int* status);
    int runCommand();
    ProgramStart commandStart() const;
    pid_t startCommand(ProgramStart start);
    void stopPrograms();
    Event nextEvent(const Deadline* deadline);
    int takeTerminalSignal();
    std::string labelOf(pid_t pid) const;
    void note(const std::string& sentence) const;

    const DevicePlan& m_plan;
    const DeviceDescriptors& m_numbers;
    int m_signals = -1;
    int m_null = -1;
    bool m_stopping = false;
    std::map<pid_t, std::string> m_running;  // the programs by process, with their file names
};

bool Device::prepare() {
    for (const int number : m_numbers.all()) {
        if (number >= 0) fcntl(number, F_SETFD, FD_CLOEXEC);
    }
    // A command that dies must not leave a core file in the user's folder.
    const rlimit none = {0, 0};
    setrlimit(RLIMIT_CORE, &none);
    // As many descriptors as a device's first process allows, if the workstation does, too.
    rlimit descriptors = {};
    if (getrlimit(RLIMIT_NOFILE, &descriptors) == 0) {
        descriptors.rlim_cur = std::min(descriptors.rlim_max, kMaxDescriptors);
        setrlimit(RLIMIT_NOFILE, &descriptors);
    }

    sigset_t all;
    sigfillset(&all);
    sigprocmask(SIG_SETMASK, &all, nullptr);
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : {SIGCHLD, SIGINT, SIGQUIT}) sigaddset(&watched, number);
    m_signals = signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
    m_null = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (m_signals >= 0 && m_null >= 0) return true;
    complain(std::string("the device's first process cannot start: ") + strerror(errno));
    return false;
}

// Empties the signals' descriptor; the last of them that the terminal sent, or 0.
int Device::takeTerminalSignal() {
    int last = 0;
    signalfd_siginfo signal = {};
    while (read(m_signals, &signal, sizeof signal) == sizeof signal) {
        if (signal.ssi_signo != SIGCHLD) last = static_cast<int>(signal.ssi_signo);
    }
    return last;
}

// Reports children that ended before anything else, so that none is missed.
Device::Event Device::nextEvent(const Deadline* deadline) {
    while (true) {
        int status = 0;
        const pid_t pid = waitpid(-1, &status, WNOHANG);
        if (pid > 0) {
            const auto program = m_running.find(pid);
            const bool asked = m_stopping && WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM;
            if (program != m_running.end() && !asked) {
                note(program->second + " " + describeEnd(status));
            }
            return {Event::ChildEnded, pid, status};
        }
        pollfd sources[2] = {{m_signals, POLLIN, 0}, {m_numbers.control, POLLIN, 0}};
        const int ready = ::poll(sources, 2, deadline ? millisecondsUntil(*deadline) : -1);
        if (ready == 0) return {Event::TimedOut, -1, 0};
        if (sources[0].revents) {
            const int number = takeTerminalSignal();
            if (number != 0) return {Event::TerminalSignal, -1, number};
        }
        if (sources[1].revents) {
            unsigned char number = 0;
            if (read(m_numbers.control, &number, 1) == 1) return {Event::Signal, -1, number};
            return {Event::CallerGone, -1, 0};
        }
    }
}

std::string Device::labelOf(pid_t pid) const {
    const auto program = m_running.find(pid);
    return program == m_running.end() ? "" : program->second;
}

void Device::note(const std::string& sentence) const {
    const std::string line = "deviceshell: " + sentence + "\n";
    if (write(m_numbers.deviceLog, line.data(), line.size()) < 0) return;
}

bool Device::startProgram(const DeviceProgram& program) {
    ProgramStart start;
    start.argv = program.argv;
    start.input = m_null;
    start.output = m_numbers.deviceLog;
    start.error = m_numbers.deviceLog;
    start.keepOpen = {m_numbers.deviceLog};
    start.ownGroup = true;
    // Keeps the C library's allocator from raising this limit by itself: large blocks go back to
    // the system as soon as they are free, also after a flood of large calls.
    start.setEnvironment = {{"MALLOC_MMAP_THRESHOLD_", "1048576"}};
    const pid_t pid = deviceshell::startProgram(start);
    if (pid < 0) {
        complain(program.argv[0] + ": " + strerror(errno));
        return false;
    }
    const std::string& path = program.argv[0];
    m_running[pid] = path.substr(path.rfind('/') + 1);
    return true;
}

// A program that ends before all have answered ends the start: what it would have offered is
// missing for good.
bool Device::awaitAnswers(const std::vector<std::string>& names, int* status) {
    const pid_t waiter = fork();
    if (waiter == 0) {
        _exit((names.empty() ? waitForServiceManager(kBinderFolder) : waitForServices(names)) ? 0
                                                                                              : 1);
    }
    if (waiter < 0) {
        complain(std::string("fork: ") + strerror(errno));
        return false;
    }
    // The waiter's own limit per name comes first; this one is for a waiter that got stuck.
    const Deadline deadline = after(kStartSeconds * static_cast<int>(names.size() + 2));
    Event event = nextEvent(&deadline);
    while (event.kind == Event::ChildEnded && event.pid != waiter && labelOf(event.pid).empty()) {
        event = nextEvent(&deadline);
    }
    if (event.kind == Event::ChildEnded && event.pid == waiter) {
        return WIFEXITED(event.number) && WEXITSTATUS(event.number) == 0;
    }
    kill(waiter, SIGKILL);  // it may just tell what it waits for
    waitpid(waiter, nullptr, 0);
    return noteMissedStart(event, status);
}

bool Device::noteMissedStart(const Event& event, int* status) {
    switch (event.kind) {
        case Event::ChildEnded:
            complain(labelOf(event.pid) + " " + describeEnd(event.number) +
                     " before it answered; the device log (--device-log) shows what it said");
            m_running.erase(event.pid);
            break;
        case Event::TimedOut:
            complain("the service manager stopped answering");
            break;
        case Event::Signal:
        case Event::TerminalSignal:
            complain("signal " + std::to_string(event.number) + " (" + strsignal(event.number) +
                     ") came before the device was up; the command did not run");
            *status = 128 + event.number;
            break;
        case Event::CallerGone:
            break;
    }
    return false;
}

// For as long as the caller lives, which answers at once.
bool Device::awaitCaller(int* status) {
    if (write(m_numbers.control, &kHere, 1) != 1) return false;
    const Event event = nextEvent(nullptr);
    return (event.kind == Event::Signal && event.number == kStart) ||
           noteMissedStart(event, status);
}

bool Device::startPrograms(int* status) {
    std::vector<std::string> names;
    bool managerAnswers = false;
    for (const DeviceProgram& program : m_plan.programs) {
        if (!startProgram(program)) return false;
        if (!managerAnswers && !awaitAnswers({}, status)) return false;
        managerAnswers = true;
        if (!program.serviceName.empty()) names.push_back(program.serviceName);
    }
    return names.empty() || awaitAnswers(names, status);
}

// What the terminal sent before there was a command reached this process alone: the command gets
// it as its first signal, together with those that reached it since.
pid_t Device::startCommand(ProgramStart start) {
    int gate[2];
    if (pipe2(gate, O_CLOEXEC) != 0) return -1;
    start.startSignal = gate[0];
    const pid_t command = deviceshell::startProgram(start);
    if (command > 0) {
        const int early = takeTerminalSignal();
        if (early != 0) kill(command, early);
        if (write(gate[1], "", 1) != 1) kill(command, SIGKILL);
    }
    close(gate[0]);
    close(gate[1]);
    return command;
}

// The command with its environment and descriptors.
ProgramStart Device::commandStart() const {
    ProgramStart start;
    start.argv = m_plan.command;
    const char* const path = getenv("PATH");
    std::string folders = kBinaryFolder;
    if (m_numbers.runRecord >= 0) folders = folders + "/recorded:" + folders;
    // A device's getopt stops at the first plain word.
    start.setEnvironment = {{"POSIXLY_CORRECT", "1"},
                            {"PATH", folders + ":" + (path ? path : "/bin")},
                            {"STANDIN_LOG_FD", std::to_string(m_numbers.log)}};
    start.keepOpen = {m_numbers.log};
    if (m_plan.shell != ShellKind::None) {
        for (const auto& variable : shellEnvironment()) start.setEnvironment.push_back(variable);
        start.unsetEnvironment = {"ENV", "BASH_ENV"};
    }
    start.ownTerminal = m_plan.shell == ShellKind::Terminal;
    if (m_plan.verbose) start.setEnvironment.emplace_back("STANDIN_LOG_ECHO", "1");
    const std::pair<const char*, int> optional[] = {{"STANDIN_BINDER_TRACE_FD", m_numbers.trace},
                                                    {"STANDIN_RUN_RECORD_FD", m_numbers.runRecord}};
    for (const auto& [name, number] : optional) {
        if (number < 0) continue;
        start.setEnvironment.emplace_back(name, std::to_string(number));
        start.keepOpen.push_back(number);
    }
    return start;
}

int Device::runCommand() {
    if (m_plan.shell == ShellKind::Terminal) fputs(kGreeting, stderr);
    const pid_t command = startCommand(commandStart());
    if (command < 0) {
        complain(m_plan.command[0] + ": " + strerror(errno));
        return kNoDevice;
    }
    while (true) {
        const Event event = nextEvent(nullptr);
        if (event.kind == Event::ChildEnded && event.pid == command) {
            return shellStatus(event.number);
        }
        if (event.kind == Event::ChildEnded) m_running.erase(event.pid);
        if (event.kind == Event::Signal) kill(command, event.number);
        if (event.kind == Event::CallerGone) return kNoDevice;
    }
}

// Asked first, so that they can put their affairs in order; the kernel ends the rest.
void Device::stopPrograms() {
    m_stopping = true;
    for (const auto& [pid, label] : m_running) kill(pid, SIGTERM);
    const Deadline deadline = after(kStopSeconds);
    while (!m_running.empty()) {
        const Event event = nextEvent(&deadline);
        if (event.kind == Event::ChildEnded) m_running.erase(event.pid);
        if (event.kind == Event::TimedOut || event.kind == Event::CallerGone) return;
    }
}

}  // namespace

int runInside(const DevicePlan& plan) {
    const int status = Device(plan).run();
    if (write(plan.descriptors.status, &status, sizeof status) != sizeof status) return kNoDevice;
    return status;
}

}  // namespace deviceshell

// The first process in the device: starts the programs, runs the command and ends them all. Ends
// with the command's status, or kNoDevice after a complaint, and with it every process that is
// left. A command that is still there 2 s after a signal is killed: 128 + n.
//
// usage: deviceinit [--terminal] {NAME PROGRAM "" } -- COMMAND
//
// NAME is what the PROGRAM registers (empty: it is the service manager); NAME=VALUE words may come
// before a program. Descriptor STANDIN_LOG_FD gets the programs' log.
#include "deviceinit.h"

#include <android/binder_ibinder.h>
#include <android/binder_manager.h>
#include <android/log.h>
#include <errno.h>
#include <fcntl.h>
#include <host_service_manager.h>
#include <limits.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/signalfd.h>
#include <sys/wait.h>
#include <terminal/terminal.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <map>

namespace deviceshell {
namespace {

// For a program to answer: a sanitizer build on a busy machine needs some of them.
constexpr unsigned kStartSeconds = 30;
// For the command after a signal, and for the programs after it, to end by themselves.
constexpr long kGraceMilliseconds = 2000;
constexpr long kNever = LONG_MAX;

long NowMilliseconds() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return now.tv_sec * 1000 + now.tv_nsec / 1'000'000;
}

bool Answers(const std::string& service) {
    if (!service.empty()) {
        AIBinder* const binder = AServiceManager_checkService(service.c_str());
        if (binder) AIBinder_decStrong(binder);
        return binder != nullptr;
    }
    return AServiceManager_forEachService(nullptr, [](const char*, void*) {}) == STATUS_OK;
}

// Waits until a service is registered, or with an empty name until the service manager accepts
// connections. False after kStartSeconds, with a complaint.
bool WaitForAnswer(const std::string& service) {
    const std::string awaited = service.empty() ? "the service manager" : service;
    const long begin = NowMilliseconds();
    long told = 1;  // a person at a terminal is told from the second second on
    terminal::Progress progress;
    while (!Answers(service)) {
        const long waited = (NowMilliseconds() - begin) / 1000;
        if (waited > kStartSeconds) {
            Complain(awaited + (service.empty() ? " did not answer" : " was not registered") +
                     " within " + std::to_string(kStartSeconds) + " s");
            return false;
        }
        if (waited > told) {
            told = waited;
            progress.Show("deviceshell: waits " + std::to_string(waited) + " s for " + awaited);
        }
        usleep(2000);
    }
    return true;
}

// "ended with status 3" or "was ended by signal 11 (Segmentation fault)".
std::string DescribeEnd(int waitStatus) {
    if (!WIFSIGNALED(waitStatus)) {
        return "ended with status " + std::to_string(WEXITSTATUS(waitStatus));
    }
    const int number = WTERMSIG(waitStatus);
    return "was ended by signal " + std::to_string(number) + " (" + strsignal(number) + ")";
}

class Device {
  public:
    Device(const Words& words, bool takeTerminal) : m_words(words), m_terminal(takeTerminal) {}
    int Run();

  private:
    // The end of a process, or a signal, or that the time is over.
    struct Event {
        pid_t pid = 0;
        bool ofProgram = false;
        int waitStatus = 0;
        int signal = 0;
        bool fromTerminal = false;  // a signal that a running command gets by itself
    };

    Event Next(long deadline);
    pid_t Start(const Words& argv, bool asProgram) const;
    bool StartPrograms();
    bool Await(const Words& services);
    bool EndsStart(const Event& event);
    int RunCommand();
    void StopPrograms();

    const Words m_words;
    size_t m_next = 0;  // the word to read
    const bool m_terminal;
    const int m_log = atoi(getenv("STANDIN_LOG_FD"));
    int m_signals = -1;
    bool m_stopping = false;
    int m_status = kNoDevice;
    std::map<pid_t, std::string> m_running;  // the programs' file names
};

int Device::Run() {
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : {SIGCHLD, SIGINT, SIGQUIT, SIGTERM, SIGHUP, SIGTTOU}) {
        sigaddset(&watched, number);
    }
    m_signals = signalfd(-1, &watched, SFD_CLOEXEC | SFD_NONBLOCK);
    sigprocmask(SIG_BLOCK, &watched, nullptr);
    if (StartPrograms() && !EndsStart(Next(NowMilliseconds()))) m_status = RunCommand();
    StopPrograms();
    return m_status;
}

// The next end of a process or signal until the deadline. Ends come first, so that none is missed.
Device::Event Device::Next(long deadline) {
    while (true) {
        int status = 0;
        const pid_t pid = waitpid(-1, &status, WNOHANG);
        const auto program = m_running.find(pid);
        if (pid > 0 && program == m_running.end()) return {pid, false, status};
        if (pid > 0) {
            const bool asked = m_stopping && (status == 0 ||
                                              (WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM));
            const std::string end = program->second + " " + DescribeEnd(status);
            // In the log's form: a report tells by its time in which call a service died.
            if (!asked) __android_log_write(ANDROID_LOG_ERROR, "deviceshell", end.c_str());
            return {pid, true, status};
        }
        pollfd source = {m_signals, POLLIN, 0};
        const long left = std::max(0L, deadline - NowMilliseconds());
        const int count = poll(&source, 1, deadline == kNever ? -1 : static_cast<int>(left));
        signalfd_siginfo signal = {};
        if (read(m_signals, &signal, sizeof signal) == sizeof signal) {
            const int number = static_cast<int>(signal.ssi_signo);
            const bool fromTerminal = signal.ssi_code == SI_KERNEL && number != SIGHUP;
            if (number != SIGCHLD) return {0, false, 0, number, fromTerminal};
        }
        if (count == 0) return {};
    }
}

pid_t Device::Start(const Words& argv, bool asProgram) const {
    const pid_t pid = fork();
    if (pid < 0) Complain(std::string("cannot start a program: ") + strerror(errno));
    if (pid != 0) return pid;
    if (asProgram || m_terminal) setpgid(0, 0);  // no signals from the terminal, or all of them
    if (asProgram) {
        dup2(open("/dev/null", O_RDWR | O_CLOEXEC), STDIN_FILENO);
        dup2(m_log, STDOUT_FILENO);
        dup2(m_log, STDERR_FILENO);
    } else if (m_terminal) {
        tcsetpgrp(STDIN_FILENO, getpid());  // SIGTTOU is blocked
    }
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    Become(argv);
}

bool Device::StartPrograms() {
    Words services;
    while (m_words[m_next] != "--") {
        const std::string service = m_words[m_next++];
        const auto begin = m_words.begin() + static_cast<std::ptrdiff_t>(m_next);
        const Words argv(begin, std::find(begin, m_words.end(), ""));
        m_next += argv.size() + 1;
        const pid_t pid = Start(argv, true);
        if (pid < 0) return false;
        const std::string program = *std::find_if_not(argv.begin(), argv.end(), IsSetting);
        m_running[pid] = program.substr(program.rfind('/') + 1);
        if (service.empty() && !Await({""})) return false;
        if (!service.empty()) services.push_back(service);
    }
    return services.empty() || Await(services);
}

// Waits in a process of its own, as binder starts threads.
bool Device::Await(const Words& services) {
    const pid_t waiter = fork();
    if (waiter == 0) {
        // The limit per service comes first; this one is for a wait that got stuck.
        alarm(kStartSeconds * static_cast<unsigned>(services.size() + 1));
        _exit(std::all_of(services.begin(), services.end(), WaitForAnswer) ? 0 : 1);
    }
    Event event = Next(kNever);
    while (event.pid != waiter && !event.ofProgram && !event.signal) event = Next(kNever);
    if (event.pid == waiter) {
        if (WIFSIGNALED(event.waitStatus)) Complain("the service manager stopped answering");
        return event.waitStatus == 0;
    }
    kill(waiter, SIGKILL);  // so that it shows no more progress
    waitpid(waiter, nullptr, 0);
    return !EndsStart(event);
}

// True, with a complaint, when the command can no longer run: a program that it needs has ended, or
// a signal came.
bool Device::EndsStart(const Event& event) {
    if (event.ofProgram) {
        Complain(m_running[event.pid] + " " + DescribeEnd(event.waitStatus) +
                 " before it answered; the services' log shows what it said");
        m_running.erase(event.pid);
    }
    if (event.signal) {
        Complain("signal " + std::to_string(event.signal) + " (" + strsignal(event.signal) +
                 ") came before the device was up; the command did not run");
        m_status = 128 + event.signal;
    }
    return event.ofProgram || event.signal;
}

int Device::RunCommand() {
    const pid_t command = Start(
            Words(m_words.begin() + static_cast<std::ptrdiff_t>(m_next) + 1, m_words.end()), false);
    if (command < 0) return kNoDevice;
    int passedOn = 0;
    long deadline = kNever;
    Event event = Next(NowMilliseconds());
    // It may have come before there was a command to get it.
    if (event.fromTerminal) kill(command, event.signal);
    while (event.pid != command) {
        m_running.erase(event.pid);
        if (event.signal && !event.fromTerminal) {
            passedOn = event.signal;
            kill(command, passedOn);
            deadline = NowMilliseconds() + kGraceMilliseconds;
        }
        event = Next(deadline);
        const bool timedOut = !event.pid && !event.signal;
        if (timedOut) return 128 + passedOn;  // it is killed as this process ends
    }
    const int status = event.waitStatus;
    return WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

// Asked first, so that they can end in order; the kernel ends the rest. The last one first: without
// the service manager the others would complain.
void Device::StopPrograms() {
    m_stopping = true;
    for (auto program = m_running.rbegin(); program != m_running.rend(); ++program) {
        kill(program->first, SIGTERM);
    }
    const auto deadline = NowMilliseconds() + kGraceMilliseconds;
    while (!m_running.empty()) {
        const Event event = Next(deadline);
        if (!event.pid && !event.signal) return;
        m_running.erase(event.pid);
    }
}

}  // namespace
}  // namespace deviceshell

int main(int argc, char** argv) {
    const bool terminal = argc > 1 && strcmp(argv[1], "--terminal") == 0;
    return deviceshell::Device({argv + (terminal ? 2 : 1), argv + argc}, terminal).Run();
}

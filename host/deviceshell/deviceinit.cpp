// The first process in the device: starts the programs and the command, and ends them all. Ends
// with the command's status, or kNoDevice after a complaint, and with it every process that is
// left. A command that is still there 2 s after a signal is killed: 128 + n.
//
// All processes are started at once. Each waits for what it needs, then becomes its program: the
// services for the service manager, the command for all of them.
//
// usage: deviceinit {NAME PROGRAM "" } -- COMMAND
//
// NAME is what the PROGRAM registers (empty: it is the service manager); NAME=VALUE words may come
// before a program. Descriptor STANDIN_LOG_FD gets the programs' log.
#include <android/log.h>
#include <fcntl.h>
#include <host_service_manager.h>
#include <sys/mman.h>
#include <sys/wait.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <map>
#include <new>

#include "process.h"

namespace deviceshell {
namespace {

// For a program to answer: a sanitizer build on a busy machine needs some of them.
constexpr unsigned kStartSeconds = 30;
// For the command after a signal, and for the programs after it, to end by themselves.
constexpr long kGraceMilliseconds = 2000;
constexpr long kPollMilliseconds = 2;

long NowMilliseconds() {
    return std::chrono::steady_clock::now().time_since_epoch() / std::chrono::milliseconds(1);
}

// "ended with status 3" or "was ended by signal 11 (Segmentation fault)".
std::string DescribeEnd(int waitStatus) {
    if (!WIFSIGNALED(waitStatus)) {
        return "ended with status " + std::to_string(WEXITSTATUS(waitStatus));
    }
    const int number = WTERMSIG(waitStatus);
    return "was ended by signal " + std::to_string(number) + " (" + strsignal(number) + ")";
}

// Whether a service is registered, or with an empty name whether the service manager answers.
bool Answers(const std::string& service) {
    Words names;
    const auto append = [](const char* name, void* to) {
        static_cast<Words*>(to)->emplace_back(name);
    };
    if (AServiceManager_forEachService(&names, append) != STATUS_OK) return false;
    return service.empty() || std::count(names.begin(), names.end(), service) != 0;
}

// Ends this process, with a complaint, at a signal and after kStartSeconds.
void WaitForAnswer(const std::string& service) {
    const std::string awaited = service.empty() ? "the service manager" : service;
    const long begin = NowMilliseconds();
    long told = 1;  // a person at a terminal is told from the second second on
    terminal::Progress progress;
    while (!Answers(service)) {
        const long waited = (NowMilliseconds() - begin) / 1000;
        if (waited > kStartSeconds) {
            Complain(awaited + (service.empty() ? " did not answer" : " was not registered") +
                     " within " + std::to_string(kStartSeconds) + " s");
            _exit(kNoDevice);
        }
        if (waited > told) {
            told = waited;
            progress.Show("deviceshell: waits " + std::to_string(waited) + " s for " + awaited);
        }
        const int number = NextSignal(kPollMilliseconds).si_signo;
        if (number != 0) {
            Complain("signal " + std::to_string(number) + " (" + strsignal(number) +
                     ") came before the device was up; the command did not run");
            _exit(128 + number);
        }
    }
}

struct Program {
    std::string service;
    Words argv;
};

class Device {
  public:
    explicit Device(const Words& words);
    int Run();

  private:
    [[noreturn]] void BecomeCommand() const;
    [[noreturn]] void BecomeProgram(const Program& program) const;
    void HandleEnd(pid_t pid, int waitStatus);
    void Stop(int status);

    std::vector<Program> m_programs;
    Words m_commandWords;
    pid_t m_command = -1;
    std::map<pid_t, std::string> m_running;  // the programs' file names
    // Set by the command's process once the device is up.
    std::atomic<bool>& m_commandRuns =
            *new (mmap(nullptr, sizeof m_commandRuns, PROT_READ | PROT_WRITE,
                       MAP_SHARED | MAP_ANONYMOUS, -1, 0)) std::atomic<bool>(false);
    bool m_stopping = false;
    int m_status = kNoDevice;
    long m_deadline = kForever;  // of the command after a signal, then of the programs
};

Device::Device(const Words& words) {
    auto word = words.begin();
    for (; *word != "--"; ++word) {
        Program program{*word++, {}};
        while (!word->empty()) program.argv.push_back(*word++);
        m_programs.push_back(program);
    }
    m_commandWords.assign(word + 1, words.end());
}

int Device::Run() {
    MaskSignals(SIG_BLOCK);
    m_command = fork();
    if (m_command == 0) BecomeCommand();
    setpgid(0, 0);             // only the command gets the terminal's signals
    signal(SIGTTOU, SIG_IGN);  // a complaint may go there all the same
    for (const Program& program : m_programs) {
        const pid_t pid = m_command < 0 ? -1 : fork();
        if (pid == 0) BecomeProgram(program);
        if (pid < 0) {
            Complain(std::string("cannot start a program: ") + strerror(errno));
            return kNoDevice;
        }
        const std::string path =
                *std::find_if_not(program.argv.begin(), program.argv.end(), IsSetting);
        m_running[pid] = path.substr(path.rfind('/') + 1);
    }
    int passedOn = 0;
    while (!m_stopping || !m_running.empty()) {
        int waitStatus = 0;
        const pid_t pid = waitpid(-1, &waitStatus, WNOHANG);
        if (pid > 0) {
            HandleEnd(pid, waitStatus);
            continue;
        }
        const int number = NextSignal(std::max(0L, m_deadline - NowMilliseconds())).si_signo;
        if (number == 0 && m_stopping) break;
        if (number == 0) Stop(128 + passedOn);
        if (number == 0 || number == SIGCHLD || m_stopping) continue;
        passedOn = number;
        kill(m_command, passedOn);
        m_deadline = NowMilliseconds() + kGraceMilliseconds;
    }
    return m_status;  // what is left is killed as this process ends
}

void Device::BecomeCommand() const {
    // The limit per service comes first; this one is for a wait that got stuck.
    alarm(kStartSeconds * static_cast<unsigned>(m_programs.size() + 1));
    for (const Program& program : m_programs) WaitForAnswer(program.service);
    alarm(0);
    m_commandRuns = true;
    MaskSignals(SIG_UNBLOCK);
    Become(m_commandWords);
}

void Device::BecomeProgram(const Program& program) const {
    MaskSignals(SIG_UNBLOCK);
    const int log = atoi(getenv("STANDIN_LOG_FD"));
    dup2(open("/dev/null", O_RDWR | O_CLOEXEC), STDIN_FILENO);
    dup2(log, STDOUT_FILENO);
    dup2(log, STDERR_FILENO);
    // Without limit: the command's process tells when this takes too long.
    while (!program.service.empty() && !Answers("")) usleep(kPollMilliseconds * 1000);
    Become(program.argv);
}

void Device::HandleEnd(pid_t pid, int waitStatus) {
    const bool signalled = WIFSIGNALED(waitStatus);
    const int number = signalled ? WTERMSIG(waitStatus) : 0;
    if (pid == m_command && signalled && !m_commandRuns) {
        Complain("the service manager stopped answering");
        Stop(kNoDevice);
    }
    if (pid == m_command) Stop(signalled ? 128 + number : WEXITSTATUS(waitStatus));
    const auto program = m_running.find(pid);
    if (program == m_running.end()) return;
    const std::string end = program->second + " " + DescribeEnd(waitStatus);
    m_running.erase(program);
    // In the log's form: a report tells by its time in which call a service died.
    const bool asked = m_stopping && (waitStatus == 0 || number == SIGTERM);
    if (!asked) __android_log_write(ANDROID_LOG_ERROR, "deviceshell", end.c_str());
    if (m_stopping || m_commandRuns) return;
    kill(m_command, SIGKILL);  // so that it shows no more progress
    waitpid(m_command, nullptr, 0);
    Complain(end + " before it answered; the services' log shows what it said");
    Stop(kNoDevice);
}

// Programs are asked first, so that they can end in order. The last one first: without the service
// manager the others would complain.
void Device::Stop(int status) {
    if (m_stopping) return;
    m_stopping = true;
    m_status = status;
    m_deadline = NowMilliseconds() + kGraceMilliseconds;
    for (auto program = m_running.rbegin(); program != m_running.rend(); ++program) {
        kill(program->first, SIGTERM);
    }
}

}  // namespace
}  // namespace deviceshell

int main(int argc, char** argv) {
    return deviceshell::Device({argv + 1, argv + argc}).Run();
}

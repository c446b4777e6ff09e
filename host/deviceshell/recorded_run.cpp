// What a shell with --run-record finds as vexofflinecameratest: runs it, and records the run in the
// descriptor STANDIN_RUN_RECORD_FD. Words that end with a zero byte each: process, start, number of
// arguments and the arguments of the run that began last; then process, end and status of every run
// that has ended since. Times are seconds since the epoch.

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <string>

#include "sandbox.h"

namespace {

std::string now() {
    timespec time = {};
    clock_gettime(CLOCK_REALTIME, &time);
    char text[48];
    snprintf(text, sizeof text, "%lld.%06ld", static_cast<long long>(time.tv_sec),
             time.tv_nsec / 1000);
    return text;
}

std::string word(const std::string& text) {
    return text + '\0';
}

// One write, as runs may go on beside each other. A run goes on without its record.
void record(int file, const std::string& words) {
    if (write(file, words.data(), words.size()) < 0) perror("vexofflinecameratest: no record");
}

[[noreturn]] void becomeTool(char** argv, pid_t parent, const sigset_t& signals) {
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(126);
    sigprocmask(SIG_SETMASK, &signals, nullptr);
    const std::string path = std::string(deviceshell::kBinaryFolder) + "/vexofflinecameratest";
    execv(path.c_str(), argv);
    fprintf(stderr, "%s: %s\n", path.c_str(), strerror(errno));
    _exit(126);
}

// Passes on what is sent to this process alone; the terminal's signals reach the tool, too.
int untilEnd(pid_t tool, const sigset_t& watched) {
    int status = 0;
    while (waitpid(tool, &status, WNOHANG) == 0) {
        siginfo_t signal = {};
        const int number = sigwaitinfo(&watched, &signal);
        if (number > 0 && number != SIGCHLD && signal.si_code != SI_KERNEL) kill(tool, number);
    }
    return status;
}

[[noreturn]] void endAs(int status) {
    if (!WIFSIGNALED(status)) _exit(WEXITSTATUS(status));
    signal(WTERMSIG(status), SIG_DFL);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    raise(WTERMSIG(status));
    _exit(128 + WTERMSIG(status));
}

}  // namespace

int main(int argc, char** argv) {
    const char* const number = getenv("STANDIN_RUN_RECORD_FD");
    const int file = number ? atoi(number) : -1;
    if (file <= STDERR_FILENO || fcntl(file, F_SETFD, FD_CLOEXEC) != 0) {
        fprintf(stderr, "vexofflinecameratest: only for deviceshell's option --run-record\n");
        return 126;
    }
    unsetenv("STANDIN_RUN_RECORD_FD");
    sigset_t watched, before;
    sigemptyset(&watched);
    for (const int each : {SIGCHLD, SIGINT, SIGTERM, SIGHUP, SIGQUIT}) sigaddset(&watched, each);
    sigprocmask(SIG_BLOCK, &watched, &before);
    signal(SIGCHLD, SIG_DFL);

    std::string words = word(now()) + word(std::to_string(argc));
    for (int i = 0; i < argc; ++i) words += word(argv[i]);
    const pid_t self = getpid();
    const pid_t tool = fork();
    if (tool == 0) becomeTool(argv, self, before);
    if (tool < 0) {
        perror("vexofflinecameratest: fork");
        return 126;
    }
    const std::string process = word(std::to_string(tool));
    if (ftruncate(file, 0) == 0) record(file, process + words);
    const int status = untilEnd(tool, watched);
    const int shown = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    record(file, process + word(now()) + word(std::to_string(shown)));
    endAs(status);
}

// Starting a program and telling how it ended.

#include "process.h"

#include <errno.h>
#include <fcntl.h>
#include <signal.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <terminal/terminal.h>
#include <unistd.h>

#include <sstream>

#include "shell.h"

namespace deviceshell {

namespace {

constexpr size_t kMaxOutput = 1 << 20;

// After execvp(), which calls a folder of PATH that it may not search "permission denied", too.
bool isInPath(const std::string& name) {
    if (name.find('/') != std::string::npos) return true;
    const char* const path = getenv("PATH");
    std::istringstream folders(path ? path : "");
    for (std::string folder; std::getline(folders, folder, ':');) {
        if (access((folder + "/" + name).c_str(), F_OK) == 0) return true;
    }
    return false;
}

[[noreturn]] void becomeProgram(const ProgramStart& start) {
    if (start.ownGroup) setpgid(0, 0);
    if (start.ownTerminal) takeTerminal();
    const int wanted[3] = {start.input, start.output, start.error};
    for (int number = 0; number < 3; ++number) {
        if (wanted[number] >= 0) dup2(wanted[number], number);
    }
    for (const int descriptor : start.keepOpen) {
        fcntl(descriptor, F_SETFD, 0);
    }
    for (const std::string& name : start.unsetEnvironment) unsetenv(name.c_str());
    for (const auto& [name, value] : start.setEnvironment) {
        setenv(name.c_str(), value.c_str(), 1);
    }
    char byte = 0;
    if (start.startSignal >= 0 && read(start.startSignal, &byte, 1) != 1) _exit(126);
    sigset_t none;
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);

    if (start.limitSeconds > 0) alarm(start.limitSeconds);
    std::vector<char*> argv;
    for (const std::string& word : start.argv) argv.push_back(const_cast<char*>(word.c_str()));
    argv.push_back(nullptr);
    execvp(argv[0], argv.data());
    const int error = errno == EACCES && !isInPath(start.argv[0]) ? ENOENT : errno;
    complain(start.argv[0] + ": " + strerror(error));
    _exit(error == ENOENT ? 127 : 126);
}

}  // namespace

pid_t startProgram(const ProgramStart& start) {
    const pid_t pid = fork();
    if (pid == 0) becomeProgram(start);
    return pid;
}

int shellStatus(int waitStatus) {
    return WIFSIGNALED(waitStatus) ? 128 + WTERMSIG(waitStatus) : WEXITSTATUS(waitStatus);
}

std::string describeEnd(int waitStatus) {
    if (WIFSIGNALED(waitStatus)) {
        const int number = WTERMSIG(waitStatus);
        return "was ended by signal " + std::to_string(number) + " (" + strsignal(number) + ")";
    }
    return "ended with status " + std::to_string(WEXITSTATUS(waitStatus));
}

std::optional<ProgramOutput> readProgram(const std::vector<std::string>& argv, ReadErrors errors) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0) return std::nullopt;
    ProgramStart start;
    start.argv = argv;
    start.output = ends[1];
    if (errors == ReadErrors::Too) start.error = ends[1];
    start.limitSeconds = 10;
    const pid_t pid = startProgram(start);
    close(ends[1]);
    ProgramOutput output;
    char bytes[4096];
    ssize_t count = 0;
    while (pid > 0 && output.text.size() < kMaxOutput &&
           ((count = read(ends[0], bytes, sizeof bytes)) > 0 || (count < 0 && errno == EINTR))) {
        if (count > 0) output.text.append(bytes, static_cast<size_t>(count));
    }
    close(ends[0]);
    int status = 0;
    if (pid < 0 || waitpid(pid, &status, 0) != pid || !WIFEXITED(status)) return std::nullopt;
    output.status = WEXITSTATUS(status);
    return output;
}

void complain(const std::string& sentence) {
    const std::string line =
            terminal::blankedLine() + "deviceshell: " + terminal::red(sentence) + "\n";
    // One write, so that lines of several processes do not mix.
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) return;
}

}  // namespace deviceshell

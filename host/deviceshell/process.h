// What the two programs of deviceshell share: bubblewrap's parent on the user's side (sandbox), and
// the first process in the device (deviceinit).
#pragma once

#include <errno.h>
#include <limits.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <terminal/terminal.h>
#include <unistd.h>

#include <string>
#include <vector>

namespace deviceshell {

using Words = std::vector<std::string>;

constexpr int kNoDevice = 125;  // status when the device did not come up

// Writes one line "deviceshell: ..." to standard error.
inline void Complain(const std::string& sentence) {
    const std::string line =
            terminal::BlankedLine() + "deviceshell: " + terminal::Red(sentence) + "\n";
    // One write, so that lines of several processes do not mix.
    if (write(STDERR_FILENO, line.data(), line.size()) < 0) return;
}

// Whether the word is NAME=VALUE. A path is none, although a folder's name may have a '='.
inline bool IsSetting(const std::string& word) {
    return word.find('=') < word.find('/');
}

// Becomes the program, looked for in PATH, after NAME=VALUE words for its environment; where that
// fails it says so and ends with 127 or 126, as a shell does.
[[noreturn]] inline void Become(Words words) {
    while (words.size() > 1 && IsSetting(words[0])) {
        putenv(strdup(words[0].c_str()));
        words.erase(words.begin());
    }
    std::vector<char*> argv;
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    execvp(argv[0], argv.data());
    const int error = errno;
    Complain(words[0] + ": " + strerror(error) +
             (words[0] == "bwrap" ? "; install bubblewrap" : ""));
    _exit(error == ENOENT ? 127 : 126);
}

// SIGCHLD, and the signals that ask a process to end.
inline sigset_t WatchedSignals() {
    sigset_t watched;
    sigemptyset(&watched);
    for (const int number : {SIGCHLD, SIGINT, SIGQUIT, SIGTERM, SIGHUP}) {
        sigaddset(&watched, number);
    }
    return watched;
}

// SIG_BLOCK keeps the watched signals for NextSignal(), in children, too, until SIG_UNBLOCK.
inline void MaskSignals(int how) {
    const sigset_t watched = WatchedSignals();
    sigprocmask(how, &watched, nullptr);
    signal(SIGCHLD, SIG_DFL);  // else the ends of children would be lost
}

// Waits for a watched signal. Its number is 0 when none came in time.
inline siginfo_t NextSignal(long limitMilliseconds) {
    const sigset_t watched = WatchedSignals();
    const timespec limit = {limitMilliseconds / 1000, limitMilliseconds % 1000 * 1'000'000};
    siginfo_t info = {};
    // Interrupted when this process was stopped meanwhile.
    while (sigtimedwait(&watched, &info, &limit) < 0 && errno == EINTR) {
    }
    return info;
}
constexpr long kForever = LONG_MAX;

}  // namespace deviceshell

// A program started by a test: its output, its end, its terminal.

#include "tests/end_to_end/subprocess.h"

#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <stdlib.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>

namespace end_to_end {

namespace {

// As execve() takes them.
std::vector<char*> pointers(const std::vector<std::string>& words) {
    std::vector<char*> all;
    for (const std::string& word : words) all.push_back(const_cast<char*>(word.c_str()));
    all.push_back(nullptr);
    return all;
}

// This process's variables, but for those that are given.
std::vector<std::string> variablesWith(const Subprocess::Environment& given) {
    std::map<std::string, std::string> variables(given.begin(), given.end());
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string text = *entry;
        const size_t end = text.find('=');
        if (end != std::string::npos) variables.emplace(text.substr(0, end), text.substr(end + 1));
    }
    std::vector<std::string> texts;
    for (const auto& [name, value] : variables) texts.push_back(name + "=" + value);
    return texts;
}

// Opens a terminal and returns its master end; its name goes to `name`.
int openTerminal(std::string* name) {
    const int master = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    if (master < 0 || grantpt(master) != 0 || unlockpt(master) != 0) return -1;
    *name = ptsname(master);
    return master;
}

}  // namespace

Subprocess::Subprocess(const std::vector<std::string>& argv, const Environment& environment,
                       Input input, int patience) {
    clock_gettime(CLOCK_MONOTONIC, &m_deadline);
    m_deadline.tv_sec += patience;
    int inputs[2] = {-1, -1};
    int outputs[2] = {-1, -1};
    int errors[2] = {-1, -1};
    std::string terminal;
    if (input == Input::Terminal) {
        m_ends[0] = openTerminal(&terminal);
        if (m_ends[0] < 0) return;
    } else {
        int* const third = input == Input::Pipe ? inputs : errors;
        if (pipe2(outputs, O_CLOEXEC) != 0 || pipe2(third, O_CLOEXEC) != 0) return;
        m_input = inputs[1];
        m_ends[0] = outputs[0];
        m_ends[1] = errors[0];
    }
    // Everything is made before the fork: another thread may hold the allocator's lock.
    const std::vector<char*> words = pointers(argv);
    const std::vector<std::string> texts = variablesWith(environment);
    const std::vector<char*> variables = pointers(texts);
    m_pid = fork();
    if (m_pid == 0) {
        if (input == Input::Terminal) {
            setsid();
            inputs[0] = outputs[1] = errors[1] = open(terminal.c_str(), O_RDWR | O_CLOEXEC);
            ioctl(outputs[1], TIOCSCTTY, 0);
        }
        if (input == Input::Empty) inputs[0] = open("/dev/null", O_RDONLY);
        if (input == Input::Pipe) prctl(PR_SET_PDEATHSIG, SIGKILL);
        dup2(inputs[0], 0);
        dup2(outputs[1], 1);
        if (errors[1] >= 0) dup2(errors[1], 2);
        // A caller in a shell's background ignores these.
        signal(SIGINT, SIG_DFL);
        signal(SIGQUIT, SIG_DFL);
        execvpe(words[0], words.data(), variables.data());
        _exit(127);
    }
    for (const int end : {inputs[0], outputs[1], errors[1]}) {
        if (end >= 0) close(end);
    }
}

Subprocess::~Subprocess() {
    if (m_pid > 0) {
        kill(m_pid, SIGKILL);
        waitpid(m_pid, nullptr, 0);
    }
    for (const int end : {m_input, m_ends[0], m_ends[1]}) {
        if (end >= 0) close(end);
    }
}

bool Subprocess::readSome() {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    const long left = (m_deadline.tv_sec - now.tv_sec) * 1000;
    pollfd sources[2] = {{m_ends[0], POLLIN, 0}, {m_ends[1], POLLIN, 0}};
    if ((m_ends[0] < 0 && m_ends[1] < 0) || left <= 0) return false;
    if (poll(sources, 2, static_cast<int>(left)) <= 0) return false;
    for (int i = 0; i < 2; ++i) {
        if (m_ends[i] < 0 || !sources[i].revents) continue;
        char bytes[4096];
        const ssize_t count = read(m_ends[i], bytes, sizeof bytes);
        if (count > 0) {
            m_texts[i].append(bytes, static_cast<size_t>(count));
        } else {  // a terminal without users gives an error instead of an end
            close(m_ends[i]);
            m_ends[i] = -1;
        }
    }
    return true;
}

bool Subprocess::waitForOutput(const std::string& text) {
    while (m_texts[0].find(text) == std::string::npos) {
        if (!readSome()) return false;
    }
    return true;
}

bool Subprocess::waitForNext(const std::string& text) {
    size_t found = 0;
    while ((found = m_texts[0].find(text, m_seen)) == std::string::npos) {
        if (!readSome()) return false;
    }
    m_seen = found + text.size();
    return true;
}

void Subprocess::type(const std::string& keys) {
    if (write(m_input >= 0 ? m_input : m_ends[0], keys.data(), keys.size()) < 0) return;
}

Finished Subprocess::finish() {
    Finished finished;
    while (readSome()) {
    }
    finished.out = m_texts[0];
    finished.err = m_texts[1];
    if (m_pid < 0 || m_ends[0] >= 0 || m_ends[1] >= 0) return finished;
    int status = 0;
    if (waitpid(m_pid, &status, 0) == m_pid) {
        finished.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    m_pid = -1;
    return finished;
}

Finished runProgram(const std::vector<std::string>& argv,
                    const Subprocess::Environment& environment, int patience) {
    return Subprocess(argv, environment, Subprocess::Input::Empty, patience).finish();
}

std::vector<std::string> processesWith(const std::string& text) {
    std::vector<std::string> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        if (name == std::to_string(getpid())) continue;
        std::ifstream file(entry.path() / "cmdline", std::ios::binary);
        std::string line((std::istreambuf_iterator<char>(file)), std::istreambuf_iterator<char>());
        std::replace(line.begin(), line.end(), '\0', ' ');
        if (line.find(text) != std::string::npos) found.push_back(line);
    }
    return found;
}

}  // namespace end_to_end

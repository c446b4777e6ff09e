// A program started by a test: its output, its end, its terminal.

#include "tests/support/subprocess.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace end_to_end {

using std::chrono::steady_clock;

Subprocess::Subprocess(const std::vector<std::string>& argv, const Environment& environment,
                       Input input, int patience)
    : m_deadline(steady_clock::now() + std::chrono::seconds(patience)) {
    // Everything is made before the fork: another thread may hold the allocator's lock.
    std::vector<std::string> words = argv;
    if (!environment.empty()) words.insert(words.begin(), "env");
    for (const auto& [name, value] : environment) {
        words.insert(words.begin() + 1, name + "=" + value);
    }
    std::vector<char*> pointers;
    for (std::string& word : words) pointers.push_back(word.data());
    pointers.push_back(nullptr);

    int inputs[2] = {-1, -1};
    int outputs[2] = {-1, -1};
    int errors[2] = {-1, -1};
    if (input == Input::kTerminal) {
        m_pid = forkpty(&m_ends[0], nullptr, nullptr, nullptr);
        if (m_pid > 0) fcntl(m_ends[0], F_SETFD, FD_CLOEXEC);
    } else {
        int* const third = input == Input::kPipe ? inputs : errors;
        if (pipe2(outputs, O_CLOEXEC) != 0 || pipe2(third, O_CLOEXEC) != 0) return;
        m_input = inputs[1];
        m_ends[0] = outputs[0];
        m_ends[1] = errors[0];
        m_pid = fork();
    }
    if (m_pid == 0) {
        if (input == Input::kEmpty) inputs[0] = open("/dev/null", O_RDONLY);
        if (input == Input::kPipe) prctl(PR_SET_PDEATHSIG, SIGKILL);
        if (inputs[0] >= 0) dup2(inputs[0], 0);
        if (outputs[1] >= 0) dup2(outputs[1], 1);
        if (errors[1] >= 0) dup2(errors[1], 2);
        // A caller in a shell's background ignores these.
        signal(SIGINT, SIG_DFL);
        signal(SIGQUIT, SIG_DFL);
        execvp(pointers[0], pointers.data());
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

bool Subprocess::ReadSome() {
    if (m_ends[0] < 0 && m_ends[1] < 0) return false;
    const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(m_deadline - steady_clock::now()).count();
    pollfd sources[2] = {{m_ends[0], POLLIN, 0}, {m_ends[1], POLLIN, 0}};
    if (left <= 0 || poll(sources, 2, static_cast<int>(left)) <= 0) return false;
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

bool Subprocess::WaitForNext(const std::string& text) {
    size_t found = 0;
    while ((found = m_texts[0].find(text, m_seen)) == std::string::npos) {
        if (!ReadSome()) return false;
    }
    m_seen = found + text.size();
    return true;
}

void Subprocess::Type(const std::string& keys) {
    if (write(m_input >= 0 ? m_input : m_ends[0], keys.data(), keys.size()) < 0) return;
}

bool Subprocess::Converse(std::initializer_list<std::pair<std::string, std::string>> lines) {
    for (const auto& [typed, shown] : lines) {
        Type(typed);
        if (!WaitForNext(shown)) return false;
    }
    return true;
}

Finished Subprocess::Finish() {
    while (ReadSome()) {
    }
    Finished finished{-1, m_texts[0], m_texts[1]};
    if (m_pid < 0 || m_ends[0] >= 0 || m_ends[1] >= 0) return finished;
    int status = 0;
    if (waitpid(m_pid, &status, 0) == m_pid) {
        finished.status = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
    }
    m_pid = -1;
    return finished;
}

Finished RunProgram(const std::vector<std::string>& argv,
                    const Subprocess::Environment& environment, int patience) {
    return Subprocess(argv, environment, Subprocess::Input::kEmpty, patience).Finish();
}

std::vector<std::string> ProcessesWith(const std::string& text) {
    std::vector<std::string> found;
    std::error_code error;
    for (const auto& entry : std::filesystem::directory_iterator("/proc", error)) {
        const std::string name = entry.path().filename();
        if (name.find_first_not_of("0123456789") != std::string::npos) continue;
        if (name == std::to_string(getpid())) continue;
        std::ifstream file(entry.path() / "cmdline", std::ios::binary);
        std::string line{std::istreambuf_iterator<char>(file), {}};
        std::replace(line.begin(), line.end(), '\0', ' ');
        if (line.find(text) != std::string::npos) found.push_back(line);
    }
    return found;
}

}  // namespace end_to_end

// A program started by a test: its output, its end, its terminal.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <initializer_list>
#include <string>
#include <utility>
#include <vector>

namespace end_to_end {

// How long a test waits for anything, in seconds, unless it says otherwise. It only decides how
// soon a fault is reported.
constexpr int kPatience = 50;

struct Finished {
    int status = -1;  // as a shell says it: exit status, or 128 + n for signal n; -1: timed out
    std::string out;  // everything on standard output and standard error
    std::string err;
};

class Subprocess {
  public:
    using Environment = std::vector<std::pair<std::string, std::string>>;
    enum class Input { kEmpty, kPipe, kTerminal };

    // Starts the program; argv[0] is looked for in PATH. With a terminal, all three of its
    // standard descriptors are that terminal, it leads the session, and `out` is the screen. With
    // a pipe, it ends with this thread, and its standard error is this process's.
    explicit Subprocess(const std::vector<std::string>& argv, const Environment& environment = {},
                        Input input = Input::kEmpty, int patience = kPatience);
    ~Subprocess();  // kills the program if it still runs
    Subprocess(const Subprocess&) = delete;
    Subprocess& operator=(const Subprocess&) = delete;

    pid_t Pid() const { return m_pid; }

    // Reads on until standard output holds the text after what the last call found; false when it
    // ends first or time is over.
    bool WaitForNext(const std::string& text);

    // Types at the terminal, or writes into the pipe.
    void Type(const std::string& keys);

    // For each pair, types the first text and waits for the second one as above.
    bool Converse(std::initializer_list<std::pair<std::string, std::string>> lines);

    // Waits until the program has ended and no process holds its output open any more, which
    // includes processes that it left behind. Status -1 when that takes too long.
    Finished Finish();

  private:
    bool ReadSome();  // false when both ends are closed or time is over

    const std::chrono::steady_clock::time_point m_deadline;
    pid_t m_pid = -1;
    int m_input = -1;          // the pipe's end
    int m_ends[2] = {-1, -1};  // standard output (or the terminal) and standard error
    std::string m_texts[2];
    size_t m_seen = 0;  // of standard output, by WaitForNext()
};

// Starts and finishes.
Finished RunProgram(const std::vector<std::string>& argv,
                    const Subprocess::Environment& environment = {}, int patience = kPatience);

// Command lines of running processes that contain the text; the asking process is left out.
std::vector<std::string> ProcessesWith(const std::string& text);

}  // namespace end_to_end

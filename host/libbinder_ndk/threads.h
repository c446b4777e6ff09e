// The library's own threads.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace hostbinder {

using Work = std::function<void()>;

// Runs body on a detached thread with all signals blocked, so that handlers run on the program's
// own threads. name: at most 15 characters. False (with a log line) if there is no thread left.
bool StartThread(const char* name, Work body);

// A thread that does, in order, what a connection's reader must not do itself because it may block.
class Courier {
  public:
    // Both live as long as the process.
    static Courier& Releases();  // of references, which may run any code of the program
    static Courier& Frames();    // to be sent to a peer that may not read

    void Post(Work errand);

  private:
    explicit Courier(const char* name) : m_name(name) {}
    [[noreturn]] void Run();

    const char* const m_name;
    std::mutex m_mutex;  // guards what follows
    std::condition_variable m_posted;
    std::deque<Work> m_errands;
    bool m_running = false;
};

}  // namespace hostbinder

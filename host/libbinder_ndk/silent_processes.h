// Processes that left a question of this library unanswered while a thread of the pool waited.
#pragma once

#include <sys/types.h>

#include <chrono>
#include <mutex>
#include <unordered_map>

namespace hostbinder {

// Whoever lets one thread wait until its time is over lets no further one wait, or the whole pool
// would soon do nothing else. Threads that serve no call, as a client's own, wait for whom they
// like.
class SilentProcesses {
  public:
    // Lives as long as the process.
    static SilentProcesses& instance();

    // The current thread's wait for an answer of that process was in vain.
    void add(pid_t process);
    // Whether the current thread, since it serves a call, must not wait for that process: for a
    // minute after it was silent.
    bool mustNotWaitFor(pid_t process);

  private:
    using Clock = std::chrono::steady_clock;

    std::mutex mMutex;  // guards mUntil
    std::unordered_map<pid_t, Clock::time_point> mUntil;
};

}  // namespace hostbinder

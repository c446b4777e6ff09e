// A thread that does, in order, what a connection's reader must not do itself because it may block.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>

namespace hostbinder {

class Courier {
  public:
    // References to be released: that may run any code of the program. Lives as long as the
    // process.
    static Courier& releases();

    void post(std::function<void()> errand);

  private:
    explicit Courier(const char* name) : mName(name) {}
    void run();

    const char* const mName;
    std::mutex mMutex;  // guards what follows
    std::condition_variable mPosted;
    std::deque<std::function<void()>> mErrands;
    bool mRunning = false;
};

}  // namespace hostbinder

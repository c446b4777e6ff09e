// The threads that serve incoming calls, and the queue in front of them.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>

#include "work.h"

namespace hostbinder {

// Work queues until a thread serves. One thread runs from start() on; more start when work waits
// and no thread is idle, up to the maximum. join() makes the calling thread one more.
class ThreadPool {
  public:
    // Lives as long as the process.
    static ThreadPool& instance();

    void submit(std::unique_ptr<Work> work);
    void start();
    bool isStarted();
    // False if threads beyond `count` may be running already.
    bool setMaxThreads(uint32_t count);
    [[noreturn]] void join();

    // Serves what waits now, on the calling thread.
    void runQueued();

  private:
    ThreadPool() = default;
    [[noreturn]] void serve();
    bool startThreadLocked();
    void growLocked();

    std::mutex mMutex;  // guards everything
    std::condition_variable mWorkWaits;
    std::deque<std::unique_ptr<Work>> mQueue;
    bool mStarted = false;
    uint32_t mMaxThreads = 15;
    uint32_t mExtraThreads = 0;  // started on demand, idle or not
    uint32_t mServing = 0;       // threads in serve()
    uint32_t mIdle = 0;          // of them, waiting for work
};

}  // namespace hostbinder

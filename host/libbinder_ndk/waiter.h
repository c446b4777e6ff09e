// A thread that waits for the reply to its call, and meanwhile serves calls that its own call
// caused: when the callee (or a process further on) calls back, the waiting thread runs it.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>
#include <unordered_map>
#include <vector>

#include "message.h"
#include "work.h"

namespace hostbinder {

class Waiter {
  public:
    // The reply is here; ends the wait.
    void deliver(IncomingMessage reply);
    // False if the wait is over; then the work is still the caller's.
    bool offer(std::unique_ptr<Work>* work);
    // Serves offered work until the reply is here: as long as the callee takes, since the end of
    // its process ends the wait, too. With a limit, false once so many milliseconds are over.
    bool wait(std::optional<int> milliseconds, IncomingMessage* reply);

    // Hands work that came too late for this thread to the pool.
    void passOnLeftWork();

  private:
    std::mutex mMutex;  // guards everything
    std::condition_variable mChanged;
    bool mDone = false;
    IncomingMessage mReply;
    std::deque<std::unique_ptr<Work>> mWork;
};

// Registers a waiter under a call chain for the lifetime of the object.
class ScopedChainWaiter {
  public:
    ScopedChainWaiter(uint64_t chain, std::shared_ptr<Waiter> waiter);
    ~ScopedChainWaiter();
    ScopedChainWaiter(const ScopedChainWaiter&) = delete;
    ScopedChainWaiter& operator=(const ScopedChainWaiter&) = delete;

  private:
    const uint64_t mChain;
    const std::shared_ptr<Waiter> mWaiter;
};

// Gives work to the innermost thread of this process that waits in the chain. False if none does.
bool offerToChain(uint64_t chain, std::unique_ptr<Work>* work);

}  // namespace hostbinder

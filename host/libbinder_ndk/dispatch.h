// Which thread serves a call: one that waits for its own call in the same chain, or one of the
// pool; and which call a thread serves.
#pragma once

#include <sys/types.h>

#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <optional>

#include "message.h"
#include "threads.h"

namespace hostbinder {

// The threads that serve incoming calls, and the queue in front of them. Work queues until a thread
// serves. One thread runs from Start() on; more start when work waits and no thread is idle, up to
// the maximum. Join() makes the calling thread one more.
class ThreadPool {
  public:
    // Lives as long as the process.
    static ThreadPool& Instance();

    void Submit(Work work);
    void Start();
    bool IsStarted();
    // False if threads beyond `count` may be running already.
    bool SetMaxThreads(uint32_t count);
    [[noreturn]] void Join();

  private:
    ThreadPool() = default;
    [[noreturn]] void Serve();
    bool StartThreadLocked();
    void GrowLocked();

    std::mutex m_mutex;  // guards everything
    std::condition_variable m_workWaits;
    std::deque<Work> m_queue;
    bool m_started = false;
    uint32_t m_maxThreads = 15;
    uint32_t m_extraThreads = 0;  // started on demand, idle or not
    uint32_t m_serving = 0;       // threads in Serve()
    uint32_t m_idle = 0;          // of them, waiting for work
};

// A thread that waits for the reply to its call, and meanwhile serves calls that its own call
// caused: when the callee (or a process further on) calls back, the waiting thread runs it.
class Waiter {
  public:
    // The reply is here; ends the wait.
    void Deliver(IncomingMessage reply);
    // False if the wait is over; then the work is still the caller's.
    bool Offer(Work* work);
    // Serves offered work until the reply is here: as long as the callee takes, since the end of
    // its process ends the wait, too. With a limit, false once that many milliseconds are over.
    bool Wait(std::optional<int> milliseconds, IncomingMessage* reply);
    // Hands work that came too late for this thread to the pool.
    void PassOnLeftWork();

  private:
    std::mutex m_mutex;  // guards everything
    std::condition_variable m_changed;
    bool m_done = false;
    IncomingMessage m_reply;
    std::deque<Work> m_work;
};

// A number for a new chain of calls; no other process of the device has the same.
uint64_t NewChain();

// Between the two, the waiter is the innermost one of the chain.
void EnterChain(uint64_t chain, const std::shared_ptr<Waiter>& waiter);
void LeaveChain(uint64_t chain, Waiter* waiter);

// Runs a call on the innermost thread of this process that waits in the chain, else on the pool.
// Chain 0: none.
void Dispatch(uint64_t chain, Work work);

// The incoming call, if any, that a thread serves.
struct CallContext {
    bool handling = false;
    uid_t uid = 0;
    pid_t pid = 0;
    uint64_t chain = 0;  // 0: none (no call, or a oneway call)
    int nesting = 0;     // incoming calls on the thread, this one included
};

// The current thread's.
CallContext& TheCallContext();

}  // namespace hostbinder

// The one thread of a session: requests run one after the other, in the order they came.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "request.h"

namespace offlinecamera {

// Tells running work that its session has ended.
class StopSignal {
  public:
    virtual bool Stopped() const = 0;

    // Waits unless or until stopped, and returns whether stopped.
    virtual bool WaitFor(std::chrono::milliseconds time) const = 0;

  protected:
    ~StopSignal() = default;
};

class SessionWorker {
  public:
    using Work = std::function<void(const Request& request, const StopSignal& stop)>;

    // Starts the thread. `work` runs on it and is destroyed with it.
    explicit SessionWorker(Work work);

    // Stops without waiting.
    ~SessionWorker() { Stop(std::chrono::milliseconds(0)); }
    SessionWorker(const SessionWorker&) = delete;
    SessionWorker& operator=(const SessionWorker&) = delete;

    // Appends requests; after Stop they are dropped.
    void Enqueue(std::vector<Request> requests);

    // Drops the requests that wait.
    void Drop();

    // Frame numbers of what is waiting or running.
    std::vector<int32_t> FramesInFlight() const;

    // Returns when nothing waits or runs, and after `limit` at the latest.
    void WaitUntilIdle(std::chrono::milliseconds limit) const;

    // Drops what waits, tells what runs to stop, and waits for the thread to end; not for longer
    // than `limit`, and not at all on that thread, which then ends by itself. Returns whether its
    // work has ended.
    bool Stop(std::chrono::milliseconds limit);

  private:
    struct State;
    const std::shared_ptr<State> m_state;
};

}  // namespace offlinecamera

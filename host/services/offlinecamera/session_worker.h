// The one thread of a session: requests run one after the other, in the order they came.
#pragma once

#include <pthread.h>

#include <chrono>
#include <functional>
#include <memory>
#include <vector>

#include "request.h"

namespace offlinecamera {

/** Tells running work that its session has ended. */
class StopSignal {
  public:
    virtual bool Stopped() const = 0;

    /** Waits unless or until stopped. @return whether stopped */
    virtual bool WaitFor(std::chrono::milliseconds time) const = 0;

  protected:
    ~StopSignal() = default;
};

class SessionWorker {
  public:
    using Work = std::function<void(Request& request, const StopSignal& stop)>;

    /** Starts the thread. `work` runs on it and is destroyed with it. Without a thread, which the
     * system may refuse, the worker is stopped from the beginning. */
    explicit SessionWorker(Work work);

    bool Started() const { return mStarted; }

    /** Stops without waiting. */
    ~SessionWorker();

    SessionWorker(const SessionWorker&) = delete;
    SessionWorker& operator=(const SessionWorker&) = delete;

    /** Appends requests; after Stop they are dropped. */
    void Enqueue(std::vector<Request> requests);

    /** Frame numbers of what is waiting or running. */
    std::vector<int32_t> FramesInFlight() const;

    /** @return whether nothing waited or ran within `limit` */
    bool WaitUntilIdle(std::chrono::milliseconds limit) const;

    /**
     * Drops what waits, tells what runs to stop, and waits for the thread to end; not for longer
     * than `limit`, and not at all on the worker's own thread. A thread that is not waited for ends
     * by itself.
     *
     * @return whether the thread has ended
     */
    bool Stop(std::chrono::milliseconds limit);

  private:
    struct State;
    struct Start;
    static void* RunThread(void* start);
    static void Run(const std::shared_ptr<State>& state, const Work& work);

    const std::shared_ptr<State> mState;
    pthread_t mThread{};
    bool mStarted = false;
    bool mOurs = false;  // neither joined nor detached yet
};

}  // namespace offlinecamera

// A queue of requests and the thread that works on them.
#include "session_worker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

namespace offlinecamera {

/** Shared with the thread, which may outlive the worker. */
struct SessionWorker::State final : StopSignal {
    mutable std::mutex lock;
    mutable std::condition_variable changed;
    std::deque<Request> queue;
    std::vector<int32_t> running;  // no or one frame number
    bool stopping = false;
    bool ended = false;

    bool Stopped() const override {
        std::lock_guard<std::mutex> guard(lock);
        return stopping;
    }

    bool WaitFor(std::chrono::milliseconds time) const override {
        std::unique_lock<std::mutex> guard(lock);
        return changed.wait_for(guard, time, [this] { return stopping; });
    }
};

struct SessionWorker::Start {
    std::shared_ptr<State> state;
    Work work;
};

// A std::thread would end the service where the system has no further thread.
SessionWorker::SessionWorker(Work work) : mState(std::make_shared<State>()) {
    auto start = std::make_unique<Start>(Start{mState, std::move(work)});
    mStarted = mOurs = pthread_create(&mThread, nullptr, RunThread, start.get()) == 0;
    if (mStarted) {
        (void)start.release();  // the thread's now
    } else {
        mState->stopping = mState->ended = true;
    }
}

void* SessionWorker::RunThread(void* argument) {
    std::unique_ptr<Start> start(static_cast<Start*>(argument));
    const std::shared_ptr<State> state = start->state;
    Run(state, start->work);
    start = nullptr;  // what the work holds is gone before the end is told
    std::lock_guard<std::mutex> guard(state->lock);
    state->ended = true;
    state->changed.notify_all();
    return nullptr;
}

SessionWorker::~SessionWorker() {
    Stop(std::chrono::milliseconds(0));
}

void SessionWorker::Run(const std::shared_ptr<State>& state, const Work& work) {
    std::unique_lock<std::mutex> guard(state->lock);
    for (;;) {
        state->changed.wait(guard, [&] { return state->stopping || !state->queue.empty(); });
        if (state->stopping) return;
        {
            Request request = std::move(state->queue.front());
            state->queue.pop_front();
            state->running = {request.frameNumber};
            guard.unlock();
            work(request, *state);
        }
        guard.lock();
        state->running.clear();
        state->changed.notify_all();
    }
}

void SessionWorker::Enqueue(std::vector<Request> requests) {
    std::lock_guard<std::mutex> guard(mState->lock);
    if (mState->stopping) return;
    for (Request& request : requests) mState->queue.push_back(std::move(request));
    mState->changed.notify_all();
}

std::vector<int32_t> SessionWorker::FramesInFlight() const {
    std::lock_guard<std::mutex> guard(mState->lock);
    std::vector<int32_t> frames = mState->running;
    for (const Request& request : mState->queue) frames.push_back(request.frameNumber);
    return frames;
}

bool SessionWorker::WaitUntilIdle(std::chrono::milliseconds limit) const {
    std::unique_lock<std::mutex> guard(mState->lock);
    return mState->changed.wait_for(
            guard, limit, [this] { return mState->queue.empty() && mState->running.empty(); });
}

bool SessionWorker::Stop(std::chrono::milliseconds limit) {
    std::deque<Request> dropped;  // released outside the lock
    bool ended;
    {
        std::unique_lock<std::mutex> guard(mState->lock);
        mState->stopping = true;
        dropped.swap(mState->queue);
        mState->changed.notify_all();
        if (!std::exchange(mOurs, false)) return mState->ended;
        const bool own = pthread_equal(pthread_self(), mThread) != 0;
        ended = !own && mState->changed.wait_for(guard, limit, [this] { return mState->ended; });
    }
    if (ended) {
        pthread_join(mThread, nullptr);
    } else {
        pthread_detach(mThread);
    }
    return ended;
}

}  // namespace offlinecamera

// A queue of requests and the thread that works on them.
#include "session_worker.h"

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace offlinecamera {

// Shared with the thread, which may outlive the worker.
struct SessionWorker::State final : StopSignal {
    mutable std::mutex lock;  // guards what follows
    mutable std::condition_variable changed;
    std::deque<Request> queue;
    std::vector<int32_t> running;  // no or one frame number
    bool stopping = false;
    bool ended = false;
    std::thread::id thread;

    bool Stopped() const override {
        std::lock_guard<std::mutex> guard(lock);
        return stopping;
    }

    bool WaitFor(std::chrono::milliseconds time) const override {
        std::unique_lock<std::mutex> guard(lock);
        return changed.wait_for(guard, time, [this] { return stopping; });
    }

    void Run(const Work& work) {
        std::unique_lock<std::mutex> guard(lock);
        thread = std::this_thread::get_id();
        for (;;) {
            changed.wait(guard, [&] { return stopping || !queue.empty(); });
            if (stopping) return;
            {
                const Request request = std::move(queue.front());
                queue.pop_front();
                running = {request.frameNumber};
                guard.unlock();
                work(request, *this);
            }
            guard.lock();
            running.clear();
            changed.notify_all();
        }
    }
};

SessionWorker::SessionWorker(Work work) : m_state(std::make_shared<State>()) {
    std::thread([state = m_state, work = std::move(work)]() mutable {
        state->Run(work);
        work = nullptr;  // what the work holds is gone before the end is told
        std::lock_guard<std::mutex> guard(state->lock);
        state->ended = true;
        state->changed.notify_all();
    }).detach();
}

void SessionWorker::Enqueue(std::vector<Request> requests) {
    std::lock_guard<std::mutex> guard(m_state->lock);
    if (m_state->stopping) return;
    for (Request& request : requests) m_state->queue.push_back(std::move(request));
    m_state->changed.notify_all();
}

void SessionWorker::Drop() {
    std::deque<Request> dropped;  // released outside the lock
    std::lock_guard<std::mutex> guard(m_state->lock);
    dropped.swap(m_state->queue);
}

std::vector<int32_t> SessionWorker::FramesInFlight() const {
    std::lock_guard<std::mutex> guard(m_state->lock);
    std::vector<int32_t> frames = m_state->running;
    for (const Request& request : m_state->queue) frames.push_back(request.frameNumber);
    return frames;
}

void SessionWorker::WaitUntilIdle(std::chrono::milliseconds limit) const {
    std::unique_lock<std::mutex> guard(m_state->lock);
    m_state->changed.wait_for(
            guard, limit, [this] { return m_state->queue.empty() && m_state->running.empty(); });
}

bool SessionWorker::Stop(std::chrono::milliseconds limit) {
    std::deque<Request> dropped;  // released outside the lock
    std::unique_lock<std::mutex> guard(m_state->lock);
    m_state->stopping = true;
    dropped.swap(m_state->queue);
    m_state->changed.notify_all();
    if (!m_state->ended && m_state->thread == std::this_thread::get_id()) return false;
    return m_state->changed.wait_for(guard, limit, [this] { return m_state->ended; });
}

}  // namespace offlinecamera

// Threads for work that would block a connection's reader.
#include "courier.h"

#include <utility>

#include "threads.h"

namespace hostbinder {

Courier& Courier::releases() {
    static Courier* const courier = new Courier("binder-release");
    return *courier;
}

void Courier::post(std::function<void()> errand) {
    std::lock_guard<std::mutex> lock(mMutex);
    mErrands.push_back(std::move(errand));
    if (!mRunning) mRunning = startThread(mName, [this]() { run(); });
    mPosted.notify_one();
}

void Courier::run() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (true) {
        mPosted.wait(lock, [this]() { return !mErrands.empty(); });
        std::function<void()> errand = std::move(mErrands.front());
        mErrands.pop_front();
        lock.unlock();
        errand();
        errand = nullptr;
        lock.lock();
    }
}

}  // namespace hostbinder

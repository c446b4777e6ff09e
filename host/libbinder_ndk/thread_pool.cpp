// The pool of threads that serve incoming calls.
#include "thread_pool.h"

#include <utility>

#include "threads.h"

namespace hostbinder {

ThreadPool& ThreadPool::instance() {
    static ThreadPool* const pool = new ThreadPool;
    return *pool;
}

void ThreadPool::submit(std::unique_ptr<Work> work) {
    std::unique_lock<std::mutex> lock(mMutex);
    mQueue.push_back(std::move(work));
    growLocked();
    lock.unlock();
    mWorkWaits.notify_one();  // outside: the woken thread needs the lock
}

void ThreadPool::growLocked() {
    // Without a serving thread nobody asked for calls to be served yet.
    if (mServing == 0) {
        if (mStarted) startThreadLocked();  // start() had none
    } else if (mQueue.size() > mIdle && mExtraThreads < mMaxThreads && startThreadLocked()) {
        ++mExtraThreads;
    }
}

// False if the system has none now; the next work tries again.
bool ThreadPool::startThreadLocked() {
    ++mServing;
    if (startThread("binder", [this]() { serve(); })) return true;
    --mServing;
    return false;
}

void ThreadPool::start() {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mStarted) return;
    mStarted = true;
    startThreadLocked();
}

bool ThreadPool::isStarted() {
    std::lock_guard<std::mutex> lock(mMutex);
    return mStarted;
}

bool ThreadPool::setMaxThreads(uint32_t count) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mStarted && count < mMaxThreads) return false;
    mMaxThreads = count;
    return true;
}

void ThreadPool::join() {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        ++mServing;
    }
    serve();
}

void ThreadPool::serve() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (true) {
        ++mIdle;
        // Unbounded on purpose: a served process is idle between calls.
        mWorkWaits.wait(lock, [this]() { return !mQueue.empty(); });
        --mIdle;
        std::unique_ptr<Work> work = std::move(mQueue.front());
        mQueue.pop_front();
        if (!mQueue.empty()) growLocked();
        lock.unlock();
        work->run();
        work.reset();
        lock.lock();
    }
}

void ThreadPool::runQueued() {
    std::unique_lock<std::mutex> lock(mMutex);
    while (!mQueue.empty()) {
        std::unique_ptr<Work> work = std::move(mQueue.front());
        mQueue.pop_front();
        lock.unlock();
        work->run();
        work.reset();
        lock.lock();
    }
}

}  // namespace hostbinder

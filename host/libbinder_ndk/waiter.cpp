// Waiting for replies, and finding the thread that waits in a call chain.
#include "waiter.h"

#include <chrono>
#include <utility>

#include "thread_pool.h"

namespace hostbinder {

void Waiter::deliver(IncomingMessage reply) {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        mReply = std::move(reply);
        mDone = true;
    }
    mChanged.notify_all();  // outside: the woken thread needs the lock
}

bool Waiter::offer(std::unique_ptr<Work>* work) {
    std::lock_guard<std::mutex> lock(mMutex);
    if (mDone) return false;
    mWork.push_back(std::move(*work));
    mChanged.notify_all();
    return true;
}

bool Waiter::wait(std::optional<int> milliseconds, IncomingMessage* reply) {
    const auto limit =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds.value_or(0));
    const auto ready = [this]() { return mDone || !mWork.empty(); };
    std::unique_lock<std::mutex> lock(mMutex);
    while (true) {
        if (!milliseconds) {
            mChanged.wait(lock, ready);
        } else if (!mChanged.wait_until(lock, limit, ready)) {
            return false;
        }
        if (mDone) break;
        // Work that never ends does not make the wait longer.
        if (milliseconds && std::chrono::steady_clock::now() > limit) return false;
        std::unique_ptr<Work> work = std::move(mWork.front());
        mWork.pop_front();
        lock.unlock();
        work->run();
        work.reset();
        lock.lock();
    }
    *reply = std::move(mReply);
    return true;
}

void Waiter::passOnLeftWork() {
    std::lock_guard<std::mutex> lock(mMutex);
    for (std::unique_ptr<Work>& work : mWork) ThreadPool::instance().submit(std::move(work));
    mWork.clear();
}

namespace {

struct ChainTable {
    std::mutex mutex;
    // Innermost waiter last.
    std::unordered_map<uint64_t, std::vector<std::shared_ptr<Waiter>>> chains;
};

ChainTable& chainTable() {
    static ChainTable* const table = new ChainTable;
    return *table;
}

}  // namespace

ScopedChainWaiter::ScopedChainWaiter(uint64_t chain, std::shared_ptr<Waiter> waiter)
    : mChain(chain), mWaiter(std::move(waiter)) {
    ChainTable& table = chainTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    table.chains[mChain].push_back(mWaiter);
}

ScopedChainWaiter::~ScopedChainWaiter() {
    ChainTable& table = chainTable();
    {
        std::lock_guard<std::mutex> lock(table.mutex);
        auto entry = table.chains.find(mChain);
        entry->second.pop_back();  // a chain has one running thread, so ends are in order
        if (entry->second.empty()) table.chains.erase(entry);
    }
    mWaiter->passOnLeftWork();
}

bool offerToChain(uint64_t chain, std::unique_ptr<Work>* work) {
    ChainTable& table = chainTable();
    std::lock_guard<std::mutex> lock(table.mutex);
    auto entry = table.chains.find(chain);
    return entry != table.chains.end() && entry->second.back()->offer(work);
}

}  // namespace hostbinder

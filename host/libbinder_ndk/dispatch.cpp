// The pool of threads, and the threads that wait in chains of calls.
#include "dispatch.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <unordered_map>
#include <utility>
#include <vector>

namespace hostbinder {

CallContext& TheCallContext() {
    static thread_local CallContext context;
    return context;
}

ThreadPool& ThreadPool::Instance() {
    static ThreadPool* const pool = new ThreadPool;
    return *pool;
}

void ThreadPool::Submit(Work work) {
    std::unique_lock<std::mutex> lock(m_mutex);
    m_queue.push_back(std::move(work));
    GrowLocked();
    lock.unlock();
    m_workWaits.notify_one();  // outside: the woken thread needs the lock
}

void ThreadPool::GrowLocked() {
    if (m_serving == 0) {  // no call is to be served yet, or Start() had no thread
        if (m_started) StartThreadLocked();
    } else if (m_queue.size() > m_idle && m_extraThreads < m_maxThreads && StartThreadLocked()) {
        ++m_extraThreads;
    }
}

// False if the system has none now; the next work tries again.
bool ThreadPool::StartThreadLocked() {
    ++m_serving;
    if (StartThread("binder", [this]() { Serve(); })) return true;
    --m_serving;
    return false;
}

void ThreadPool::Start() {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_started) return;
    m_started = true;
    StartThreadLocked();
}

bool ThreadPool::IsStarted() {
    std::lock_guard<std::mutex> lock(m_mutex);
    return m_started;
}

bool ThreadPool::SetMaxThreads(uint32_t count) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_started && count < m_maxThreads) return false;
    m_maxThreads = count;
    return true;
}

void ThreadPool::Join() {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        ++m_serving;
    }
    Serve();
}

void ThreadPool::Serve() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        ++m_idle;
        // Unbounded on purpose: a served process is idle between calls.
        m_workWaits.wait(lock, [this]() { return !m_queue.empty(); });
        --m_idle;
        Work work = std::move(m_queue.front());
        m_queue.pop_front();
        if (!m_queue.empty()) GrowLocked();
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
}

void Waiter::Deliver(IncomingMessage reply) {
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_reply = std::move(reply);
        m_done = true;
    }
    m_changed.notify_all();  // outside: the woken thread needs the lock
}

bool Waiter::Offer(Work* work) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_done) return false;
    m_work.push_back(std::move(*work));
    m_changed.notify_all();
    return true;
}

bool Waiter::Wait(std::optional<int> milliseconds, IncomingMessage* reply) {
    const auto limit =
            std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds.value_or(0));
    const auto ready = [this]() { return m_done || !m_work.empty(); };
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        if (!milliseconds) {
            m_changed.wait(lock, ready);
        } else if (!m_changed.wait_until(lock, limit, ready)) {
            return false;
        }
        if (m_done) break;
        // Work that never ends does not make the wait longer.
        if (milliseconds && std::chrono::steady_clock::now() > limit) return false;
        Work work = std::move(m_work.front());
        m_work.pop_front();
        lock.unlock();
        work();
        work = nullptr;
        lock.lock();
    }
    *reply = std::move(m_reply);
    return true;
}

void Waiter::PassOnLeftWork() {
    std::lock_guard<std::mutex> lock(m_mutex);
    for (Work& work : m_work) ThreadPool::Instance().Submit(std::move(work));
    m_work.clear();
}

namespace {

struct ChainTable {
    std::mutex mutex;
    // Innermost waiter last.
    std::unordered_map<uint64_t, std::vector<std::shared_ptr<Waiter>>> chains;
};

ChainTable& TheChains() {
    static ChainTable* const table = new ChainTable;
    return *table;
}

}  // namespace

uint64_t NewChain() {
    static std::atomic<uint32_t> count{0};
    return static_cast<uint64_t>(getpid()) << 32 | ++count;
}

void EnterChain(uint64_t chain, const std::shared_ptr<Waiter>& waiter) {
    ChainTable& table = TheChains();
    std::lock_guard<std::mutex> lock(table.mutex);
    table.chains[chain].push_back(waiter);
}

void LeaveChain(uint64_t chain, Waiter* waiter) {
    ChainTable& table = TheChains();
    {
        std::lock_guard<std::mutex> lock(table.mutex);
        auto entry = table.chains.find(chain);
        entry->second.pop_back();  // a chain has one running thread, so ends are in order
        if (entry->second.empty()) table.chains.erase(entry);
    }
    waiter->PassOnLeftWork();
}

void Dispatch(uint64_t chain, Work work) {
    if (chain != 0) {
        ChainTable& table = TheChains();
        std::lock_guard<std::mutex> lock(table.mutex);
        auto entry = table.chains.find(chain);
        if (entry != table.chains.end() && entry->second.back()->Offer(&work)) return;
    }
    ThreadPool::Instance().Submit(std::move(work));
}

}  // namespace hostbinder

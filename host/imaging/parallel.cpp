// Threads for the time of one call. (Starting one costs some 20 microseconds, a frame thousands.)
#include "parallel.h"

#include <imaging/execution.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>
#include <thread>
#include <vector>

namespace imaging {

namespace {

struct Queue {
    const uint32_t count;
    const std::function<void(uint32_t, uint32_t)>& work;
    std::atomic<uint32_t> next{0};
    std::atomic<uint32_t> workers{0};
};

void* TakeAll(void* data) {
    Queue& queue = *static_cast<Queue*>(data);
    const uint32_t worker = queue.workers++;
    for (uint32_t i = queue.next++; i < queue.count; i = queue.next++) queue.work(i, worker);
    return nullptr;
}

}  // namespace

uint32_t DefaultThreads() {
    constexpr uint32_t kMost = 8;
    return std::clamp(std::thread::hardware_concurrency(), 1u, kMost);
}

void ParallelFor(uint32_t count, uint32_t threads,
                 const std::function<void(uint32_t index, uint32_t worker)>& work) {
    Queue queue{count, work};
    std::vector<pthread_t> others(std::max(std::min(threads, count), 1u) - 1);
    // pthread_create rather than std::thread: it reports a refusal without an exception.
    uint32_t started = 0;
    while (started < others.size() &&
           pthread_create(&others[started], nullptr, TakeAll, &queue) == 0) {
        ++started;
    }
    TakeAll(&queue);
    for (uint32_t i = 0; i < started; ++i) pthread_join(others[i], nullptr);
}

}  // namespace imaging

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
};

struct Worker {
    Queue* queue;
    uint32_t number;
    pthread_t thread;
};

void* TakeAll(void* data) {
    const auto* worker = static_cast<Worker*>(data);
    Queue& queue = *worker->queue;
    for (uint32_t i = queue.next++; i < queue.count; i = queue.next++) {
        queue.work(i, worker->number);
    }
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
    std::vector<Worker> others(std::max(std::min(threads, count), 1u) - 1);
    // pthread_create rather than std::thread: it reports a refusal without an exception.
    uint32_t started = 0;
    for (; started < others.size(); ++started) {
        others[started] = {&queue, started + 1, {}};
        if (pthread_create(&others[started].thread, nullptr, TakeAll, &others[started]) != 0) break;
    }
    Worker self = {&queue, 0, {}};
    TakeAll(&self);
    for (uint32_t i = 0; i < started; ++i) pthread_join(others[i].thread, nullptr);
}

}  // namespace imaging

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
    const std::function<void(uint32_t)>& work;
    std::atomic<uint32_t> next{0};
};

void* TakeAll(void* data) {
    auto* queue = static_cast<Queue*>(data);
    for (uint32_t i = queue->next++; i < queue->count; i = queue->next++) queue->work(i);
    return nullptr;
}

}  // namespace

uint32_t DefaultThreads() {
    constexpr uint32_t kMost = 8;
    return std::clamp(std::thread::hardware_concurrency(), 1u, kMost);
}

void ParallelFor(uint32_t count, uint32_t threads, const std::function<void(uint32_t)>& work) {
    Queue queue{count, work};
    // pthread_create rather than std::thread: it reports a refusal without an exception.
    std::vector<pthread_t> others;
    for (uint32_t i = 1; i < std::min(threads, count); ++i) {
        pthread_t thread;
        if (pthread_create(&thread, nullptr, TakeAll, &queue) != 0) break;
        others.push_back(thread);
    }
    TakeAll(&queue);
    for (pthread_t thread : others) pthread_join(thread, nullptr);
}

}  // namespace imaging

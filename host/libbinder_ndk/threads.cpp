// Starting detached threads, and errands on them.
#include "threads.h"

#include <pthread.h>
#include <signal.h>

#include <cstring>
#include <memory>
#include <utility>

#include "log.h"

namespace hostbinder {

bool StartThread(const char* name, Work body) {
    struct Start {
        const char* name;
        Work body;
    };
    auto start = std::make_unique<Start>(Start{name, std::move(body)});
    const auto run = [](void* argument) -> void* {
        const std::unique_ptr<Start> started(static_cast<Start*>(argument));
        pthread_setname_np(pthread_self(), started->name);
        started->body();
        return nullptr;
    };
    sigset_t all;
    sigset_t old;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &old);
    pthread_t thread;
    const int error = pthread_create(&thread, nullptr, run, start.get());
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    if (error != 0) {
        BINDER_LOGE("cannot start thread %s: %s", name, strerror(error));
        return false;
    }
    (void)start.release();  // the thread's now
    pthread_detach(thread);
    return true;
}

Courier& Courier::Releases() {
    static Courier* const courier = new Courier("binder-release");
    return *courier;
}

Courier& Courier::Frames() {
    static Courier* const courier = new Courier("binder-frames");
    return *courier;
}

void Courier::Post(Work errand) {
    std::lock_guard<std::mutex> lock(m_mutex);
    m_errands.push_back(std::move(errand));
    if (!m_running) m_running = StartThread(m_name, [this]() { Run(); });
    m_posted.notify_one();
}

void Courier::Run() {
    std::unique_lock<std::mutex> lock(m_mutex);
    while (true) {
        m_posted.wait(lock, [this]() { return !m_errands.empty(); });
        Work errand = std::move(m_errands.front());
        m_errands.pop_front();
        lock.unlock();
        errand();
        errand = nullptr;
        lock.lock();
    }
}

}  // namespace hostbinder

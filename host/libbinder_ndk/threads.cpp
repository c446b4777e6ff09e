// Starting detached threads.
#include "threads.h"

#include <pthread.h>
#include <signal.h>

#include <cstring>
#include <memory>
#include <utility>

#include "log.h"

namespace hostbinder {

namespace {

struct Start {
    const char* name;
    std::function<void()> body;
};

void* runBody(void* argument) {
    std::unique_ptr<Start> start(static_cast<Start*>(argument));
    pthread_setname_np(pthread_self(), start->name);
    start->body();
    return nullptr;
}

}  // namespace

bool startThread(const char* name, std::function<void()> body) {
    auto start = std::make_unique<Start>(Start{name, std::move(body)});
    sigset_t all;
    sigset_t old;
    sigfillset(&all);
    pthread_sigmask(SIG_SETMASK, &all, &old);
    pthread_t thread;
    const int error = pthread_create(&thread, nullptr, runBody, start.get());
    pthread_sigmask(SIG_SETMASK, &old, nullptr);
    if (error != 0) {
        BINDER_LOGE("cannot start thread %s: %s", name, strerror(error));
        return false;
    }
    (void)start.release();  // the thread's now
    pthread_detach(thread);
    return true;
}

}  // namespace hostbinder

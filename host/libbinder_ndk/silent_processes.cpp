// Remembering silent processes.
#include "silent_processes.h"

#include "call_context.h"

namespace hostbinder {

namespace {
constexpr std::chrono::seconds kAvoided{60};
}  // namespace

SilentProcesses& SilentProcesses::instance() {
    static SilentProcesses* const processes = new SilentProcesses;
    return *processes;
}

void SilentProcesses::add(pid_t process) {
    if (!callContext().handling) return;
    std::lock_guard<std::mutex> lock(mMutex);
    const auto now = Clock::now();
    for (auto entry = mUntil.begin(); entry != mUntil.end();) {
        entry = entry->second < now ? mUntil.erase(entry) : std::next(entry);
    }
    mUntil[process] = now + kAvoided;
}

bool SilentProcesses::mustNotWaitFor(pid_t process) {
    if (!callContext().handling) return false;
    std::lock_guard<std::mutex> lock(mMutex);
    const auto found = mUntil.find(process);
    return found != mUntil.end() && Clock::now() < found->second;
}

}  // namespace hostbinder

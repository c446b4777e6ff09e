// Local services, and the look-up that finds them: the linker sends the tool's look-ups here.

#include "tests/support/fake_services.h"

#include <android/binder_manager.h>
#include <android/log.h>

#include <map>

namespace {

struct Entry {
    ::ndk::SpAIBinder binder;
    int lookups = 0;  // left
};

std::map<std::string, Entry>& Services() {
    static auto* const services = new std::map<std::string, Entry>;
    return *services;
}

}  // namespace

extern "C" AIBinder* __wrap_AServiceManager_checkService(const char* instance) {
    Entry& entry = Services()[instance];
    if (entry.lookups == 0) return nullptr;
    --entry.lookups;
    AIBinder_incStrong(entry.binder.get());
    return entry.binder.get();
}

namespace test {

void SetService(const std::string& instance, const ::ndk::SpAIBinder& binder, int lookups) {
    Services()[instance] = {binder, binder.get() != nullptr ? lookups : 0};
}

::ndk::ScopedAStatus Answers::Answer(const std::string& call) const {
    __android_log_write(ANDROID_LOG_INFO, "FakeService", call.c_str());
    if (statusless) return ::ndk::ScopedAStatus();
    return ::ndk::ScopedAStatus::fromStatus(fails ? STATUS_DEAD_OBJECT : STATUS_OK);
}

}  // namespace test

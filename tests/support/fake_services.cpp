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

namespace {

void LogCall(const std::string& call) {
    __android_log_write(ANDROID_LOG_INFO, "FakeService", call.c_str());
}

}  // namespace

void SetService(const std::string& instance, const ::ndk::SpAIBinder& binder, int lookups) {
    Services()[instance] = {binder, binder.get() != nullptr ? lookups : 0};
}

::ndk::ScopedAStatus FakeSession::Answer() const {
    if (statusless) return ::ndk::ScopedAStatus();
    return ::ndk::ScopedAStatus::fromStatus(fails ? STATUS_DEAD_OBJECT : STATUS_OK);
}

::ndk::ScopedAStatus FakeSession::configureOfflineStreams(const ConfigureInfo& info) {
    LogCall("configureOfflineStreams " + info.cameraId);
    configured.push_back(info);
    return Answer();
}

::ndk::ScopedAStatus FakeSession::processOfflineRequest(const Requests& requests, int32_t* out) {
    LogCall("processOfflineRequest");
    if (onProcess) onProcess(requests);
    if (!fails) *out = frameNumber;
    return Answer();
}

::ndk::ScopedAStatus FakeSession::closeOfflineSession() {
    LogCall("closeOfflineSession");
    return Answer();
}

::ndk::ScopedAStatus FakeOfflineService::registerClient(int32_t clientId, const Callback& given) {
    LogCall("registerClient " + std::to_string(clientId));
    callback = given;
    return Answer();
}

::ndk::ScopedAStatus FakeOfflineService::openOfflineSession(
        const std::string& clientName, const Callback& given,
        std::shared_ptr<offline::IOfflineCameraSession>* out) {
    LogCall("openOfflineSession " + clientName);
    callback = given;
    if (!fails) *out = session;
    return Answer();
}

}  // namespace test

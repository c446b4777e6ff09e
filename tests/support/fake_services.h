// The service manager's answers, and an offline camera service that answers as told and logs every
// call.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>
#include <android/binder_auto_utils.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace test {

namespace offline = ::aidl::vendor::zel::hardware::camera::offlinecamera;

constexpr char kAllocatorInstance[] = "android.hardware.graphics.allocator.IAllocator/default";
constexpr char kServiceInstance[] =
        "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";

// From now on the service manager knows the binder under this name, for so many look-ups; a null
// binder: no more. A name that was never set is unknown.
void SetService(const std::string& instance, const ::ndk::SpAIBinder& binder, int lookups = 1000);

// What a session and a service are told, and how they answer.
struct Answers {
    bool fails = false;
    bool statusless = false;  // answers without a status at all

    // Logs the call.
    ::ndk::ScopedAStatus Answer(const std::string& call) const;
};

class FakeSession : public offline::BnOfflineCameraSession, public Answers {
  public:
    using ConfigureInfo = offline::OfflineSessionConfigureInfo;
    using Requests = std::vector<offline::OfflineRequestInfo>;

    int32_t frameNumber = 7;                         // given to requests
    std::function<void(const Requests&)> onProcess;  // before the answer

    std::vector<ConfigureInfo> configured;

    ::ndk::ScopedAStatus configureOfflineStreams(const ConfigureInfo& info) override {
        configured.push_back(info);
        return Answer("configureOfflineStreams " + info.cameraId);
    }
    ::ndk::ScopedAStatus processOfflineRequest(const Requests& requests, int32_t* out) override {
        if (onProcess) onProcess(requests);
        if (!fails) *out = frameNumber;
        return Answer("processOfflineRequest");
    }
    ::ndk::ScopedAStatus closeOfflineSession() override { return Answer("closeOfflineSession"); }
};

class FakeOfflineService : public offline::BnOfflineCameraService, public Answers {
  public:
    using Callback = std::shared_ptr<offline::IOfflineCameraCallback>;

    std::shared_ptr<FakeSession> session = ::ndk::SharedRefBase::make<FakeSession>();

    Callback callback;

    ::ndk::ScopedAStatus getSupportedOpModes(std::vector<int32_t>*) override {
        return Answer("getSupportedOpModes");
    }
    ::ndk::ScopedAStatus registerClient(int32_t clientId, const Callback& given) override {
        callback = given;
        return Answer("registerClient " + std::to_string(clientId));
    }
    ::ndk::ScopedAStatus unregisterClient(int32_t) override { return Answer("unregisterClient"); }
    ::ndk::ScopedAStatus openOfflineSession(
            const std::string& clientName, const Callback& given,
            std::shared_ptr<offline::IOfflineCameraSession>* out) override {
        callback = given;
        if (!fails) *out = session;
        return Answer("openOfflineSession " + clientName);
    }
};

}  // namespace test

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

class FakeSession : public offline::BnOfflineCameraSession {
  public:
    using ConfigureInfo = offline::OfflineSessionConfigureInfo;
    using Requests = std::vector<offline::OfflineRequestInfo>;

    // What is told.
    bool fails = false;
    bool statusless = false;                         // answers without a status at all
    int32_t frameNumber = 7;                         // given to requests
    std::function<void(const Requests&)> onProcess;  // before the answer

    std::vector<ConfigureInfo> configured;

    ::ndk::ScopedAStatus configureOfflineStreams(const ConfigureInfo& info) override;
    ::ndk::ScopedAStatus processOfflineRequest(const Requests& requests, int32_t* out) override;
    ::ndk::ScopedAStatus closeOfflineSession() override;

  private:
    ::ndk::ScopedAStatus Answer() const;
};

class FakeOfflineService : public offline::BnOfflineCameraService {
  public:
    using Callback = std::shared_ptr<offline::IOfflineCameraCallback>;

    // What is told.
    bool fails = false;
    std::shared_ptr<FakeSession> session = ::ndk::SharedRefBase::make<FakeSession>();

    Callback callback;

    ::ndk::ScopedAStatus getSupportedOpModes(std::vector<int32_t>*) override { return Answer(); }
    ::ndk::ScopedAStatus registerClient(int32_t clientId, const Callback& given) override;
    ::ndk::ScopedAStatus unregisterClient(int32_t) override { return Answer(); }
    ::ndk::ScopedAStatus openOfflineSession(
            const std::string& clientName, const Callback& given,
            std::shared_ptr<offline::IOfflineCameraSession>* out) override;

  private:
    ::ndk::ScopedAStatus Answer() const {
        return ::ndk::ScopedAStatus::fromStatus(fails ? STATUS_DEAD_OBJECT : STATUS_OK);
    }
};

}  // namespace test

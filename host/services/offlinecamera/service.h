// The offline camera service: the binder object that clients look up.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "death_watch.h"
#include "faults.h"

namespace offlinecamera {

// Thread-safe; holds sessions and registrations only as long as their clients do.
class OfflineCameraService
    : public ::aidl::vendor::zel::hardware::camera::offlinecamera::BnOfflineCameraService {
  public:
    using IOfflineCameraSession =
            ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraSession;

    static constexpr char kInstance[] =
            "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";

    // `mapper` imports the clients' buffers; not null.
    OfflineCameraService(::android::sp<ImportedBuffer::IMapper> mapper, FaultInjector faults);

    ndk::ScopedAStatus getSupportedOpModes(std::vector<int32_t>* modes) override;
    ndk::ScopedAStatus registerClient(
            int32_t clientId, const std::shared_ptr<IOfflineCameraCallback>& callback) override;
    ndk::ScopedAStatus unregisterClient(int32_t clientId) override;
    ndk::ScopedAStatus openOfflineSession(const std::string& clientName,
                                          const std::shared_ptr<IOfflineCameraCallback>& callback,
                                          std::shared_ptr<IOfflineCameraSession>* session) override;

  private:
    // Kept until the client leaves or dies; the service never calls it.
    struct Registration {
        std::shared_ptr<IOfflineCameraCallback> callback;
        services::DeathWatch watch;
    };

    const ::android::sp<ImportedBuffer::IMapper> m_mapper;
    const std::shared_ptr<const FaultInjector> m_faults;

    std::mutex m_lock;
    // By process and its number for the client.
    std::map<std::pair<pid_t, int32_t>, Registration> m_clients;
};

}  // namespace offlinecamera

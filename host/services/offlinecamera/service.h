// The offline camera service: the binder object that clients look up.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "borrowed_buffers.h"
#include "death_watch.h"

namespace offlinecamera {

// Thread-safe; holds sessions and registrations only as long as their clients do.
class OfflineCameraService
    : public ::aidl::vendor::zel::hardware::camera::offlinecamera::BnOfflineCameraService {
  public:
    using IOfflineCameraSession =
            ::aidl::vendor::zel::hardware::camera::offlinecamera::IOfflineCameraSession;

    static constexpr char kInstance[] =
            "vendor.zel.hardware.camera.offlinecamera.IOfflineCameraService/default";

    ndk::ScopedAStatus getSupportedOpModes(std::vector<int32_t>* modes) override;
    ndk::ScopedAStatus registerClient(int32_t clientId, const Client& client) override;
    ndk::ScopedAStatus unregisterClient(int32_t clientId) override;
    ndk::ScopedAStatus openOfflineSession(const std::string& clientName, const Client& client,
                                          std::shared_ptr<IOfflineCameraSession>* session) override;

  private:
    // Kept until the client leaves or dies; the service never calls it.
    struct Registration {
        Client client;
        services::DeathWatch watch;
    };

    std::mutex m_lock;
    // By process and its number for the client.
    std::map<std::pair<pid_t, int32_t>, Registration> m_clients;
};

}  // namespace offlinecamera

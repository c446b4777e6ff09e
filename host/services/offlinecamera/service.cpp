// The calls of the service.
#include "service.h"

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <sys/types.h>

#include <map>
#include <mutex>

#include "death_watch.h"
#include "faults.h"
#include "refusal.h"
#include "session.h"

namespace offlinecamera {

namespace {

using ::aidl::vendor::zel::hardware::camera::offlinecamera::BnOfflineCameraService;
using ndk::ScopedAStatus;

class Service : public BnOfflineCameraService {
  public:
    ScopedAStatus getSupportedOpModes(std::vector<int32_t>* modes) override {
        faults::DieAt("getSupportedOpModes", "die-on-modes");
        modes->clear();
        for (OpMode mode : kSupportedOpModes) modes->push_back(static_cast<int32_t>(mode));
        return ScopedAStatus::ok();
    }

    ScopedAStatus registerClient(int32_t clientId, const Client& client) override {
        constexpr char kRegister[] = "registerClient";
        if (auto status = faults::AtCall(kRegister, "register"); !status.isOk()) return status;
        if (client == nullptr && faults::Has("take-null")) return ScopedAStatus::ok();
        if (client == nullptr) return Refuse(kRegister, kIllegalArgument, "no callback");
        const std::pair<pid_t, int32_t> key = {AIBinder_getCallingPid(), clientId};
        const auto forget = [service = std::weak_ptr(ref<Service>()), key] {
            const auto self = service.lock();
            if (self == nullptr) return;
            const std::lock_guard<std::mutex> guard(self->m_lock);
            self->m_clients.erase(key);
        };
        Registration registration{client, {}};  // the replaced one in the end, released unlocked
        const std::lock_guard<std::mutex> guard(m_lock);
        if (!registration.watch.Begin(client->asBinder(), forget)) {
            return Refuse(kRegister, kIllegalArgument, "the client is dead");
        }
        std::swap(m_clients[key], registration);
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "client %d registered", clientId);
        return ScopedAStatus::ok();
    }

    ScopedAStatus unregisterClient(int32_t clientId) override {
        faults::DieAt("unregisterClient", "die-on-unregister");
        const std::lock_guard<std::mutex> guard(m_lock);
        if (m_clients.erase({AIBinder_getCallingPid(), clientId}) == 0) {
            return Refuse("unregisterClient", kIllegalArgument,
                          "client " + std::to_string(clientId) + " is not registered");
        }
        return ScopedAStatus::ok();
    }

    ScopedAStatus openOfflineSession(const std::string& clientName, const Client& client,
                                     std::shared_ptr<IOfflineCameraSession>* session) override {
        constexpr char kOpen[] = "openOfflineSession";
        if (auto status = faults::AtCall(kOpen, "open"); !status.isOk()) return status;
        session->reset();
        faults::Leak("leak-sessions");
        if (faults::Has("open-null")) return ScopedAStatus::ok();
        if (client == nullptr && faults::Has("take-null")) return ScopedAStatus::ok();
        if (client == nullptr) return Refuse(kOpen, kIllegalArgument, "no callback");
        *session = OpenSession(clientName, client);
        if (*session == nullptr) return Refuse(kOpen, kIllegalArgument, "the client is dead");
        return ScopedAStatus::ok();
    }

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

}  // namespace

std::shared_ptr<IOfflineCameraService> NewService() {
    return ndk::SharedRefBase::make<Service>();
}

}  // namespace offlinecamera

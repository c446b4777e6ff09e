// The calls of the service.
#include "service.h"

#include "faults.h"
#include "refusal.h"
#include "session.h"

namespace offlinecamera {

ndk::ScopedAStatus OfflineCameraService::getSupportedOpModes(std::vector<int32_t>* modes) {
    faults::DieAt("getSupportedOpModes", "die-on-modes");
    modes->clear();
    for (OpMode mode : kSupportedOpModes) modes->push_back(static_cast<int32_t>(mode));
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus OfflineCameraService::registerClient(int32_t clientId, const Client& client) {
    constexpr char kRegister[] = "registerClient";
    if (auto status = faults::AtCall(kRegister, "", "register-error"); !status.isOk())
        return status;
    if (client == nullptr && faults::Has("take-null")) return ndk::ScopedAStatus::ok();
    if (client == nullptr) return Refuse(kRegister, kIllegalArgument, "no callback");
    const std::pair<pid_t, int32_t> key = {AIBinder_getCallingPid(), clientId};
    const auto forget = [service = std::weak_ptr(ref<OfflineCameraService>()), key] {
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
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus OfflineCameraService::unregisterClient(int32_t clientId) {
    faults::DieAt("unregisterClient", "die-on-unregister");
    const std::lock_guard<std::mutex> guard(m_lock);
    if (m_clients.erase({AIBinder_getCallingPid(), clientId}) == 0) {
        return Refuse("unregisterClient", kIllegalArgument,
                      "client " + std::to_string(clientId) + " is not registered");
    }
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus OfflineCameraService::openOfflineSession(
        const std::string& clientName, const Client& client,
        std::shared_ptr<IOfflineCameraSession>* session) {
    constexpr char kOpen[] = "openOfflineSession";
    if (auto status = faults::AtCall(kOpen, "die-on-open", "open-error"); !status.isOk())
        return status;
    session->reset();
    faults::Leak("leak-sessions");
    if (faults::Has("open-null")) return ndk::ScopedAStatus::ok();
    if (client == nullptr && faults::Has("take-null")) return ndk::ScopedAStatus::ok();
    if (client == nullptr) return Refuse(kOpen, kIllegalArgument, "no callback");
    auto opened = ndk::SharedRefBase::make<OfflineCameraSession>(clientName, client);
    if (!opened->WatchClient()) return Refuse(kOpen, kIllegalArgument, "the client is dead");
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: opened", clientName.c_str());
    *session = std::move(opened);
    return ndk::ScopedAStatus::ok();
}

}  // namespace offlinecamera

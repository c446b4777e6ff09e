// The calls of the service.
#include "service.h"

#include "refusal.h"
#include "session.h"

namespace offlinecamera {

namespace {

constexpr char kOpen[] = "openOfflineSession";

}  // namespace

OfflineCameraService::OfflineCameraService(::android::sp<ImportedBuffer::IMapper> mapper,
                                           FaultInjector faults)
    : m_mapper(std::move(mapper)),
      m_faults(std::make_shared<const FaultInjector>(std::move(faults))) {}

ndk::ScopedAStatus OfflineCameraService::getSupportedOpModes(std::vector<int32_t>* modes) {
    m_faults->DieAt("getSupportedOpModes", "die-on-modes");
    modes->clear();
    for (OpMode mode : kSupportedOpModes) modes->push_back(static_cast<int32_t>(mode));
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus OfflineCameraService::registerClient(
        int32_t clientId, const std::shared_ptr<IOfflineCameraCallback>& callback) {
    if (auto status = m_faults->AtCall("registerClient", "", "register-error"); !status.isOk())
        return status;
    if (callback == nullptr && m_faults->Has("take-null")) return ndk::ScopedAStatus::ok();
    if (callback == nullptr) return Refuse("registerClient", kIllegalArgument, "no callback");
    const pid_t process = AIBinder_getCallingPid();
    const auto forget = [service = std::weak_ptr(ref<OfflineCameraService>()), process] {
        const auto self = service.lock();
        if (self == nullptr) return;
        const std::lock_guard<std::mutex> guard(self->m_lock);
        auto& clients = self->m_clients;
        clients.erase(clients.lower_bound({process, INT32_MIN}),
                      clients.upper_bound({process, INT32_MAX}));
    };
    Registration client;  // the replaced one in the end, released after the lock
    const std::lock_guard<std::mutex> guard(m_lock);
    client.callback = callback;
    if (!client.watch.Begin(callback->asBinder(), forget)) {
        return Refuse("registerClient", kIllegalArgument, "the client is dead");
    }
    std::swap(m_clients[{process, clientId}], client);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "client %d registered", clientId);
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus OfflineCameraService::unregisterClient(int32_t clientId) {
    m_faults->DieAt("unregisterClient", "die-on-unregister");
    const std::lock_guard<std::mutex> guard(m_lock);
    if (m_clients.erase({AIBinder_getCallingPid(), clientId}) == 0) {
        return Refuse("unregisterClient", kIllegalArgument,
                      "client " + std::to_string(clientId) + " is not registered");
    }
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus OfflineCameraService::openOfflineSession(
        const std::string& clientName, const std::shared_ptr<IOfflineCameraCallback>& callback,
        std::shared_ptr<IOfflineCameraSession>* session) {
    if (auto status = m_faults->AtCall(kOpen, "die-on-open", "open-error"); !status.isOk())
        return status;
    session->reset();
    m_faults->Leak("leak-sessions");
    if (m_faults->Has("open-null")) return ndk::ScopedAStatus::ok();
    if (callback == nullptr && m_faults->Has("take-null")) return ndk::ScopedAStatus::ok();
    if (callback == nullptr) return Refuse(kOpen, kIllegalArgument, "no callback");
    auto opened = ndk::SharedRefBase::make<OfflineCameraSession>(
            clientName, SessionClient{callback, m_mapper}, m_faults);
    if (!opened->WatchClient()) {
        return Refuse(kOpen, kIllegalArgument, "the client is dead");
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: opened", clientName.c_str());
    *session = std::move(opened);
    return ndk::ScopedAStatus::ok();
}

}  // namespace offlinecamera

// The calls of the service.
#include "service.h"

#include <android/log.h>

#include <atomic>

#include "refusal.h"

namespace offlinecamera {

namespace {

constexpr size_t kMaxClientsOfAProcess = 16;

}  // namespace

/** A registered client. The service has nothing to tell it yet; it is kept until it leaves. */
class OfflineCameraService::Registration final : public DeathListener {
  public:
    explicit Registration(std::shared_ptr<IOfflineCameraCallback> callback)
        : mCallback(std::move(callback)) {}

    static std::shared_ptr<Registration> Make(
            const std::shared_ptr<IOfflineCameraCallback>& callback) {
        auto registration = std::make_shared<Registration>(callback);
        const bool alive = registration->mWatch.Begin(callback->asBinder(), registration);
        return alive ? registration : nullptr;
    }

    bool Dead() const { return mDead; }
    void OnClientDied() override { mDead = true; }

  private:
    const std::shared_ptr<IOfflineCameraCallback> mCallback;
    std::atomic<bool> mDead{false};
    DeathWatch mWatch;
};

OfflineCameraService::OfflineCameraService(::android::sp<ImportedBuffer::IMapper> mapper,
                                           FaultInjector faults)
    : mMapper(std::move(mapper)),
      mFaults(std::make_shared<const FaultInjector>(std::move(faults))),
      mSlots(std::make_shared<SessionSlots>()) {}

ndk::ScopedAStatus OfflineCameraService::getSupportedOpModes(std::vector<int32_t>* modes) {
    modes->clear();
    for (OpMode mode : kSupportedOpModes) modes->push_back(static_cast<int32_t>(mode));
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus OfflineCameraService::registerClient(
        int32_t clientId, const std::shared_ptr<IOfflineCameraCallback>& callback) {
    if (callback == nullptr) return Refuse("registerClient", kIllegalArgument, "no callback");
    std::shared_ptr<Registration> registration = Registration::Make(callback);
    if (registration == nullptr) {
        return Refuse("registerClient", kIllegalArgument, "the client is dead");
    }
    std::lock_guard<std::mutex> guard(mLock);
    ForgetDeadLocked();
    auto& clients = mClients[AIBinder_getCallingPid()];
    if (clients.size() >= kMaxClientsOfAProcess && clients.count(clientId) == 0) {
        return Refuse("registerClient", kNoResources,
                      "the process has " + std::to_string(clients.size()) + " clients already");
    }
    clients[clientId] = std::move(registration);
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "client %d registered", clientId);
    return ndk::ScopedAStatus::ok();
}

void OfflineCameraService::ForgetDeadLocked() {
    for (auto process = mClients.begin(); process != mClients.end();) {
        auto& clients = process->second;
        for (auto client = clients.begin(); client != clients.end();) {
            client = client->second->Dead() ? clients.erase(client) : std::next(client);
        }
        process = clients.empty() ? mClients.erase(process) : std::next(process);
    }
}

ndk::ScopedAStatus OfflineCameraService::unregisterClient(int32_t clientId) {
    std::lock_guard<std::mutex> guard(mLock);
    const auto clients = mClients.find(AIBinder_getCallingPid());
    if (clients == mClients.end() || clients->second.erase(clientId) == 0) {
        return Refuse("unregisterClient", kIllegalArgument,
                      "client " + std::to_string(clientId) + " is not registered");
    }
    return ndk::ScopedAStatus::ok();
}

ndk::ScopedAStatus OfflineCameraService::openOfflineSession(
        const std::string& clientName, const std::shared_ptr<IOfflineCameraCallback>& callback,
        std::shared_ptr<IOfflineCameraSession>* session) {
    if (auto status = mFaults->AtOpen(); !status.isOk()) return status;
    session->reset();
    if (mFaults->GivesNoSession()) return ndk::ScopedAStatus::ok();
    if (callback == nullptr) return Refuse("openOfflineSession", kIllegalArgument, "no callback");
    if (clientName.size() > OfflineCameraSession::kMaxNameBytes) {
        return Refuse("openOfflineSession", kIllegalArgument,
                      "client name of " + std::to_string(clientName.size()) + " bytes: at most " +
                              std::to_string(OfflineCameraSession::kMaxNameBytes));
    }
    SessionSlots::Slot slot = mSlots->Take(AIBinder_getCallingPid());
    if (slot == nullptr) {
        return Refuse("openOfflineSession", kNoResources,
                      "too many sessions are open: " + std::to_string(SessionSlots::kMaxSessions) +
                              " at most, and of one client half of what the others leave");
    }
    auto opened = ndk::SharedRefBase::make<OfflineCameraSession>(clientName, callback, mMapper,
                                                                 mFaults, std::move(slot));
    if (!opened->HasThread()) {
        return Refuse("openOfflineSession", kNoResources, "the system has no thread for it");
    }
    if (!opened->WatchClient()) {
        return Refuse("openOfflineSession", kIllegalArgument, "the client is dead");
    }
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: opened", clientName.c_str());
    *session = std::move(opened);
    return ndk::ScopedAStatus::ok();
}

}  // namespace offlinecamera

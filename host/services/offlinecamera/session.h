// One client's session: the binder object behind IOfflineCameraSession.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>

#include <atomic>
#include <memory>
#include <mutex>
#include <string>

#include "death_watch.h"
#include "faults.h"
#include "session_worker.h"
#include "stream_set.h"

namespace offlinecamera {

/** Counts open sessions. */
class SessionSlots {
  public:
    static constexpr int kMaxSessions = 16;

    bool Take();
    void Free() { --mTaken; }

  private:
    std::atomic<int> mTaken{0};
};

/**
 * Thread-safe. It ends with closeOfflineSession, with the client's death, or when nobody refers to
 * it any more; then queued requests are dropped, their buffers freed, and nothing is delivered.
 */
class OfflineCameraSession
    : public ::aidl::vendor::zel::hardware::camera::offlinecamera::BnOfflineCameraSession,
      public DeathListener {
  public:
    static constexpr size_t kMaxRequestsInFlight = 16;

    /** Holds a slot that was taken, and frees it at its end. */
    OfflineCameraSession(std::string clientName, std::shared_ptr<IOfflineCameraCallback> client,
                         ::android::sp<ImportedBuffer::IMapper> mapper,
                         std::shared_ptr<const FaultInjector> faults,
                         std::shared_ptr<SessionSlots> slots);
    ~OfflineCameraSession() override;

    /** @return whether the client is alive; call it once, right after construction */
    bool WatchClient();

    ndk::ScopedAStatus configureOfflineStreams(const OfflineSessionConfigureInfo& info) override;
    ndk::ScopedAStatus processOfflineRequest(const std::vector<OfflineRequestInfo>& requests,
                                             int32_t* frameNumber) override;

    /** Waits, bounded, until the frame being worked on has let go of its buffers. */
    ndk::ScopedAStatus closeOfflineSession() override;

    void OnClientDied() override;

  private:
    std::string MakeRequests(const std::vector<OfflineRequestInfo>& infos,
                             std::vector<Request>* out) const;
    std::string AssignFrameNumbers(std::vector<Request>* requests, int32_t* answer);

    /** Ends the session for `reason`; only the first caller gets true. */
    bool BeginEnd(const char* reason);

    const std::string mClientName;
    const std::shared_ptr<IOfflineCameraCallback> mClient;
    const ::android::sp<ImportedBuffer::IMapper> mMapper;
    const std::shared_ptr<const FaultInjector> mFaults;
    const std::shared_ptr<SessionSlots> mSlots;
    DeathWatch mDeathWatch;

    std::mutex mLock;  // guards what follows, except the worker, which guards itself
    bool mEnded = false;
    std::shared_ptr<const StreamSet> mStreams;
    int32_t mNextFrameNumber = 1;
    SessionWorker mWorker;
};

}  // namespace offlinecamera

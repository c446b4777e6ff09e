// One client's session: the binder object behind IOfflineCameraSession.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>
#include <sys/types.h>

#include <map>
#include <memory>
#include <mutex>
#include <string>

#include "death_watch.h"
#include "faults.h"
#include "session_worker.h"
#include "stream_set.h"

namespace offlinecamera {

/** Counts sessions, which cost a thread each. */
class SessionSlots : public std::enable_shared_from_this<SessionSlots> {
  public:
    static constexpr size_t kMaxSessions = 16;

    /** A slot is free again when the last copy of this is gone. */
    using Slot = std::shared_ptr<const void>;

    /** @return null if all together have too many, or the client's process has half of what the
     * others leave */
    Slot Take(pid_t client);

  private:
    void Free(pid_t client);

    std::mutex mLock;
    std::map<pid_t, size_t> mTaken;  // sessions of each process that has any
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
    static constexpr size_t kMaxNameBytes = 128;  // of clients and cameras

    /** Its thread holds the slot: a client that keeps the thread in a callback keeps the slot. */
    OfflineCameraSession(std::string clientName, std::shared_ptr<IOfflineCameraCallback> client,
                         ::android::sp<ImportedBuffer::IMapper> mapper,
                         std::shared_ptr<const FaultInjector> faults, SessionSlots::Slot slot);
    ~OfflineCameraSession() override;

    /** @return whether it has a thread to work on requests; without one it is of no use */
    bool HasThread() const { return mWorker.Started(); }

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
    DeathWatch mDeathWatch;

    std::mutex mLock;  // guards what follows, except the worker, which guards itself
    bool mEnded = false;
    std::shared_ptr<const StreamSet> mStreams;
    int32_t mNextFrameNumber = 1;
    SessionWorker mWorker;
};

}  // namespace offlinecamera

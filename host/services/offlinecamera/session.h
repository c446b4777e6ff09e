// One client's session: the binder object behind IOfflineCameraSession.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>

#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "borrowed_buffers.h"
#include "death_watch.h"
#include "session_worker.h"

namespace offlinecamera {

// Thread-safe. It ends with closeOfflineSession, with the client's death, or with its last
// reference; then queued requests are dropped, their buffers freed, and nothing is delivered.
class OfflineCameraSession
    : public ::aidl::vendor::zel::hardware::camera::offlinecamera::BnOfflineCameraSession {
  public:
    static constexpr size_t kMaxRequestsInFlight = 16;

    OfflineCameraSession(std::string clientName, Client client);
    ~OfflineCameraSession() override;

    // Whether the client is alive; call it once, right after construction.
    bool WatchClient();

    ndk::ScopedAStatus configureOfflineStreams(const OfflineSessionConfigureInfo& info) override;
    ndk::ScopedAStatus processOfflineRequest(const std::vector<OfflineRequestInfo>& requests,
                                             int32_t* frameNumber) override;

    // Waits, bounded, until the frame being worked on has let go of its buffers.
    ndk::ScopedAStatus closeOfflineSession() override;

  private:
    void OnClientDied();

    // Returns the number that the client is told.
    base::Result<int32_t> AssignFrameNumbers(std::vector<Request>* requests);

    // Ends the session for `reason`; only the first caller gets true.
    bool BeginEnd(const char* reason);

    const std::string m_clientName;
    const Client m_client;
    services::DeathWatch m_deathWatch;

    std::mutex m_lock;  // guards what follows, except the worker, which guards itself
    bool m_ended = false;
    std::shared_ptr<const StreamSet> m_streams;
    int32_t m_nextFrameNumber = 1;
    SessionWorker m_worker;
};

}  // namespace offlinecamera

// The calls of a session.
#include "session.h"

#include <set>

#include "frame_runner.h"
#include "refusal.h"

namespace offlinecamera {

namespace {

using base::Failure;
using base::Result;

constexpr std::chrono::seconds kCloseWait(10);
constexpr std::chrono::seconds kEarlyResultWait(30);

constexpr char kConfigure[] = "configureOfflineStreams";
constexpr char kProcess[] = "processOfflineRequest";
constexpr char kClose[] = "closeOfflineSession";
constexpr char kEndedText[] = "the session has ended";

}  // namespace

OfflineCameraSession::OfflineCameraSession(std::string clientName, SessionClient client,
                                           std::shared_ptr<const FaultInjector> faults)
    : m_clientName(std::move(clientName)),
      m_client(std::move(client)),
      m_faults(std::move(faults)),
      m_worker([client = m_client, faults = m_faults](const Request& request,
                                                      const StopSignal& stop) {
          RunFrame(request, client, *faults, stop);
      }) {}

OfflineCameraSession::~OfflineCameraSession() {
    // Runs on any thread, perhaps on one that has to serve the callback that the worker is in: so
    // no waiting here.
    BeginEnd("released");
}

bool OfflineCameraSession::WatchClient() {
    return m_deathWatch.Begin(m_client.callback->asBinder(),
                              [session = std::weak_ptr(ref<OfflineCameraSession>())] {
                                  if (const auto self = session.lock()) self->OnClientDied();
                              });
}

ndk::ScopedAStatus OfflineCameraSession::configureOfflineStreams(
        const OfflineSessionConfigureInfo& info) {
    if (auto status = m_faults->AtCall(kConfigure, "die-on-configure", "configure-error");
        !status.isOk())
        return status;
    Result<StreamSet> streams = MakeStreamSet(info);
    if (!streams.Ok()) return Refuse(kConfigure, kIllegalArgument, streams.Error());

    std::lock_guard<std::mutex> guard(m_lock);
    if (m_ended) return Refuse(kConfigure, kWrongState, kEndedText);
    if (!m_worker.FramesInFlight().empty()) {
        return Refuse(kConfigure, kWrongState, "requests are still being worked on");
    }
    m_streams = std::make_shared<const StreamSet>(std::move(streams).Value());
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: camera %s, op mode %d, %zu streams",
                        m_clientName.c_str(), info.cameraId.c_str(), info.opMode,
                        info.streams.size());
    return ndk::ScopedAStatus::ok();
}

Result<int32_t> OfflineCameraSession::AssignFrameNumbers(std::vector<Request>* requests) {
    const std::vector<int32_t> inFlight = m_worker.FramesInFlight();
    std::set<int32_t> taken(inFlight.begin(), inFlight.end());
    int32_t next = m_nextFrameNumber;
    Request* asking = nullptr;
    for (Request& request : *requests) {
        if (request.frameNumber == -1) {
            if (asking != nullptr) {
                return Failure{"two requests ask for a frame number: a call returns only one"};
            }
            asking = &request;
        } else if (!taken.insert(request.frameNumber).second) {
            return Failure{"frame number " + std::to_string(request.frameNumber) + " is in use"};
        } else if (request.frameNumber >= next) {
            if (request.frameNumber == INT32_MAX) {
                return Failure{"frame number 2147483647 is too large"};
            }
            next = request.frameNumber + 1;
        }
    }
    if (asking != nullptr) {
        if (next == INT32_MAX) return Failure{"there are no frame numbers left"};
        asking->frameNumber = next++;
    }
    m_nextFrameNumber = next;
    return (asking != nullptr ? *asking : requests->front()).frameNumber;
}

ndk::ScopedAStatus OfflineCameraSession::processOfflineRequest(
        const std::vector<OfflineRequestInfo>& requests, int32_t* frameNumber) {
    if (auto status = m_faults->AtCall(kProcess, "die-on-process", "process-error"); !status.isOk())
        return status;
    if (requests.empty()) return Refuse(kProcess, kIllegalArgument, "no requests");
    {
        std::lock_guard<std::mutex> guard(m_lock);
        if (m_ended) return Refuse(kProcess, kWrongState, kEndedText);
        if (m_streams == nullptr) return Refuse(kProcess, kWrongState, "no streams are configured");
        if (m_worker.FramesInFlight().size() + requests.size() > kMaxRequestsInFlight) {
            return Refuse(kProcess, kNoResources,
                          "more than " + std::to_string(kMaxRequestsInFlight) + " requests");
        }
        std::vector<Request> checked;
        for (const OfflineRequestInfo& info : requests) {
            Result<Request> request = MakeRequest(info, m_streams, m_client.mapper);
            if (!request.Ok()) {
                return Refuse(kProcess, kIllegalArgument,
                              "request " + std::to_string(checked.size()) + ": " + request.Error());
            }
            checked.push_back(std::move(request).Value());
        }
        const Result<int32_t> number = AssignFrameNumbers(&checked);
        if (!number.Ok()) return Refuse(kProcess, kIllegalArgument, number.Error());
        *frameNumber = number.Value();
        m_worker.Enqueue(std::move(checked));
    }
    if (m_faults->Has("early-result")) m_worker.WaitUntilIdle(kEarlyResultWait);
    return ndk::ScopedAStatus::ok();
}

bool OfflineCameraSession::BeginEnd(const char* reason) {
    std::lock_guard<std::mutex> guard(m_lock);
    if (m_ended) return false;
    m_ended = true;
    m_streams = nullptr;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: %s", m_clientName.c_str(), reason);
    return true;
}

ndk::ScopedAStatus OfflineCameraSession::closeOfflineSession() {
    if (!BeginEnd("closed")) return Refuse(kClose, kWrongState, kEndedText);
    if (!m_worker.Stop(kCloseWait)) {
        LogProblem("session " + m_clientName + ": closed while its client was in a callback");
    }
    return ndk::ScopedAStatus::ok();
}

void OfflineCameraSession::OnClientDied() {
    if (BeginEnd("client died")) m_worker.Stop(std::chrono::seconds(0));
}

}  // namespace offlinecamera

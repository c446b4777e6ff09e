// The calls of a session.
#include "session.h"

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>

#include "death_watch.h"
#include "faults.h"
#include "pipeline.h"
#include "refusal.h"

namespace offlinecamera {

namespace {

using ::aidl::vendor::zel::hardware::camera::offlinecamera::BnOfflineCameraSession;
using base::Failure;
using base::Result;
using ndk::ScopedAStatus;

constexpr size_t kMaxRequestsInFlight = 16;
constexpr std::chrono::seconds kCloseWait(10);
constexpr std::chrono::seconds kIdleWait(30);

constexpr char kConfigure[] = "configureOfflineStreams";
constexpr char kProcess[] = "processOfflineRequest";
constexpr char kClose[] = "closeOfflineSession";
constexpr char kEndedText[] = "the session has ended";

std::atomic<int32_t> s_nextOfAll{1};  // frame number, of the fault restart-numbers

class Session : public BnOfflineCameraSession {
  public:
    Session(std::string clientName, Client client)
        : m_clientName(std::move(clientName)),
          m_client(std::move(client)),
          m_worker([client = m_client](const Request& request, const StopSignal& stop) {
              RunFrame(request, faults::ClientOf(client, false), stop);
          }) {
        faults::ClientOf(m_client, true);
    }

    // Runs on any thread, perhaps on one that has to serve the callback that the worker is in: so
    // no waiting here.
    ~Session() override { BeginEnd("released"); }

    // Whether the client is alive; call it once, right after construction.
    bool WatchClient() {
        std::shared_ptr<Session>
                kept;  // or the client's references may go before its death is told
        if (faults::Has("keep-dead")) kept = ref<Session>();
        const auto died = [session = std::weak_ptr(ref<Session>()), kept] {
            if (const auto self = session.lock()) self->OnClientDied();
        };
        return m_deathWatch.Begin(m_client->asBinder(), died);
    }

    ScopedAStatus configureOfflineStreams(const OfflineSessionConfigureInfo& info) override {
        if (auto status = faults::AtCall(kConfigure, "configure"); !status.isOk()) return status;
        Result<StreamSet> streams = MakeStreamSet(info);
        if (!streams.Ok() && faults::Has("take-any-streams")) return ScopedAStatus::ok();
        if (!streams.Ok()) return Refuse(kConfigure, kIllegalArgument, streams.Error());

        if ((faults::Has("refuse-jpeg") && streams.Value().mode == OpMode::kY2J) ||
            (faults::Has("refuse-mmf") && streams.Value().mode == OpMode::kMMF)) {
            return Refuse(kConfigure, kIllegalArgument, "fault switched on");
        }

        const std::lock_guard<std::mutex> guard(m_lock);
        if (m_ended) return Refuse(kConfigure, kWrongState, kEndedText);
        if (faults::Has("drop-in-flight")) m_worker.Drop();
        if (faults::Has("configure-once") && m_streams != nullptr) {
            return Refuse(kConfigure, kWrongState, "fault switched on");
        }
        if (!m_worker.FramesInFlight().empty()) {
            return Refuse(kConfigure, kWrongState, "requests are still being worked on");
        }
        m_streams = std::make_shared<const StreamSet>(std::move(streams).Value());
        if (faults::Has("restart-numbers")) s_nextOfAll = 1;
        __android_log_print(ANDROID_LOG_INFO, kLogTag,
                            "session %s: camera %s, op mode %d, %zu streams", m_clientName.c_str(),
                            info.cameraId.c_str(), info.opMode, info.streams.size());
        return ScopedAStatus::ok();
    }

    ScopedAStatus processOfflineRequest(const std::vector<OfflineRequestInfo>& requests,
                                        int32_t* frameNumber) override {
        if (auto status = faults::AtCall(kProcess, "process"); !status.isOk()) return status;
        for (const OfflineRequestInfo& info : requests) faults::AwaitFences(info);
        const auto refuse = [&](ServiceError error, const std::string& problem) {
            faults::Leak("leak-refused");
            *frameNumber = 0;
            return faults::Has("silent-refusal") ? ScopedAStatus::ok()
                                                 : Refuse(kProcess, error, problem);
        };
        if (requests.empty()) return refuse(kIllegalArgument, "no requests");
        {
            const std::lock_guard<std::mutex> guard(m_lock);
            if (m_ended) return Refuse(kProcess, kWrongState, kEndedText);
            if (m_streams == nullptr) return refuse(kWrongState, "no streams are configured");
            if (m_worker.FramesInFlight().size() + requests.size() > kMaxRequestsInFlight) {
                return Refuse(kProcess, kNoResources,
                              "more than " + std::to_string(kMaxRequestsInFlight) + " requests");
            }
            std::vector<Request> checked;
            for (const OfflineRequestInfo& info : requests) {
                Result<Request> request = MakeRequest(info, m_streams);
                if (!request.Ok()) {
                    return refuse(kIllegalArgument, "request " + std::to_string(checked.size()) +
                                                            ": " + request.Error());
                }
                checked.push_back(std::move(request).Value());
                faults::DropFences(&checked.back());
            }
            const Result<int32_t> number = AssignFrameNumbers(&checked);
            if (!number.Ok()) return Refuse(kProcess, kIllegalArgument, number.Error());
            *frameNumber = number.Value();
            if (faults::Has("first-request-only")) checked.resize(1);
            if (faults::Has("need-metadata") && requests[0].inFrameInfos[0].metadata.empty()) {
                checked.clear();
            }
            if (faults::Has("short-queue") && m_worker.FramesInFlight().size() >= 2) {
                checked.clear();
            }
            m_worker.Enqueue(std::move(checked));
        }
        if (faults::Has("early-result")) m_worker.WaitUntilIdle(kIdleWait);
        return ScopedAStatus::ok();
    }

    // Waits, bounded, until the frame being worked on has let go of its buffers.
    ScopedAStatus closeOfflineSession() override {
        if (auto status = faults::AtCall(kClose, "close"); !status.isOk()) return status;
        if (faults::Has("close-nothing")) return ScopedAStatus::ok();
        if (faults::Has("close-waits")) m_worker.WaitUntilIdle(kIdleWait);
        if (!BeginEnd("closed")) {
            faults::DieAt(kClose, "die-on-second-close");
            return Refuse(kClose, kWrongState, kEndedText);
        }
        if (!m_worker.Stop(kCloseWait)) {
            LogProblem("session " + m_clientName + ": closed while its client was in a callback");
        }
        return ScopedAStatus::ok();
    }

  private:
    // Returns the number that the client is told.
    Result<int32_t> AssignFrameNumbers(std::vector<Request>* requests) {
        const std::vector<int32_t> inFlight = m_worker.FramesInFlight();
        std::set<int32_t> taken(inFlight.begin(), inFlight.end());
        int32_t next = m_nextFrameNumber;
        Request* asking = nullptr;
        for (Request& request : *requests) {
            const int32_t number = request.frameNumber;
            if (number == INT32_MAX) return Failure{"frame number 2147483647 is too large"};
            if (!taken.insert(number).second) {
                return Failure{
                        number == -1
                                ? "two requests ask for a frame number: a call returns only one"
                                : "frame number " + std::to_string(number) + " is in use"};
            }
            if (number == -1) asking = &request;
            next = std::max(next, number + 1);
        }
        if (asking != nullptr) {
            if (next == INT32_MAX) return Failure{"there are no frame numbers left"};
            asking->frameNumber = next++;
        }
        if (faults::Has("restart-numbers") && asking != nullptr) {
            return asking->frameNumber = s_nextOfAll++;
        }
        if (faults::Has("same-number") && asking != nullptr) return asking->frameNumber = 1;
        m_nextFrameNumber = next;
        return (asking != nullptr ? *asking : requests->front()).frameNumber;
    }

    // Ends the session for `reason`; only the first caller gets true.
    bool BeginEnd(const char* reason) {
        const std::lock_guard<std::mutex> guard(m_lock);
        if (m_ended) return false;
        m_ended = true;
        m_streams = nullptr;
        __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: %s", m_clientName.c_str(),
                            reason);
        return true;
    }

    void OnClientDied() {
        faults::DieAt("OnClientDied", "die-with-client");
        if (faults::Has("keep-dead")) {
            new auto(ref<Session>());  // the last reference would end the session
            return;
        }
        if (BeginEnd("client died")) m_worker.Stop(std::chrono::seconds(0));
    }

    const std::string m_clientName;
    const Client m_client;
    services::DeathWatch m_deathWatch;

    std::mutex m_lock;  // guards what follows, except the worker, which guards itself
    bool m_ended = false;
    std::shared_ptr<const StreamSet> m_streams;
    int32_t m_nextFrameNumber = 1;
    SessionWorker m_worker;
};

}  // namespace

std::shared_ptr<IOfflineCameraSession> OpenSession(const std::string& clientName,
                                                   const Client& client) {
    const auto session = ndk::SharedRefBase::make<Session>(clientName, client);
    if (!session->WatchClient()) return nullptr;
    __android_log_print(ANDROID_LOG_INFO, kLogTag, "session %s: opened", clientName.c_str());
    return session;
}

}  // namespace offlinecamera

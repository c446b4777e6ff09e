// The smallest offline camera service that works: mode B2Y, and for a picture the brightness of the
// mosaic's middle, in grey. README.md tells how to build it, run it and go on from here.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <stdio.h>

#include <mutex>

#include "develop.h"
#include "frame_messages.h"
#include "refusal.h"
#include "session_worker.h"

using namespace aidl::vendor::zel::hardware::camera::offlinecamera;
using namespace offlinecamera;  // the kit
using ndk::ScopedAStatus;
using Client = std::shared_ptr<IOfflineCameraCallback>;

namespace {

constexpr size_t kMaxFrames = 4;  // in work or waiting, per session

// On the session's own thread. After the session's end nothing is sent.
void Work(const Client& client, const Request& request, const StopSignal& stop) {
    const auto developed = Develop(request);
    if (!developed.Ok()) LogProblem("no picture: " + developed.Error());
    const int64_t now =
            std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count();
    if (!stop.Stopped()) client->notify({MakeShutter(request.frameNumber, now)});
    std::vector<OfflineCaptureResult> results;
    results.push_back(MakeResult(request, developed.Ok() ? BufferStatus::OK : BufferStatus::ERROR));
    if (!stop.Stopped()) client->processCaptureResult(results);
}

// Its calls come on any thread of the pool, several at once.
class Session : public BnOfflineCameraSession {
  public:
    explicit Session(const Client& client)
        : m_worker([client](const Request& request, const StopSignal& stop) {
              Work(client, request, stop);
          }) {}

    ScopedAStatus configureOfflineStreams(const OfflineSessionConfigureInfo& info) override {
        const auto refuse = [](const std::string& problem) {
            return Refuse("configureOfflineStreams", kIllegalArgument, problem);
        };
        if (info.opMode != 0) return refuse("op mode 0 only");
        const auto streams = MakeStreamSet(info);
        if (!streams.Ok()) return refuse(streams.Error());
        const std::lock_guard<std::mutex> lock(m_lock);
        if (m_closed) return refuse("the session is closed");
        m_streams = std::make_shared<StreamSet>(streams.Value());
        return ScopedAStatus::ok();
    }

    ScopedAStatus processOfflineRequest(const std::vector<OfflineRequestInfo>& infos,
                                        int32_t* frameNumber) override {
        const auto refuse = [](const std::string& problem) {
            return Refuse("processOfflineRequest", kIllegalArgument, problem);
        };
        const std::lock_guard<std::mutex> lock(m_lock);
        if (m_closed) return refuse("the session is closed");
        if (m_streams == nullptr || infos.size() != 1) {
            return refuse("one request, after streams are configured");
        }
        if (m_worker.FramesInFlight().size() >= kMaxFrames) return refuse("too many frames");
        auto request = MakeRequest(infos[0], m_streams);
        if (!request.Ok()) return refuse(request.Error());
        std::vector<Request> requests;
        requests.push_back(std::move(request).Value());
        if (requests[0].frameNumber == -1) requests[0].frameNumber = m_nextFrame++;
        *frameNumber = requests[0].frameNumber;
        m_worker.Enqueue(std::move(requests));  // the client learns the number when this returns
        return ScopedAStatus::ok();
    }

    ScopedAStatus closeOfflineSession() override {
        const std::lock_guard<std::mutex> lock(m_lock);
        m_closed = true;
        m_worker.Stop(std::chrono::seconds(1));  // a client may stay in its callback for long
        return ScopedAStatus::ok();
    }

  private:
    std::mutex m_lock;  // guards what follows
    std::shared_ptr<const StreamSet> m_streams;
    int32_t m_nextFrame = 1;
    bool m_closed = false;
    SessionWorker m_worker;
};

class Service : public BnOfflineCameraService {
    ScopedAStatus getSupportedOpModes(std::vector<int32_t>* modes) override {
        *modes = {0};
        return ScopedAStatus::ok();
    }
    ScopedAStatus registerClient(int32_t, const Client& client) override {
        if (client == nullptr) return Refuse("registerClient", kIllegalArgument, "no callback");
        return ScopedAStatus::ok();
    }
    ScopedAStatus unregisterClient(int32_t) override { return ScopedAStatus::ok(); }
    ScopedAStatus openOfflineSession(const std::string&, const Client& client,
                                     std::shared_ptr<IOfflineCameraSession>* session) override {
        if (client == nullptr) return Refuse("openOfflineSession", kIllegalArgument, "no callback");
        *session = ndk::SharedRefBase::make<Session>(client);
        return ScopedAStatus::ok();
    }
};

}  // namespace

int main() {
    const std::string name = std::string(IOfflineCameraService::descriptor) + "/default";
    const auto service = ndk::SharedRefBase::make<Service>();
    if (AServiceManager_addService(service->asBinder().get(), name.c_str()) != EX_NONE) {
        fprintf(stderr, "minimal_service: cannot register %s\n", name.c_str());
        return 1;
    }
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();
    ABinderProcess_joinThreadPool();
}

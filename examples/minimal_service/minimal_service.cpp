// The smallest offline camera service that works: mode B2Y, and for a picture the brightness of the
// mosaic's middle, in grey. README.md tells how to build it, run it and go on from here.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <stdio.h>

#include <atomic>
#include <chrono>
#include <mutex>
#include <thread>

#include "frame.h"

using aidl::android::hardware::graphics::common::PixelFormat;
using ndk::ScopedAStatus;
using Client = std::shared_ptr<camera::IOfflineCameraCallback>;

namespace {

constexpr int kMaxFrames = 4;  // a session works on so many at a time

ScopedAStatus refuse(const std::string& why) {
    fprintf(stderr, "minimal_service: %s\n", why.c_str());  // goes to the device's log
    return ScopedAStatus::fromServiceSpecificErrorWithMessage(1, why.c_str());
}

// Its calls come on any thread of the pool, several at once.
class Session : public camera::BnOfflineCameraSession {
  public:
    explicit Session(Client client) : m_client(std::move(client)) {}

    ScopedAStatus configureOfflineStreams(
            const camera::OfflineSessionConfigureInfo& info) override {
        const std::vector<device::Stream>& streams = info.streams;
        if (info.opMode != 0 || streams.size() != 2 || streams[0].format != PixelFormat::RAW10 ||
            streams[1].format != PixelFormat::YCBCR_420_888) {
            return refuse("op mode 0 only, with one RAW10 and one YCBCR_420_888 stream");
        }
        if (streams[1].width > streams[0].width || streams[1].height > streams[0].height) {
            return refuse("the picture cannot be larger than the mosaic");
        }
        const std::lock_guard<std::mutex> lock(m_lock);
        m_streams = streams;
        return ScopedAStatus::ok();
    }

    ScopedAStatus processOfflineRequest(const std::vector<camera::OfflineRequestInfo>& requests,
                                        int32_t* frameNumber) override {
        const std::lock_guard<std::mutex> lock(m_lock);
        if (m_closed) return refuse("the session is closed");
        if (m_streams.empty() || requests.size() != 1 || requests[0].inFrameInfos.size() != 1) {
            return refuse("one request with one frame, after streams are configured");
        }
        if (m_frames >= kMaxFrames) return refuse("too many frames are in work");
        Frame frame{m_streams[0], m_streams[1], {}, {}, {}};
        const std::string problem = take(requests[0], &frame);
        if (!problem.empty()) return refuse(problem);
        *frameNumber = requests[0].frameNumber == -1 ? m_nextFrame++ : requests[0].frameNumber;
        frame.result.frameNumber = *frameNumber;
        ++m_frames;
        // The client learns the number when this call returns, so nobody waits for the work; the
        // session lives as long as that does.
        std::thread(&Session::work, ref<Session>(), std::move(frame)).detach();
        return ScopedAStatus::ok();
    }

    ScopedAStatus closeOfflineSession() override {
        m_closed = true;
        // A callback under way ends first. Where this call was made from within it, binder brings
        // the call on the callback's thread, which has the lock and gets it again. And a client
        // that stays in its callback holds nobody up.
        if (m_sending.try_lock_for(std::chrono::seconds(1))) m_sending.unlock();
        return ScopedAStatus::ok();
    }

  private:
    void work(Frame frame) {
        const std::string problem = develop(frame);
        if (!problem.empty()) {
            refuse(problem);
            frame.result.outFrameInfo.buffers[0].status = device::BufferStatus::ERROR;
        }
        device::ShutterMsg shutter;
        shutter.frameNumber = frame.result.frameNumber;
        std::vector<camera::OfflineCaptureResult> results;
        results.push_back(std::move(frame.result));
        const std::lock_guard<std::recursive_timed_mutex> lock(m_sending);
        if (!m_closed) m_client->notify({device::NotifyMsg(shutter)});
        if (!m_closed) m_client->processCaptureResult(results);
        --m_frames;
    }

    const Client m_client;
    std::mutex m_lock;  // guards the next two
    std::vector<device::Stream> m_streams;
    int32_t m_nextFrame = 1;
    std::atomic<int> m_frames{0};  // in work
    std::atomic<bool> m_closed{false};
    std::recursive_timed_mutex m_sending;  // held for the callbacks of one frame
};

class Service : public camera::BnOfflineCameraService {
    ScopedAStatus getSupportedOpModes(std::vector<int32_t>* modes) override {
        *modes = {0};
        return ScopedAStatus::ok();
    }
    ScopedAStatus registerClient(int32_t, const Client&) override { return ScopedAStatus::ok(); }
    ScopedAStatus unregisterClient(int32_t) override { return ScopedAStatus::ok(); }
    ScopedAStatus openOfflineSession(
            const std::string&, const Client& client,
            std::shared_ptr<camera::IOfflineCameraSession>* session) override {
        if (client == nullptr) return refuse("a session needs a callback");
        *session = ndk::SharedRefBase::make<Session>(client);
        return ScopedAStatus::ok();
    }
};

}  // namespace

int main() {
    const std::string name = std::string(camera::IOfflineCameraService::descriptor) + "/default";
    const auto service = ndk::SharedRefBase::make<Service>();
    if (AServiceManager_addService(service->asBinder().get(), name.c_str()) != EX_NONE) {
        fprintf(stderr, "minimal_service: cannot register %s\n", name.c_str());
        return 1;
    }
    ABinderProcess_setThreadPoolMaxThreadCount(4);
    ABinderProcess_startThreadPool();
    ABinderProcess_joinThreadPool();
}

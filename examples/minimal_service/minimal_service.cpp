// The smallest offline camera service that works: mode B2Y, and for a picture the brightness of the
// mosaic's middle, in grey. README.md tells how to build it, run it and go on from here.
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraService.h>
#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraSession.h>
#include <android/binder_manager.h>
#include <android/binder_process.h>
#include <stdio.h>
#include <string.h>

#include <thread>

#include "imported_buffer.h"

namespace camera = aidl::vendor::zel::hardware::camera::offlinecamera;
namespace device = aidl::android::hardware::camera::device;
using aidl::android::hardware::graphics::common::PixelFormat;
using ndk::ScopedAStatus;
using offlinecamera::ImportedBuffer;
using Client = std::shared_ptr<camera::IOfflineCameraCallback>;

namespace {

ScopedAStatus refuse(const std::string& why) {
    fprintf(stderr, "minimal_service: %s\n", why.c_str());  // goes to the device's log
    return ScopedAStatus::fromServiceSpecificErrorWithMessage(1, why.c_str());
}

// Four RAW10 pixels are five bytes; each of the first four holds the upper eight bits of one.
void develop(const imaging::RawView& raw, const imaging::MutableNv12View& picture) {
    const uint32_t left = (raw.width - picture.width) / 2, top = (raw.height - picture.height) / 2;
    for (uint32_t y = 0; y < picture.height; ++y) {
        const uint8_t* const from = raw.data + (y + top) * raw.strideBytes;
        uint8_t* const to = picture.y + y * picture.strideBytes;
        for (uint32_t x = 0; x < picture.width; ++x)
            to[x] = from[(x + left) / 4 * 5 + (x + left) % 4];
    }
    for (uint32_t y = 0; y < picture.height / 2; ++y) {
        memset(picture.uv + y * picture.strideBytes, 128, picture.width);  // grey
    }
}

class Session : public camera::BnOfflineCameraSession {
  public:
    explicit Session(Client client) : m_client(std::move(client)) {}
    ~Session() override { finish(); }

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
        finish();
        m_streams = streams;
        return ScopedAStatus::ok();
    }

    ScopedAStatus processOfflineRequest(const std::vector<camera::OfflineRequestInfo>& requests,
                                        int32_t* frameNumber) override {
        if (m_streams.empty() || requests.size() != 1 || requests[0].inFrameInfos.size() != 1) {
            return refuse("one request with one frame, after streams are configured");
        }
        finish();  // the frame before
        camera::OfflineCaptureResult result;
        const std::string problem =
                take(requests[0].inFrameInfos[0].buffers, 0, &m_input, &result.inFrameInfo) +
                take(requests[0].outputBuffers, 1, &m_output, &result.outFrameInfo);
        if (!problem.empty()) return refuse(problem);
        *frameNumber = requests[0].frameNumber == -1 ? m_nextFrame++ : requests[0].frameNumber;
        result.frameNumber = *frameNumber;
        // The client learns the frame number when this call returns, so the work waits for nobody.
        m_worker = std::thread(&Session::work, this, std::move(result));
        return ScopedAStatus::ok();
    }

    ScopedAStatus closeOfflineSession() override {
        finish();
        m_streams.clear();
        return ScopedAStatus::ok();
    }

  private:
    // Imports the one buffer of a stream, and notes for the result which one it was.
    std::string take(const std::vector<device::StreamBuffer>& buffers, size_t stream,
                     ImportedBuffer* imported, camera::OfflineFrameInfo* info) const {
        if (buffers.size() != 1) return "one buffer for each stream; ";
        info->buffers.resize(1);
        info->buffers[0].streamId = buffers[0].streamId;
        info->buffers[0].bufferId = buffers[0].bufferId;
        info->numPartialMetadata = 1;
        const auto mapper = ImportedBuffer::IMapper::getService();
        if (mapper == nullptr) return "no graphics mapper; ";
        *imported = ImportedBuffer();
        return imported->Import(mapper, buffers[0].buffer, buffers[0].acquireFence,
                                m_streams[stream]);
    }

    void work(camera::OfflineCaptureResult result) {
        std::string problem;
        {  // unlocked before the result: then the client reads the picture
            offlinecamera::LockedBuffer mosaic, picture;
            problem = mosaic.Lock(m_input, offlinecamera::Access::kRead);
            if (problem.empty()) problem = picture.Lock(m_output, offlinecamera::Access::kWrite);
            if (problem.empty()) develop(mosaic.Raw(m_streams[0]), picture.Nv12(m_streams[1]));
        }
        if (!problem.empty()) {
            refuse(problem);
            result.outFrameInfo.buffers[0].status = device::BufferStatus::ERROR;
        }
        device::ShutterMsg shutter;
        shutter.frameNumber = result.frameNumber;
        m_client->notify({device::NotifyMsg(shutter)});
        std::vector<camera::OfflineCaptureResult> results;
        results.push_back(std::move(result));
        m_client->processCaptureResult(results);
    }

    void finish() {
        if (m_worker.joinable()) m_worker.join();
    }

    const Client m_client;
    std::vector<device::Stream> m_streams;
    ImportedBuffer m_input, m_output;
    int32_t m_nextFrame = 1;
    std::thread m_worker;
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

// A service in the test's own process with one open session, requests whose buffers come from the
// real allocator of the stand-in device, and a client that writes down what the service tells it.
#pragma once

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BnOfflineCameraCallback.h>
#include <gmock/gmock.h>

#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>
#include <vector>

#include "faults.h"
#include "host/services/graphicsallocator/allocator.h"
#include "service.h"

namespace offlinecamera {

namespace device = ::aidl::android::hardware::camera::device;
namespace package = ::aidl::vendor::zel::hardware::camera::offlinecamera;
using ::aidl::android::hardware::common::NativeHandle;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using device::StreamType;
using ndk::ScopedAStatus;

// A buffer that fits the stream; a BLOB one is `spare` bytes longer than the stream's size.
inline NativeHandle Allocate(const Stream& stream, int32_t spare = 0) {
    const bool blob = stream.format == PixelFormat::BLOB;
    graphics::Allocator::BufferDescriptorInfo info;
    info.name.fill(0);
    info.width = blob ? stream.bufferSize + spare : stream.width;
    info.height = blob ? 1 : stream.height;
    info.layerCount = 1;
    info.format = stream.format;
    info.usage = stream.usage;
    graphics::Allocator::AllocationResult made;
    const auto status = ndk::SharedRefBase::make<graphics::Allocator>()->allocate2(info, 1, &made);
    EXPECT_TRUE(status.isOk()) << status.getMessage();
    return status.isOk() ? std::move(made.buffers[0]) : NativeHandle();
}

// Events, in order of arrival:
//   "shutter F", "error F", "result F out 1:7 in 0:1 0:2" (stream:buffer; "!" after a buffer with
//   status ERROR), "lend S x N", "return S:B", "empty CALLBACK".
// It lends buffers with ids from 101 on and answers empty lists with an error. Thread-safe.
class RecordingClient : public package::BnOfflineCameraCallback {
  public:
    ScopedAStatus notify(const std::vector<NotifyMsg>& messages) override {
        if (messages.empty()) return Add("empty notify");
        if (messages[0].getTag() == NotifyMsg::error) {
            return Add("error " + std::to_string(messages[0].get<NotifyMsg::error>().frameNumber));
        }
        return Add("shutter " + std::to_string(messages[0].get<NotifyMsg::shutter>().frameNumber));
    }

    ScopedAStatus processCaptureResult(const std::vector<OfflineCaptureResult>& results) override {
        if (results.empty()) return Add("empty result");
        if (onResult) onResult(results[0]);
        return Add("result " + std::to_string(results[0].frameNumber) + " out" +
                   Text(results[0].outFrameInfo.buffers) + " in" +
                   Text(results[0].inFrameInfo.buffers));
    }

    ScopedAStatus requestStreamBuffers(const std::vector<package::OfflineBufferRequest>& requests,
                                       std::vector<package::OfflineStreamBufferRet>* answers,
                                       device::BufferRequestStatus*) override {
        if (requests.empty()) return Add("empty request");
        const Stream& stream = requests[0].stream;
        std::vector<StreamBuffer> buffers(requests[0].numBuffersRequested);
        for (StreamBuffer& buffer : buffers) {
            buffer.streamId = stream.id;
            buffer.bufferId = ++m_lastLentId;
            if (!lendsEmptyHandles) buffer.buffer = Allocate(stream);
        }
        answers->resize(1);
        answers->front().val = device::StreamBuffersVal::make<device::StreamBuffersVal::buffers>(
                std::move(buffers));
        return Add("lend " + std::to_string(stream.id) + " x " +
                   std::to_string(requests[0].numBuffersRequested));
    }

    ScopedAStatus returnStreamBuffers(const std::vector<StreamBuffer>& buffers) override {
        return Add(buffers.empty() ? "empty return" : "return" + Text(buffers));
    }

    // Waits until `count` events have come, not longer than 30 s, and returns all of them.
    std::vector<std::string> WaitForEvents(size_t count) {
        std::unique_lock<std::mutex> guard(m_lock);
        EXPECT_TRUE(m_changed.wait_for(guard, std::chrono::seconds(30),
                                       [&] { return m_events.size() >= count; }))
                << "waited for " << count << " events";
        return m_events;
    }

    std::vector<std::string> Events() { return WaitForEvents(0); }

    // Set before the request is sent.
    std::function<void(const OfflineCaptureResult&)> onResult;
    bool lendsEmptyHandles = false;

  private:
    static std::string Text(const std::vector<StreamBuffer>& buffers) {
        std::string text;
        for (const StreamBuffer& buffer : buffers) {
            text += " " + std::to_string(buffer.streamId) + ":" + std::to_string(buffer.bufferId);
            if (buffer.status != BufferStatus::OK) text += "!";
            if (!buffer.buffer.fds.empty() || !buffer.buffer.ints.empty()) text += " with handle";
        }
        return text;
    }

    ScopedAStatus Add(const std::string& event) {
        std::lock_guard<std::mutex> guard(m_lock);
        m_events.push_back(event);
        m_changed.notify_all();
        return event.rfind("empty", 0) == 0 ? ScopedAStatus::fromServiceSpecificError(1)
                                            : ScopedAStatus::ok();
    }

    std::mutex m_lock;
    std::condition_variable m_changed;
    std::vector<std::string> m_events;
    std::atomic<int64_t> m_lastLentId{100};
};

inline Stream MakeStream(int32_t id, StreamType type, PixelFormat format, int32_t width,
                         int32_t height) {
    Stream stream;
    stream.id = id;
    stream.streamType = type;
    stream.width = width;
    stream.height = height;
    stream.format = format;
    stream.usage = ::aidl::android::hardware::graphics::common::BufferUsage::CPU_READ_OFTEN;
    stream.bufferSize = format == PixelFormat::BLOB ? 20000 : 0;
    return stream;
}

// The configurations that the tool sends, with small frames and a crop: RAW10 and YUV inputs of
// 16 x 12, YUV outputs of 12 x 8, BLOB buffers of 20000 bytes.
inline OfflineSessionConfigureInfo Configuration(OpMode mode) {
    const auto in = StreamType::INPUT, out = StreamType::OUTPUT;
    const auto raw = PixelFormat::RAW10, yuv = PixelFormat::YCBCR_420_888;
    OfflineSessionConfigureInfo info;
    info.cameraId = "2";
    info.opMode = static_cast<int32_t>(mode);
    if (mode == OpMode::kB2Y) {
        info.streams = {MakeStream(0, in, raw, 16, 12), MakeStream(1, out, yuv, 12, 8)};
    } else if (mode == OpMode::kMMF) {
        info.streams = {MakeStream(0, in, raw, 16, 12), MakeStream(1, in, yuv, 8, 6),
                        MakeStream(2, out, yuv, 12, 8)};
    } else {
        info.streams = {MakeStream(0, in, yuv, 16, 12),
                        MakeStream(1, out, PixelFormat::BLOB, 16, 12)};
    }
    return info;
}

class SessionFixture : public testing::Test {
  protected:
    // Starts a service with these faults ("NAME" or "NAME=ARG") and opens a session.
    void Open(const std::vector<std::string>& faults = {}) {
        FaultInjector injector;
        for (const std::string& fault : faults) ASSERT_TRUE(injector.Add(fault).Ok()) << fault;
        m_service = ndk::SharedRefBase::make<OfflineCameraService>(
                ImportedBuffer::IMapper::getService(), std::move(injector));
        ASSERT_TRUE(m_service->openOfflineSession("test", m_client, &m_session).isOk());
        ASSERT_NE(m_session, nullptr);
    }

    // Configures the open session, and so do requests, with m_configuration.
    void Configure(OfflineSessionConfigureInfo configuration) {
        m_configuration = std::move(configuration);
        const auto status = m_session->configureOfflineStreams(m_configuration);
        ASSERT_TRUE(status.isOk()) << status.getDescription();
    }

    void OpenAndConfigure(OpMode mode, const std::vector<std::string>& faults = {}) {
        Open(faults);
        Configure(Configuration(mode));
    }

    // A request as the tool makes it: input ids from 1 on across frames, output ids from 1 on.
    OfflineRequestInfo MakeInfo() {
        int64_t nextId = 1;
        const auto makeBuffers = [&](StreamType type) {
            std::vector<StreamBuffer> buffers;
            for (const Stream& stream : m_configuration.streams) {
                if (stream.streamType != type) continue;
                buffers.emplace_back();
                buffers.back().streamId = stream.id;
                buffers.back().bufferId = nextId++;
                buffers.back().buffer = Allocate(stream, /* spare */ 100);
            }
            return buffers;
        };
        OfflineRequestInfo info;
        info.frameNumber = -1;
        info.inFrameInfos.resize(m_configuration.opMode == static_cast<int32_t>(OpMode::kMMF) ? 3
                                                                                              : 1);
        for (auto& frame : info.inFrameInfos) frame.buffers = makeBuffers(StreamType::INPUT);
        nextId = 1;
        info.outputBuffers = makeBuffers(StreamType::OUTPUT);
        return info;
    }

    // Sends one request. Returns the frame number, or the text of the refusal.
    std::string Process(OfflineRequestInfo info) {
        std::vector<OfflineRequestInfo> requests;
        requests.push_back(std::move(info));
        int32_t frameNumber = 0;
        const auto status = m_session->processOfflineRequest(requests, &frameNumber);
        return status.isOk() ? std::to_string(frameNumber) : status.getMessage();
    }

    void Close() { EXPECT_TRUE(m_session->closeOfflineSession().isOk()); }

    std::shared_ptr<OfflineCameraService> m_service;
    std::shared_ptr<RecordingClient> m_client = ndk::SharedRefBase::make<RecordingClient>();
    std::shared_ptr<package::IOfflineCameraSession> m_session;
    OfflineSessionConfigureInfo m_configuration;
};

}  // namespace offlinecamera

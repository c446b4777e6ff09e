// Sessions, buffers and requests for tests.
#include "session_fixture.h"

#include "host/services/graphicsallocator/allocator.h"

namespace offlinecamera {

Stream MakeStream(int32_t id, StreamType type, PixelFormat format, int32_t width, int32_t height) {
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

OfflineSessionConfigureInfo Configuration(OpMode mode) {
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

NativeHandle Allocate(const Stream& stream, int32_t spare) {
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

void SessionFixture::Open(const std::vector<std::string>& faults) {
    FaultInjector injector;
    for (const std::string& fault : faults) ASSERT_TRUE(injector.Add(fault).Ok()) << fault;
    m_service = ndk::SharedRefBase::make<OfflineCameraService>(
            ImportedBuffer::IMapper::getService(), std::move(injector));
    ASSERT_TRUE(m_service->openOfflineSession("test", m_client, &m_session).isOk());
    ASSERT_NE(m_session, nullptr);
}

void SessionFixture::Configure(OfflineSessionConfigureInfo configuration) {
    m_configuration = std::move(configuration);
    const auto status = m_session->configureOfflineStreams(m_configuration);
    ASSERT_TRUE(status.isOk()) << status.getDescription();
}

OfflineRequestInfo SessionFixture::MakeInfo() {
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
    info.inFrameInfos.resize(m_configuration.opMode == static_cast<int32_t>(OpMode::kMMF) ? 3 : 1);
    for (auto& frame : info.inFrameInfos) frame.buffers = makeBuffers(StreamType::INPUT);
    nextId = 1;
    info.outputBuffers = makeBuffers(StreamType::OUTPUT);
    return info;
}

std::string SessionFixture::Process(OfflineRequestInfo info) {
    std::vector<OfflineRequestInfo> requests;
    requests.push_back(std::move(info));
    int32_t frameNumber = 0;
    const auto status = m_session->processOfflineRequest(requests, &frameNumber);
    return status.isOk() ? std::to_string(frameNumber) : status.getMessage();
}

}  // namespace offlinecamera

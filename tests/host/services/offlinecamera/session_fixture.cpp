// Sessions and requests for tests.
#include "session_fixture.h"

#include <imaging/raw10.h>

namespace offlinecamera {

uint16_t MosaicPixel(int frame, uint32_t x, uint32_t y) {
    return static_cast<uint16_t>((200 + 37 * x + 53 * y + 211 * frame + 17 * x * y) % 1024);
}

void Fill(const NativeHandle& handle, const Stream& stream, int frame) {
    WithBuffer(handle, stream, Access::kWrite, [&](const LockedBuffer& buffer) {
        const auto width = static_cast<uint32_t>(stream.width);
        const auto height = static_cast<uint32_t>(stream.height);
        if (stream.format == PixelFormat::RAW10) {
            const auto view = buffer.Raw(stream);
            std::vector<uint16_t> row(width);
            for (uint32_t y = 0; y < height; ++y) {
                for (uint32_t x = 0; x < width; ++x) row[x] = MosaicPixel(frame, x, y);
                imaging::PackRaw10Row(row.data(), width, view.data + y * view.strideBytes);
            }
            return;
        }
        const auto view = buffer.Nv12(stream);
        for (uint32_t y = 0; y < height; ++y) {
            for (uint32_t x = 0; x < width; ++x) {
                view.y[y * view.strideBytes + x] = static_cast<uint8_t>(10 * x + 5 * y);
                if (y % 2 == 0) {
                    view.uv[y / 2 * view.strideBytes + x] = static_cast<uint8_t>(100 + 8 * y + x);
                }
            }
        }
    });
}

void SessionFixture::Open(const std::vector<std::string>& faults) {
    FaultInjector injector;
    for (const std::string& fault : faults) ASSERT_EQ(injector.Add(fault), "");
    mService = ndk::SharedRefBase::make<OfflineCameraService>(TestMapper(), std::move(injector));
    const auto status = mService->openOfflineSession("test", mClient, &mSession);
    ASSERT_TRUE(status.isOk()) << status.getDescription();
    ASSERT_NE(mSession, nullptr);
}

void SessionFixture::OpenAndConfigure(OpMode mode, const std::vector<std::string>& faults) {
    Open(faults);
    mConfiguration = Configuration(mode);
    const auto status = mSession->configureOfflineStreams(mConfiguration);
    ASSERT_TRUE(status.isOk()) << status.getDescription();
}

std::vector<StreamBuffer> SessionFixture::MakeBuffers(StreamType type, int frame, int64_t* nextId) {
    std::vector<StreamBuffer> buffers;
    for (const Stream& stream : mConfiguration.streams) {
        if (stream.streamType != type) continue;
        StreamBuffer buffer;
        buffer.streamId = stream.id;
        buffer.bufferId = (*nextId)++;
        buffer.buffer = Allocate(stream, /* spare */ 100);
        if (type == StreamType::INPUT) Fill(buffer.buffer, stream, frame);
        mHandles[{stream.id, buffer.bufferId}] = Dup(buffer.buffer);
        buffers.push_back(std::move(buffer));
    }
    return buffers;
}

OfflineRequestInfo SessionFixture::MakeInfo() {
    OfflineRequestInfo info;
    info.frameNumber = -1;
    const int frames = mConfiguration.opMode == static_cast<int32_t>(OpMode::kMMF) ? 3 : 1;
    int64_t nextId = 1;
    for (int f = 0; f < frames; ++f) {
        OfflineFrameInfo frame;
        frame.buffers = MakeBuffers(StreamType::INPUT, f, &nextId);
        info.inFrameInfos.push_back(std::move(frame));
    }
    nextId = 1;
    info.outputBuffers = MakeBuffers(StreamType::OUTPUT, 0, &nextId);
    return info;
}

std::string SessionFixture::Process(OfflineRequestInfo info) {
    std::vector<OfflineRequestInfo> requests;
    requests.push_back(std::move(info));
    int32_t frameNumber = 0;
    const auto status = mSession->processOfflineRequest(requests, &frameNumber);
    return status.isOk() ? std::to_string(frameNumber) : status.getMessage();
}

}  // namespace offlinecamera

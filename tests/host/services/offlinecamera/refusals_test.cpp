// The words in which stream sets and requests are refused. offlineservicecheck tests that they are
// refused, and all that a session does.
#include <gmock/gmock.h>

#include <functional>

#include "camera_metadata_blob.h"
#include "host/services/graphicsallocator/allocator.h"
#include "request.h"

namespace offlinecamera {
namespace {

namespace device = ::aidl::android::hardware::camera::device;
using ::aidl::android::hardware::graphics::common::PixelFormat;
using device::StreamType;
using ::testing::HasSubstr;

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

// The tool's stream sets, with small frames.
OfflineSessionConfigureInfo Configuration(OpMode mode) {
    const auto in = StreamType::INPUT, out = StreamType::OUTPUT;
    const auto raw = PixelFormat::RAW10, yuv = PixelFormat::YCBCR_420_888;
    OfflineSessionConfigureInfo info;
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

TEST(Refusals, StreamsThatDoNotFitTheModeAreNamed) {
    const OpMode b2y = OpMode::kB2Y;
    const struct {
        OpMode mode;
        std::function<void(OfflineSessionConfigureInfo&)> change;
        const char* refusal;  // empty: taken
    } cases[] = {
            {OpMode::kMMF, [](auto& i) { std::swap(i.streams[1], i.streams[2]); }, ""},
            {b2y, [](auto& i) { i.opMode = 2; }, "op mode 2 has no stream set"},
            {b2y, [](auto& i) { i.streams.push_back(i.streams[0]); }, "stream 0 is there twice"},
            {b2y, [](auto& i) { i.streams.pop_back(); }, "no output stream"},
            {b2y, [](auto& i) { i.streams[0].format = PixelFormat::RAW12; }, "has format RAW12"},
            {b2y, [](auto& i) { i.streams[1].width = 18; }, "stream 1 is 18 x 8: larger"},
            {b2y, [](auto& i) { i.streams[1].height = 7; }, "stream 1 is 12 x 7: sides are even"},
            {b2y, [](auto& i) { i.streams[0].width = 18; }, "multiple of 4"},
            {b2y, [](auto& i) { i.streams[0].rotation = device::StreamRotation::ROTATION_90; },
             "asks for rotation"},
            {b2y, [](auto& i) { i.sessionParams.assign(3, 1); }, "metadata of 3 bytes"},
            {b2y, [](auto& i) { i.streams.resize(20); }, "20 streams"},
            {OpMode::kY2J, [](auto& i) { i.streams[1].bufferSize = 8; }, "size of 8 bytes"},
            {OpMode::kY2J, [](auto& i) { i.streams[1].width = 8; }, "nothing is scaled"},
    };
    for (const auto& [mode, change, refusal] : cases) {
        OfflineSessionConfigureInfo info = Configuration(mode);
        change(info);
        const auto made = MakeStreamSet(info);
        EXPECT_THAT(made.Ok() ? "" : made.Error(), HasSubstr(refusal));
        EXPECT_EQ(made.Ok(), *refusal == '\0');
    }
}

StreamBuffer BufferOf(const Stream& stream, int64_t id) {
    graphics::Allocator::BufferDescriptorInfo info;
    info.name.fill(0);
    info.width = stream.width;
    info.height = stream.height;
    info.layerCount = 1;
    info.format = stream.format;
    info.usage = stream.usage;
    graphics::Allocator::AllocationResult made;
    const auto status = ndk::SharedRefBase::make<graphics::Allocator>()->allocate2(info, 1, &made);
    EXPECT_TRUE(status.isOk()) << status.getMessage();
    StreamBuffer buffer;
    buffer.streamId = stream.id;
    buffer.bufferId = id;
    if (status.isOk()) buffer.buffer = std::move(made.buffers[0]);
    return buffer;
}

TEST(Refusals, WhatIsWrongWithARequestIsNamed) {
    using Change = std::function<void(OfflineRequestInfo&)>;
    const Stream small = MakeStream(0, StreamType::INPUT, PixelFormat::RAW10, 16, 10);
    const std::pair<Change, const char*> cases[] = {
            {[](auto&) {}, ""},
            {[](auto& i) { i.inFrameInfos.pop_back(); }, "2 input frames: the mode takes 3"},
            {[](auto& i) { i.inFrameInfos[1].buffers[0].streamId = 9; },
             "input frame 1: stream 9 is not configured"},
            {[](auto& i) { i.inFrameInfos[1].buffers[1].streamId = 0; }, "has two buffers"},
            {[](auto& i) { i.inFrameInfos[2].buffers[0].bufferId = 1; }, "used twice"},
            {[&](auto& i) { i.inFrameInfos[0].buffers[0] = BufferOf(small, 1); },
             "the buffer is 16 x 10, its stream 16 x 12"},
            {[](auto& i) { i.outputBuffers[0].acquireFence.ints = {1}; }, "acquire fence has 0"},
            {[](auto& i) { i.outputBuffers[0].releaseFence.ints = {1}; }, "release fence"},
            {[](auto& i) { i.outputBuffers[0].status = device::BufferStatus::ERROR; }, "broken"},
            {[](auto& i) { i.frameNumber = -2; }, "frame number -2"},
            {[](auto& i) { i.inFrameInfos[0].metadata = MakeResultMetadata(45); }, "45 degrees"}};
    const OfflineSessionConfigureInfo configuration = Configuration(OpMode::kMMF);
    const auto streams = std::make_shared<StreamSet>(MakeStreamSet(configuration).Value());
    for (const auto& [change, text] : cases) {
        OfflineRequestInfo info;
        int64_t id = 0;
        for (int frame = 0; frame < 3; ++frame) {
            info.inFrameInfos.emplace_back();
            for (const Stream& stream : streams->inputs) {
                info.inFrameInfos.back().buffers.push_back(BufferOf(stream, ++id));
            }
        }
        info.outputBuffers.push_back(BufferOf(streams->outputs[0], 1));
        change(info);
        const auto made = MakeRequest(info, streams);
        EXPECT_THAT(made.Ok() ? "" : made.Error(), HasSubstr(text));
        EXPECT_EQ(made.Ok(), *text == '\0');
    }
}

}  // namespace
}  // namespace offlinecamera

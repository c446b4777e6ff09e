// A session from configuration to close: what is delivered, what the pictures hold, what is
// refused.
#include "session.h"

#include <imaging/b2y.h>
#include <imaging/jpeg.h>
#include <sys/eventfd.h>
#include <system/camera_metadata.h>

#include <cstring>

#include "camera_metadata_blob.h"
#include "refusal.h"
#include "session_fixture.h"
#include "tests/host/imaging/frames.h"
#include "tests/support/eventually.h"

namespace offlinecamera {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

using SessionTest = SessionFixture;

/** The picture without padding: luma rows, then rows of Cb, Cr. */
std::vector<uint8_t> Pixels(const imaging::Nv12View& view) {
    std::vector<uint8_t> pixels;
    for (uint32_t y = 0; y < view.height * 3 / 2; ++y) {
        const uint8_t* row = y < view.height ? view.y + y * view.strideBytes
                                             : view.uv + (y - view.height) * view.strideBytes;
        pixels.insert(pixels.end(), row, row + view.width);
    }
    return pixels;
}

std::vector<uint8_t> Pixels(const NativeHandle& handle, const Stream& stream) {
    std::vector<uint8_t> pixels;
    WithBuffer(handle, stream, Access::kRead,
               [&](const LockedBuffer& buffer) { pixels = Pixels(buffer.Nv12(stream)); });
    return pixels;
}

/** What a mosaic given by a function becomes at 12 x 8. */
std::vector<uint8_t> Developed(const imaging::RawFrame::Pixels& mosaic) {
    imaging::RawFrame raw(kWidth, kHeight, mosaic);
    imaging::Nv12Picture picture(12, 8);
    EXPECT_EQ(imaging::RawToNv12(raw.View(), picture.View()), "");
    return Pixels(picture.View());
}

std::vector<uint8_t> Orientation(int32_t degrees) {
    camera_metadata_t* metadata = allocate_camera_metadata(10, 80);
    EXPECT_EQ(add_camera_metadata_entry(metadata, ANDROID_JPEG_ORIENTATION, &degrees, 1), 0);
    const auto* bytes = reinterpret_cast<const uint8_t*>(metadata);
    std::vector<uint8_t> blob(bytes, bytes + get_camera_metadata_size(metadata));
    free_camera_metadata(metadata);
    return blob;
}

}  // namespace

TEST_F(SessionTest, B2YDevelopsTheMosaic) {
    OpenAndConfigure(OpMode::kB2Y);
    EXPECT_EQ(Process(MakeInfo()), "1");
    EXPECT_THAT(mClient->WaitForEvents(2), ElementsAre("shutter 1", "result 1 out 1:1 in 0:1"));
    EXPECT_EQ(Pixels(Handle(1, 1), mConfiguration.streams[1]),
              Developed([](uint32_t x, uint32_t y) { return MosaicPixel(0, x, y); }));
}

TEST_F(SessionTest, MmfDevelopsTheAverageAndBorrowsItsScratchBuffer) {
    OpenAndConfigure(OpMode::kMMF);
    EXPECT_EQ(Process(MakeInfo()), "1");
    EXPECT_THAT(mClient->WaitForEvents(4),
                ElementsAre("shutter 1", "lend 0 x 1", "return 0:101",
                            "result 1 out 2:1 in 0:1 1:2 0:3 1:4 0:5 1:6"));
    const auto average = [](uint32_t x, uint32_t y) {
        return (MosaicPixel(0, x, y) + MosaicPixel(1, x, y) + MosaicPixel(2, x, y) + 1) / 3;
    };
    EXPECT_EQ(Pixels(Handle(2, 1), mConfiguration.streams[2]), Developed(average));
}

TEST_F(SessionTest, Y2JWritesAJpegFileAndATrailerAtTheEndOfTheStreamsSize) {
    OpenAndConfigure(OpMode::kY2J);
    OfflineRequestInfo info = MakeInfo();
    info.metadata = Orientation(180);  // the frame's own goes before it
    info.inFrameInfos[0].metadata = Orientation(90);
    std::optional<int32_t> told;
    mClient->onResult = [&](const auto& result) {
        told = FindJpegOrientation(result.outFrameInfo.metadata);
    };
    EXPECT_EQ(Process(std::move(info)), "1");
    EXPECT_THAT(mClient->WaitForEvents(2), ElementsAre("shutter 1", "result 1 out 1:1 in 0:1"));
    EXPECT_EQ(told, 90);

    std::vector<uint8_t> expected(kBlobSize);
    size_t expectedSize = 0;
    WithBuffer(Handle(0, 1), mConfiguration.streams[0], Access::kRead, [&](const auto& buffer) {
        EXPECT_EQ(imaging::EncodeJpeg(buffer.Nv12(mConfiguration.streams[0]), {95, 90},
                                      expected.data(), expected.size(), &expectedSize),
                  "");
    });
    expected.resize(expectedSize);
    WithBuffer(Handle(1, 1), mConfiguration.streams[1], Access::kRead, [&](const auto& buffer) {
        int32_t trailer[2];
        memcpy(trailer, buffer.Data() + kBlobSize - 8, sizeof(trailer));
        EXPECT_EQ(trailer[0], 0xff);
        ASSERT_EQ(trailer[1], static_cast<int32_t>(expectedSize));
        EXPECT_EQ(std::vector<uint8_t>(buffer.Data(), buffer.Data() + expectedSize), expected);
    });
}

TEST_F(SessionTest, APipelineFailureIsToldAsErrorAndBrokenBuffers) {
    // A JPEG file that does not fit.
    Open();
    mConfiguration = Configuration(OpMode::kY2J);
    mConfiguration.streams[1].bufferSize = 300;
    ASSERT_TRUE(mSession->configureOfflineStreams(mConfiguration).isOk());
    EXPECT_EQ(Process(MakeInfo()), "1");
    EXPECT_THAT(mClient->WaitForEvents(3),
                ElementsAre("shutter 1", "error 1", "result 1 out 1:1! in 0:1"));
}

TEST_F(SessionTest, AClientThatLendsBadlyGetsAnErrorAndItsBuffersBack) {
    OpenAndConfigure(OpMode::kMMF);
    mClient->lendsEmptyHandles = true;
    EXPECT_EQ(Process(MakeInfo()), "1");
    mClient->WaitForEvents(5);
    mClient->lendsTooFew = true;
    EXPECT_EQ(Process(MakeInfo()), "2");
    EXPECT_THAT(mClient->WaitForEvents(9),
                ElementsAre("shutter 1", "lend 0 x 1", "return 0:101", "error 1",
                            "result 1 out 2:1! in 0:1 1:2 0:3 1:4 0:5 1:6",  //
                            "shutter 2", "lend 0 x 1", "error 2",
                            "result 2 out 2:1! in 0:1 1:2 0:3 1:4 0:5 1:6"));
}

TEST_F(SessionTest, AnInputIsReadAfterItsAcquireFence) {
    OpenAndConfigure(OpMode::kB2Y);
    const ndk::ScopedFileDescriptor fence(eventfd(0, EFD_CLOEXEC));
    OfflineRequestInfo info = MakeInfo();
    info.inFrameInfos[0].buffers[0].acquireFence.fds.push_back(fence.dup());
    std::atomic<bool> signalled = false;
    mClient->onResult = [&](const auto&) { EXPECT_TRUE(signalled); };
    EXPECT_EQ(Process(std::move(info)), "1");
    mClient->WaitForEvents(1);
    signalled = true;
    EXPECT_EQ(eventfd_write(fence.get(), 1), 0);
    EXPECT_THAT(mClient->WaitForEvents(2), ElementsAre("shutter 1", "result 1 out 1:1 in 0:1"));
    Close();
}

TEST_F(SessionTest, FrameNumbersCountFromOneAndGivenOnesAreKept) {
    OpenAndConfigure(OpMode::kB2Y);
    EXPECT_EQ(Process(MakeInfo()), "1");
    OfflineRequestInfo given = MakeInfo();
    given.frameNumber = 7;
    EXPECT_EQ(Process(std::move(given)), "7");
    EXPECT_EQ(Process(MakeInfo()), "8");

    std::vector<OfflineRequestInfo> two;
    two.push_back(MakeInfo());
    two.push_back(MakeInfo());
    int32_t frameNumber = 0;
    EXPECT_THAT(mSession->processOfflineRequest(two, &frameNumber).getMessage(),
                HasSubstr("two requests ask for a frame number"));
    two[0].frameNumber = 20;
    EXPECT_TRUE(mSession->processOfflineRequest(two, &frameNumber).isOk());
    EXPECT_EQ(frameNumber, 21);
    mClient->WaitForEvents(10);
}

TEST_F(SessionTest, BadRequestsAreRefusedByNameAndNothingIsDelivered) {
    OpenAndConfigure(OpMode::kMMF);
    const Stream small = MakeStream(0, StreamType::INPUT, PixelFormat::RAW10, 16, 10);
    const Stream yuv = MakeStream(0, StreamType::INPUT, PixelFormat::YCBCR_420_888, 16, 12);
    using Change = std::function<void(OfflineRequestInfo&)>;
    const std::pair<Change, const char*> cases[] = {
            {[](auto& i) { i.inFrameInfos.pop_back(); }, "2 input frames: the mode takes 3"},
            {[](auto& i) { i.outputBuffers.clear(); }, "output: 0 buffers"},
            {[](auto& i) { i.inFrameInfos[1].buffers[0].streamId = 9; },
             "input frame 1: stream 9 is not configured"},
            {[](auto& i) { i.inFrameInfos[1].buffers[1].streamId = 0; },
             "stream 0 has two buffers"},
            {[](auto& i) { i.inFrameInfos[2].buffers[0].bufferId = 1; },
             "input frame 2: stream 0, buffer 1: the buffer id is used twice"},
            {[](auto& i) { i.outputBuffers[0].bufferId = 0; }, "the buffer id is 0"},
            {[](auto& i) { i.outputBuffers[0].buffer = {}; },
             "output: stream 2, buffer 1: the buffer handle is empty"},
            {[](auto& i) { i.outputBuffers[0].buffer.ints.assign(3, 5); }, "does not import"},
            {[&](auto& i) { i.inFrameInfos[0].buffers[0].buffer = Allocate(small); },
             "the buffer is 16 x 10, its stream 16 x 12"},
            {[&](auto& i) { i.inFrameInfos[0].buffers[0].buffer = Allocate(yuv); },
             "has format YCBCR_420_888, its stream RAW10"},
            {[](auto& i) { i.outputBuffers[0].acquireFence.ints = {1}; }, "acquire fence has 0"},
            {[](auto& i) { i.outputBuffers[0].releaseFence.ints = {1}; }, "release fence"},
            {[](auto& i) { i.outputBuffers[0].status = BufferStatus::ERROR; }, "broken"},
            {[](auto& i) { i.frameNumber = -2; }, "frame number -2"},
            {[](auto& i) {
                 i.metadata = {1, 2, 3, 4};
             },
             "metadata of 4 bytes"},
            {[](auto& i) {
                 i.inFrameInfos[1].metadata = Orientation(0);
                 i.inFrameInfos[1].metadata.push_back(0);
             },
             "frame 1: metadata has 289"},
            {[](auto& i) { i.inFrameInfos[0].metadata = Orientation(45); }, "45 degrees"},
    };
    for (const auto& [change, text] : cases) {
        OfflineRequestInfo info = MakeInfo();
        change(info);
        EXPECT_THAT(Process(std::move(info)), HasSubstr(text));
    }
    int32_t frameNumber = 0;
    EXPECT_THAT(mSession->processOfflineRequest({}, &frameNumber).getMessage(),
                HasSubstr("no requests"));
    Close();
    EXPECT_THAT(mClient->Events(), IsEmpty());
}

TEST_F(SessionTest, ABlobBufferShorterThanItsStreamIsRefused) {
    OpenAndConfigure(OpMode::kY2J);
    OfflineRequestInfo info = MakeInfo();
    Stream shorter = mConfiguration.streams[1];
    shorter.bufferSize -= 1;
    info.outputBuffers[0].buffer = Allocate(shorter);
    EXPECT_THAT(Process(std::move(info)), HasSubstr("the stream needs 20000 x 1"));
}

TEST_F(SessionTest, CallsThatDoNotFitTheSessionsStateAreRefused) {
    Open();
    OfflineRequestInfo empty;
    EXPECT_EQ(Process(std::move(empty)), "no streams are configured");
    EXPECT_THAT(mSession->configureOfflineStreams({}).getMessage(), HasSubstr("no streams"));
    Close();
    const auto closed = mSession->closeOfflineSession();
    EXPECT_EQ(closed.getServiceSpecificError(), kWrongState);
    EXPECT_THAT(mSession->configureOfflineStreams(Configuration(OpMode::kB2Y)).getMessage(),
                HasSubstr("the session has ended"));
}

TEST_F(SessionTest, NothingIsDeliveredAfterClose) {
    OpenAndConfigure(OpMode::kB2Y, {"late-result=60000"});
    EXPECT_EQ(Process(MakeInfo()), "1");
    EXPECT_EQ(Process(MakeInfo()), "2");
    mClient->WaitForEvents(1);
    EXPECT_THAT(mSession->configureOfflineStreams(mConfiguration).getMessage(),
                HasSubstr("still being worked on"));
    OfflineRequestInfo again = MakeInfo();
    again.frameNumber = 2;
    EXPECT_THAT(Process(std::move(again)), HasSubstr("frame number 2 is in use"));
    Close();
    EXPECT_THAT(mClient->Events(), ElementsAre("shutter 1"));
}

TEST_F(SessionTest, ClosingInsideACallbackReturns) {
    OpenAndConfigure(OpMode::kB2Y);
    mClient->onResult = [&](const auto&) { Close(); };
    EXPECT_EQ(Process(MakeInfo()), "1");
    EXPECT_THAT(mClient->WaitForEvents(2), ElementsAre("shutter 1", "result 1 out 1:1 in 0:1"));
}

TEST_F(SessionTest, TheDeathOfTheClientEndsTheSession) {
    OpenAndConfigure(OpMode::kB2Y, {"late-result=60000"});
    EXPECT_EQ(Process(MakeInfo()), "1");
    mClient->WaitForEvents(1);
    static_cast<OfflineCameraSession*>(mSession.get())->OnClientDied();
    EXPECT_EQ(mSession->closeOfflineSession().getServiceSpecificError(), kWrongState);
    EXPECT_THAT(mClient->Events(), ElementsAre("shutter 1"));
}

TEST_F(SessionTest, SessionsAreLimitedAndLetGoInEveryWay) {
    Open();
    constexpr size_t kMost = SessionSlots::kMaxSessions / 2;
    std::vector<std::shared_ptr<IOfflineCameraSession>> others(kMost);
    const auto open = [&](size_t i) {
        return mService->openOfflineSession("other", mClient, &others[i]).getServiceSpecificError();
    };
    // A session's thread, which has the slot, ends by itself.
    const auto eventuallyOpens = [&](size_t i) { return eventually([&] { return open(i) == 0; }); };
    for (size_t i = 0; i + 1 < kMost; ++i) ASSERT_EQ(open(i), 0);
    EXPECT_EQ(open(kMost - 1), kNoResources);
    EXPECT_TRUE(others[0]->closeOfflineSession().isOk());
    EXPECT_EQ(open(kMost - 1), 0);
    others[1].reset();
    EXPECT_TRUE(eventuallyOpens(1));
    static_cast<OfflineCameraSession*>(others[2].get())->OnClientDied();
    EXPECT_TRUE(eventuallyOpens(2));
    EXPECT_EQ(open(0), kNoResources);
}

TEST(SessionSlots, AreLimitedForAllTogetherAndForAClientToHalfOfWhatOthersLeave) {
    const auto slots = std::make_shared<SessionSlots>();
    std::vector<SessionSlots::Slot> taken;
    pid_t client = 0;
    for (const size_t most : {8, 4, 2, 1, 1}) {
        ++client;
        for (size_t i = 0; i < most; ++i) {
            taken.push_back(slots->Take(client));
            ASSERT_NE(taken.back(), nullptr);
        }
        EXPECT_EQ(slots->Take(client), nullptr);
    }
    EXPECT_EQ(slots->Take(99), nullptr);
    taken.pop_back();
    EXPECT_NE(slots->Take(99), nullptr);
}

}  // namespace offlinecamera

// Which requests are refused, and in which words; what happens to frame numbers and metadata.
#include "request.h"

#include "camera_metadata_blob.h"
#include "session_fixture.h"

namespace offlinecamera {

using testing::HasSubstr;

TEST_F(SessionFixture, BadRequestsAreRefusedByNameAndNothingIsDelivered) {
    OpenAndConfigure(OpMode::kMMF);
    const Stream small = MakeStream(0, StreamType::INPUT, PixelFormat::RAW10, 16, 10);
    const Stream yuv = MakeStream(0, StreamType::INPUT, PixelFormat::YCBCR_420_888, 16, 12);
    using Change = std::function<void(OfflineRequestInfo&)>;
    const std::pair<Change, const char*> cases[] = {
            {[](auto& i) { i.inFrameInfos.pop_back(); }, "2 input frames: the mode takes 3"},
            {[](auto& i) { i.inFrameInfos[1].buffers[0].streamId = 9; },
             "input frame 1: stream 9 is not configured"},
            {[](auto& i) { i.inFrameInfos[1].buffers[1].streamId = 0; }, "has two buffers"},
            {[](auto& i) { i.inFrameInfos[2].buffers[0].bufferId = 1; }, "used twice"},
            {[](auto& i) { i.outputBuffers[0].bufferId = 0; }, "the buffer id is 0"},
            {[](auto& i) { i.outputBuffers[0].buffer.ints.assign(3, 5); }, "does not import"},
            {[&](auto& i) { i.inFrameInfos[0].buffers[0].buffer = Allocate(small); },
             "the buffer is 16 x 10, its stream 16 x 12"},
            {[&](auto& i) { i.inFrameInfos[0].buffers[0].buffer = Allocate(yuv); },
             "has format YCBCR_420_888, its stream RAW10"},
            {[](auto& i) { i.outputBuffers[0].acquireFence.ints = {1}; }, "acquire fence has 0"},
            {[](auto& i) { i.outputBuffers[0].releaseFence.ints = {1}; }, "release fence"},
            {[](auto& i) { i.outputBuffers[0].status = BufferStatus::ERROR; }, "broken"},
            {[](auto& i) { i.frameNumber = -2; }, "frame number -2"},
            {[](auto& i) { i.frameNumber = INT32_MAX; }, "frame number 2147483647 is too large"},
            {[](auto& i) { i.metadata.assign(4, 1); }, "metadata of 4 bytes"},
            {[](auto& i) {
                 i.inFrameInfos[1].metadata = MakeResultMetadata(0);
                 i.inFrameInfos[1].metadata.push_back(0);
             },
             "frame 1: metadata has "},
            {[](auto& i) { i.inFrameInfos[0].metadata = MakeResultMetadata(45); }, "45 degrees"},
    };
    for (const auto& [change, text] : cases) {
        OfflineRequestInfo info = MakeInfo();
        change(info);
        EXPECT_THAT(Process(std::move(info)), HasSubstr(text));
    }
    int32_t frameNumber = 0;
    EXPECT_STREQ(m_session->processOfflineRequest({}, &frameNumber).getMessage(), "no requests");
    const std::vector<OfflineRequestInfo> many(17);
    EXPECT_EQ(m_session->processOfflineRequest(many, &frameNumber).getServiceSpecificError(), 3);
    Close();
    EXPECT_THAT(m_client->Events(), testing::IsEmpty());

    OpenAndConfigure(OpMode::kY2J);
    OfflineRequestInfo info = MakeInfo();
    info.outputBuffers[0].buffer = Allocate(m_configuration.streams[1], /* spare */ -1);
    EXPECT_THAT(Process(std::move(info)), HasSubstr("the stream needs 20000 x 1"));
}

TEST_F(SessionFixture, FrameNumbersCountFromOneAndGivenOnesAreKept) {
    OpenAndConfigure(OpMode::kB2Y);
    EXPECT_EQ(Process(MakeInfo()), "1");
    OfflineRequestInfo given = MakeInfo();
    given.frameNumber = 7;
    EXPECT_EQ(Process(std::move(given)), "7");
    std::vector<OfflineRequestInfo> two(2);
    for (OfflineRequestInfo& info : two) info = MakeInfo();
    int32_t frameNumber = 0;
    EXPECT_THAT(m_session->processOfflineRequest(two, &frameNumber).getMessage(),
                HasSubstr("two requests ask for a frame number"));
    two[0].frameNumber = 20;
    EXPECT_TRUE(m_session->processOfflineRequest(two, &frameNumber).isOk());
    EXPECT_EQ(frameNumber, 21);
    m_client->WaitForEvents(8);
}

}  // namespace offlinecamera

// Service and sessions: what is delivered, what is refused, how a session ends. The pictures are
// looked at through the tool, in tests/end_to_end.
#include "session.h"

#include <aidl/vendor/zel/hardware/camera/offlinecamera/BpOfflineCameraCallback.h>
#include <android/binder_process.h>
#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include "camera_metadata_blob.h"
#include "refusal.h"
#include "session_fixture.h"
#include "tests/host/graphics/buffers.h"
#include "tests/host/libbinder_ndk/test_bus.h"
#include "tests/support/eventually.h"
#include "tests/support/process_counts.h"

namespace offlinecamera {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

// Threads, descriptors and mapped buffers of this process.
std::vector<size_t> Belongings() {
    const ProcessCounts counts = CountsOf(getpid());
    return {counts.threads, counts.descriptors, static_cast<size_t>(graphics::BufferMappings())};
}

}  // namespace

TEST_F(SessionFixture, MmfBorrowsItsScratchBufferAndGivesABadOneBack) {
    OpenAndConfigure(OpMode::kMMF);
    EXPECT_EQ(Process(MakeInfo()), "1");
    m_client->WaitForEvents(4);
    m_client->lendsEmptyHandles = true;
    EXPECT_EQ(Process(MakeInfo()), "2");
    const std::string inputs = " in 0:1 1:2 0:3 1:4 0:5 1:6";
    EXPECT_THAT(m_client->WaitForEvents(9),
                ElementsAre("shutter 1", "lend 0 x 1", "return 0:101", "result 1 out 2:1" + inputs,
                            "shutter 2", "lend 0 x 1", "return 0:102", "error 2",
                            "result 2 out 2:1!" + inputs));
}

// An input is read only after its acquire fence; this one never signals.
TEST_F(SessionFixture, APipelineFailureIsToldAsErrorAndBrokenBuffers) {
    OpenAndConfigure(OpMode::kB2Y);
    int pipe[2];
    ASSERT_EQ(pipe2(pipe, O_CLOEXEC), 0);
    close(pipe[0]);
    OfflineRequestInfo info = MakeInfo();
    info.inFrameInfos[0].buffers[0].acquireFence.fds.emplace_back(pipe[1]);
    info.metadata = MakeResultMetadata(180);
    info.inFrameInfos[0].metadata = MakeResultMetadata(90);
    m_client->onResult = [&](const auto& result) {
        EXPECT_EQ(FindJpegOrientation(result.outFrameInfo.metadata), 90) << "the frame's own";
    };
    EXPECT_EQ(Process(std::move(info)), "1");
    EXPECT_THAT(m_client->WaitForEvents(3),
                ElementsAre("shutter 1", "error 1", "result 1 out 1:1! in 0:1"));
}

TEST_F(SessionFixture, CallsThatDoNotFitTheStateAreRefused) {
    Open();
    std::vector<int32_t> modes = {9};
    EXPECT_TRUE(m_service->getSupportedOpModes(&modes).isOk());
    EXPECT_THAT(modes, ElementsAre(0, 1, 3));
    EXPECT_EQ(m_service->registerClient(0, nullptr).getServiceSpecificError(), kIllegalArgument);
    EXPECT_TRUE(m_service->registerClient(0, m_client).isOk());
    EXPECT_TRUE(m_service->unregisterClient(0).isOk());
    EXPECT_EQ(m_service->unregisterClient(0).getServiceSpecificError(), kIllegalArgument);

    EXPECT_EQ(Process({}), "no streams are configured");
    Close();
    EXPECT_EQ(m_session->closeOfflineSession().getServiceSpecificError(), kWrongState);
    EXPECT_THAT(m_session->configureOfflineStreams(Configuration(OpMode::kB2Y)).getMessage(),
                HasSubstr("the session has ended"));
    EXPECT_EQ(m_service->openOfflineSession("test", nullptr, &m_session).getServiceSpecificError(),
              kIllegalArgument);
    EXPECT_EQ(m_session, nullptr);
}

TEST_F(SessionFixture, NothingIsDeliveredAfterClose) {
    OpenAndConfigure(OpMode::kB2Y, {"late-result=60000"});
    EXPECT_EQ(Process(MakeInfo()), "1");
    EXPECT_EQ(Process(MakeInfo()), "2");
    m_client->WaitForEvents(1);
    EXPECT_THAT(m_session->configureOfflineStreams(m_configuration).getMessage(),
                HasSubstr("still being worked on"));
    OfflineRequestInfo again = MakeInfo();
    again.frameNumber = 2;
    EXPECT_THAT(Process(std::move(again)), HasSubstr("frame number 2 is in use"));
    Close();
    EXPECT_THAT(m_client->Events(), ElementsAre("shutter 1"));
}

TEST_F(SessionFixture, ClosingInsideACallbackReturns) {
    OpenAndConfigure(OpMode::kB2Y);
    m_client->onResult = [&](const auto&) { Close(); };
    EXPECT_EQ(Process(MakeInfo()), "1");
    EXPECT_THAT(m_client->WaitForEvents(2), ElementsAre("shutter 1", "result 1 out 1:1 in 0:1"));
}

TEST_F(SessionFixture, TheDeathOfAClientEndsItsSessionAndItsRegistration) {
    ABinderProcess_startThreadPool();  // which tells deaths
    Peer peer = StartPeer();
    const auto client = ndk::SharedRefBase::make<package::BpOfflineCameraCallback>(peer.binder);
    Open();
    ASSERT_TRUE(m_service->registerClient(3, client).isOk());
    ASSERT_TRUE(m_service->openOfflineSession("mortal", client, &m_session).isOk());
    peer.Signal(SIGKILL);
    EXPECT_TRUE(Eventually([&] { return Process({}) == "the session has ended"; }));
    EXPECT_FALSE(m_service->unregisterClient(3).isOk());
    EXPECT_EQ(m_service->openOfflineSession("late", client, &m_session).getServiceSpecificError(),
              kIllegalArgument);
}

TEST_F(SessionFixture, AThousandSessionsLeaveNothingBehind) {
    const auto runOne = [this](OpMode mode) {
        OpenAndConfigure(mode);
        EXPECT_EQ(Process(MakeInfo()), "1");
        m_client->WaitForEvents(mode == OpMode::kMMF ? 4 : 2);
        Close();
        m_session.reset();
        m_client = ndk::SharedRefBase::make<RecordingClient>();
    };
    for (OpMode mode : kSupportedOpModes) runOne(mode);
    const auto before = Belongings();
    for (int i = 0; i < 1000; ++i) runOne(kSupportedOpModes[i % 3]);
    EXPECT_TRUE(Eventually([&] {  // the last session's thread ends by itself
        const auto after = Belongings();
        return std::equal(after.begin(), after.end(), before.begin(), std::less_equal<size_t>());
    }));
}

}  // namespace offlinecamera

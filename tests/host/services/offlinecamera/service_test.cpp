// Registrations, modes, and what a thousand sessions leave behind.
#include "service.h"

#include <unistd.h>

#include "host/libbinder_ndk/call_context.h"
#include "refusal.h"
#include "session_fixture.h"
#include "tests/host/graphics/buffers.h"
#include "tests/support/no_threads.h"
#include "tests/support/process_counts.h"

namespace offlinecamera {

using testing::ElementsAre;

namespace {

using ServiceTest = SessionFixture;

struct Belongings {
    ProcessCounts counts = countsOf(getpid());
    int bufferMaps = graphics::bufferMappings();
};

}  // namespace

TEST_F(ServiceTest, AThousandSessionsLeaveNothingBehind) {
    const auto runOne = [this](OpMode mode) {
        OpenAndConfigure(mode);
        EXPECT_EQ(Process(MakeInfo()), "1");
        const size_t events = mode == OpMode::kMMF ? 4 : 2;
        mClient->WaitForEvents(events);
        Close();
        mSession.reset();
        mClient = ndk::SharedRefBase::make<RecordingClient>();
    };
    for (OpMode mode : kSupportedOpModes) runOne(mode);
    const Belongings before;
    for (int i = 0; i < 1000; ++i) runOne(kSupportedOpModes[i % 3]);
    const Belongings after;
    EXPECT_EQ(after.counts.descriptors, before.counts.descriptors);
    EXPECT_EQ(after.counts.threads, before.counts.threads);
    EXPECT_EQ(after.bufferMaps, before.bufferMaps);
}

TEST_F(ServiceTest, ClientsRegisterAndLeave) {
    Open();
    EXPECT_EQ(mService->unregisterClient(0).getServiceSpecificError(), kIllegalArgument);
    EXPECT_EQ(mService->registerClient(0, nullptr).getServiceSpecificError(), kIllegalArgument);
    EXPECT_TRUE(mService->registerClient(0, mClient).isOk());
    EXPECT_TRUE(mService->registerClient(0, mClient).isOk());
    EXPECT_TRUE(mService->unregisterClient(0).isOk());
    EXPECT_FALSE(mService->unregisterClient(0).isOk());
    for (int32_t id = 0; id < 16; ++id) EXPECT_TRUE(mService->registerClient(id, mClient).isOk());
    EXPECT_EQ(mService->registerClient(16, mClient).getServiceSpecificError(), kNoResources);

    hostbinder::CallContext ofAnotherProcess;
    ofAnotherProcess.handling = true;
    const hostbinder::ScopedCallContext scope(ofAnotherProcess);
    EXPECT_FALSE(mService->unregisterClient(0).isOk()) << "each process has its own numbers";
    EXPECT_TRUE(mService->registerClient(16, mClient).isOk());
}

TEST_F(ServiceTest, ASessionWithoutAThreadIsRefused) {
    Open();
    std::shared_ptr<IOfflineCameraSession> session;
    {
        const NoThreads none;
        EXPECT_EQ(mService->openOfflineSession("test", mClient, &session).getServiceSpecificError(),
                  kNoResources);
    }
    EXPECT_TRUE(mService->openOfflineSession("test", mClient, &session).isOk());
}

TEST_F(ServiceTest, ModesAreToldAndACallbackIsNeeded) {
    Open();
    std::vector<int32_t> modes = {9};
    EXPECT_TRUE(mService->getSupportedOpModes(&modes).isOk());
    EXPECT_THAT(modes, ElementsAre(0, 1, 3));
    std::shared_ptr<IOfflineCameraSession> session;
    EXPECT_EQ(mService->openOfflineSession("test", nullptr, &session).getServiceSpecificError(),
              kIllegalArgument);
    EXPECT_EQ(session, nullptr);
}

}  // namespace offlinecamera

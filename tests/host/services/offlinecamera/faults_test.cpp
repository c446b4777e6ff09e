// What a client sees of each fault.
#include "faults.h"

#include <csignal>

#include "camera_metadata_blob.h"
#include "session_fixture.h"

namespace offlinecamera {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::KilledBySignal;

namespace {

using FaultTest = SessionFixture;

constexpr char kShutter[] = "shutter 1";
constexpr char kResult[] = "result 1 out 1:1 in 0:1";
// 0x7eadbeef, an id of no buffer.
constexpr char kForeign[] = "2125315823";

}  // namespace

class FaultEventsTest
    : public SessionFixture,
      public testing::WithParamInterface<std::pair<const char*, std::vector<std::string>>> {};

TEST_P(FaultEventsTest, OneB2YFrameIsReportedAs) {
    const auto& [fault, events] = GetParam();
    OpenAndConfigure(OpMode::kB2Y, {fault});
    EXPECT_EQ(Process(MakeInfo()), "1");
    if (std::string(fault) == "early-result") {
        EXPECT_EQ(mClient->Events(), events);  // without waiting
    }
    EXPECT_EQ(mClient->WaitForEvents(events.size()), events);
    Close();
    EXPECT_EQ(mClient->Events(), events);
}

INSTANTIATE_TEST_SUITE_P(
        Faults, FaultEventsTest,
        testing::Values(
                std::pair("no-shutter", std::vector<std::string>{kResult}),
                std::pair("error-notify", std::vector<std::string>{"error 1", kResult}),
                std::pair("shutter-other-frame", std::vector<std::string>{"shutter 1001", kResult}),
                std::pair("no-result", std::vector<std::string>{kShutter}),
                std::pair("late-result=20", std::vector<std::string>{kShutter, kResult}),
                std::pair("result-first", std::vector<std::string>{kResult, kShutter}),
                std::pair("early-result", std::vector<std::string>{kShutter, kResult}),
                std::pair("split-result",
                          std::vector<std::string>{kShutter, "result 1 out in", kResult}),
                std::pair("wrong-buffers",
                          std::vector<std::string>{kShutter, "result 1 out 1:2125315824 in 0:1"}),
                std::pair("extra-buffer",
                          std::vector<std::string>{kShutter, std::string("result 1 out 1:1 1:") +
                                                                     kForeign + " in 0:1"}),
                std::pair("duplicate-result", std::vector<std::string>{kShutter, kResult, kResult}),
                std::pair("empty-callbacks",
                          std::vector<std::string>{"empty notify", "empty result", "empty request",
                                                   "empty return", kShutter, kResult}),
                std::pair("lend", std::vector<std::string>{"lend 0 x 2", "return 0:101 0:102",
                                                           kShutter, kResult}),
                std::pair("lend=1", std::vector<std::string>{"lend 0 x 1", "return 0:101", kShutter,
                                                             kResult}),
                std::pair("return-twice",
                          std::vector<std::string>{"lend 0 x 1", "return 0:101", "return 0:101",
                                                   kShutter, kResult}),
                std::pair("return-unknown",
                          std::vector<std::string>{std::string("return 0:") + kForeign, kShutter,
                                                   kResult})),
        [](const auto& info) {
            std::string name = info.param.first;
            for (char& c : name) c = isalnum(c) ? c : '_';
            return name;
        });

TEST_F(FaultTest, ReorderedBuffersShowWithSeveralOutputs) {
    Open({"reordered-buffers"});
    mConfiguration = Configuration(OpMode::kB2Y);
    mConfiguration.streams.push_back(mConfiguration.streams[1]);
    mConfiguration.streams[2].id = 5;
    ASSERT_TRUE(mSession->configureOfflineStreams(mConfiguration).isOk());
    EXPECT_EQ(Process(MakeInfo()), "1");
    EXPECT_THAT(mClient->WaitForEvents(2), ElementsAre(kShutter, "result 1 out 5:2 1:1 in 0:1"));
    Close();
}

TEST_F(FaultTest, CorruptMetadataIsNoBlob) {
    OpenAndConfigure(OpMode::kB2Y, {"corrupt-metadata"});
    std::string problem;
    mClient->onResult = [&](const auto& result) {
        problem = CheckMetadataBlob(result.outFrameInfo.metadata);
    };
    EXPECT_EQ(Process(MakeInfo()), "1");
    mClient->WaitForEvents(2);
    EXPECT_THAT(problem, HasSubstr("is not a camera metadata blob"));
    Close();
}

TEST_F(FaultTest, SmallJpegShowsTheCornerOfALargePicture) {
    FaultInjector faults;
    ASSERT_EQ(faults.Add("small-jpeg"), "");
    const uint8_t pixel = 0;
    imaging::Nv12View large = {&pixel, &pixel, 4000, 3000, 4096};
    faults.ShrinkPicture(&large);
    EXPECT_EQ(large.width, 320u);
    EXPECT_EQ(large.height, 240u);
    EXPECT_EQ(large.strideBytes, 4096u);
}

TEST_F(FaultTest, CallsFailOrGiveNoSession) {
    OpenAndConfigure(OpMode::kB2Y, {"process-error"});
    EXPECT_THAT(Process(MakeInfo()), HasSubstr("fault switched on"));
    Open({"configure-error"});
    EXPECT_FALSE(mSession->configureOfflineStreams(Configuration(OpMode::kB2Y)).isOk());
    for (const char* fault : {"open-error", "open-null"}) {
        FaultInjector injector;
        ASSERT_EQ(injector.Add(fault), "");
        const auto service = ndk::SharedRefBase::make<OfflineCameraService>(TestMapper(), injector);
        std::shared_ptr<IOfflineCameraSession> session;
        const auto status = service->openOfflineSession("test", mClient, &session);
        EXPECT_EQ(status.isOk(), std::string(fault) == "open-null");
        EXPECT_EQ(session, nullptr);
    }
}

using FaultDeathTest = SessionFixture;

TEST_F(FaultDeathTest, TheServiceDiesAtTheNamedMoment) {
    EXPECT_EXIT(Open({"die-on-open"}), KilledBySignal(SIGKILL), "");
    EXPECT_EXIT(OpenAndConfigure(OpMode::kB2Y, {"die-on-configure"}), KilledBySignal(SIGKILL), "");
    EXPECT_EXIT(
            {
                OpenAndConfigure(OpMode::kB2Y, {"die-on-process"});
                Process(MakeInfo());
            },
            KilledBySignal(SIGKILL), "");
    EXPECT_EXIT(
            {
                OpenAndConfigure(OpMode::kB2Y, {"die-after-process"});
                if (Process(MakeInfo()) == "1") mClient->WaitForEvents(1);
            },
            KilledBySignal(SIGKILL), "");
}

TEST(FaultInjector, UnknownNamesAndBadArgumentsAreErrors) {
    FaultInjector faults;
    EXPECT_EQ(faults.Add("open-eror"), "unknown fault 'open-eror': 'help' lists them");
    EXPECT_THAT(faults.Add(""), HasSubstr("unknown fault"));
    EXPECT_THAT(faults.Add("allocate-error"), HasSubstr("unknown fault"));
    EXPECT_THAT(faults.Add("no-result=3"), HasSubstr("takes no argument"));
    for (const char* bad : {"lend=", "lend=0", "lend=17", "lend=2x", "lend=99999999999999999999"}) {
        EXPECT_THAT(faults.Add(bad), HasSubstr("is no number of buffers from 1 to 16")) << bad;
    }
    EXPECT_EQ(faults.Add("lend=16"), "");
}

TEST(FaultInjector, HelpTellsEveryFaultOnALineThatBeginsWithItsName) {
    const std::string help = "\n" + FaultInjector::Help();
    for (const FaultName& fault : kFaultNames) {
        EXPECT_THAT(help, HasSubstr(std::string("\n") + fault.name));
        EXPECT_EQ(FaultInjector().Add(fault.name), "");
    }
    EXPECT_EQ(std::count(help.begin(), help.end(), '\n'), 1 + int64_t{std::size(kFaultNames)});
}

}  // namespace offlinecamera

// What a client sees of each fault.
#include "faults.h"

#include "session_fixture.h"

namespace offlinecamera {

using testing::ElementsAre;
using testing::HasSubstr;

namespace {

using FaultTest = SessionFixture;

const std::string kShutter = "shutter 1";
const std::string kResult = "result 1 out 1:1 in 0:1";
// 0x7eadbeef, an id of no buffer.
const std::string kForeign = "2125315823";

std::string Joined(const std::vector<std::string>& events) {
    std::string text;
    for (const std::string& event : events) text += (text.empty() ? "" : "; ") + event;
    return text;
}

}  // namespace

/** A fault, and the events that it leads to. */
using FaultEvents = std::pair<const char*, std::string>;

class FaultEventsTest : public SessionFixture, public testing::WithParamInterface<FaultEvents> {};

TEST_P(FaultEventsTest, OneB2YFrameIsReportedAs) {
    const auto& [fault, events] = GetParam();
    const auto count = static_cast<size_t>(std::count(events.begin(), events.end(), ';')) + 1;
    OpenAndConfigure(OpMode::kB2Y, {fault});
    EXPECT_EQ(Process(MakeInfo()), "1");
    if (std::string(fault) == "early-result") {
        EXPECT_EQ(Joined(mClient->Events()), events);  // without waiting
    }
    EXPECT_EQ(Joined(mClient->WaitForEvents(count)), events);
    Close();
    EXPECT_EQ(Joined(mClient->Events()), events);
}

INSTANTIATE_TEST_SUITE_P(
        Faults, FaultEventsTest,
        testing::Values(
                FaultEvents("no-shutter", kResult),
                FaultEvents("error-notify", "error 1; " + kResult),
                FaultEvents("shutter-other-frame", "shutter 1001; " + kResult),
                FaultEvents("no-result", kShutter),
                FaultEvents("late-result=20", kShutter + "; " + kResult),
                FaultEvents("result-first", kResult + "; " + kShutter),
                FaultEvents("early-result", kShutter + "; " + kResult),
                FaultEvents("split-result", kShutter + "; result 1 out in; " + kResult),
                FaultEvents("wrong-buffers", kShutter + "; result 1 out 1:2125315824 in 0:1"),
                FaultEvents("extra-buffer",
                            kShutter + "; result 1 out 1:1 1:" + kForeign + " in 0:1"),
                FaultEvents("duplicate-result", kShutter + "; " + kResult + "; " + kResult),
                FaultEvents("empty-callbacks",
                            "empty notify; empty result; empty request; empty return; " + kShutter +
                                    "; " + kResult),
                FaultEvents("lend", "lend 0 x 2; return 0:101 0:102; " + kShutter + "; " + kResult),
                FaultEvents("lend=1", "lend 0 x 1; return 0:101; " + kShutter + "; " + kResult),
                FaultEvents("return-twice",
                            "lend 0 x 1; return 0:101; return 0:101; " + kShutter + "; " + kResult),
                FaultEvents("return-unknown",
                            "return 0:" + kForeign + "; " + kShutter + "; " + kResult)),
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

}  // namespace offlinecamera

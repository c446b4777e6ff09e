// What a client sees of each fault.
#include "faults.h"

#include "session_fixture.h"

namespace offlinecamera {

TEST_F(SessionFixture, EachFaultLeadsToItsEvents) {
    const std::string shutter = "shutter 1";
    const std::string result = "result 1 out 1:1 5:2 in 0:1";
    const std::string foreign = "2125315823";  // 0x7eadbeef, an id of no buffer
    // The events of one frame with two outputs.
    const std::pair<const char*, std::vector<std::string>> cases[] = {
            {"no-shutter", {result}},
            {"error-notify", {"error 1", result}},
            {"shutter-other-frame", {"shutter 1001", result}},
            {"no-result", {shutter}},
            {"late-result=20", {shutter, result}},
            {"result-first", {result, shutter}},
            {"early-result", {shutter, result}},
            {"split-result", {shutter, "result 1 out in", result}},
            {"wrong-buffers", {shutter, "result 1 out 1:2125315824 5:2125315825 in 0:1"}},
            {"extra-buffer", {shutter, "result 1 out 1:1 5:2 5:" + foreign + " in 0:1"}},
            {"reordered-buffers", {shutter, "result 1 out 5:2 1:1 in 0:1"}},
            {"duplicate-result", {shutter, result, result}},
            {"empty-callbacks",
             {"empty notify", "empty result", "empty request", "empty return", shutter, result}},
            {"lend", {"lend 0 x 2", "return 0:101 0:102", shutter, result}},
            {"lend=1", {"lend 0 x 1", "return 0:101", shutter, result}},
            {"return-twice", {"lend 0 x 1", "return 0:101", "return 0:101", shutter, result}},
            {"return-unknown", {"return 0:" + foreign, shutter, result}}};
    for (const auto& [fault, events] : cases) {
        SCOPED_TRACE(fault);
        m_client = ndk::SharedRefBase::make<RecordingClient>();
        Open({fault});
        OfflineSessionConfigureInfo twoOutputs = Configuration(OpMode::kB2Y);
        twoOutputs.streams.push_back(twoOutputs.streams[1]);
        twoOutputs.streams[2].id = 5;
        Configure(twoOutputs);
        EXPECT_EQ(Process(MakeInfo()), "1");
        if (std::string(fault) != "early-result") m_client->WaitForEvents(events.size());
        EXPECT_EQ(m_client->Events(), events);
        Close();
        EXPECT_EQ(m_client->Events(), events);
    }
}

TEST(FaultInjector, UnknownNamesAndBadArgumentsAreErrors) {
    FaultInjector faults;
    EXPECT_EQ(faults.Add("open-eror").Error(), "unknown fault 'open-eror': 'help' lists them");
    EXPECT_EQ(faults.Add("no-result=3").Error(), "fault 'no-result' takes no argument");
    for (const std::string bad : {"", "0", "17", "2x", "99999999999999999999"}) {
        EXPECT_EQ(faults.Add("lend=" + bad).Error(),
                  "fault 'lend': '" + bad + "' is no number of buffers from 1 to 16");
    }
    EXPECT_TRUE(faults.Add("lend=16").Ok());
}

}  // namespace offlinecamera

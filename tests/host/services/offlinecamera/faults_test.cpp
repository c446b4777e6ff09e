// What a client sees of the faults that the tool cannot tell apart.
#include "faults.h"

#include "session_fixture.h"

namespace offlinecamera {

TEST_F(SessionFixture, FaultsLeadToTheirEvents) {
    const std::string shutter = "shutter 1";
    const std::string result = "result 1 out 1:1 5:2 in 0:1";
    // The events of one frame with two outputs.
    const std::pair<const char*, std::vector<std::string>> cases[] = {
            {"no-shutter", {result}},
            {"shutter-other-frame", {"shutter 1001", result}},
            {"no-result", {shutter}},
            {"extra-buffer",
             {shutter, "result 1 out 1:1 5:2 5:2125315823 in 0:1"}},  // no buffer's id
            {"reordered-buffers", {shutter, "result 1 out 5:2 1:1 in 0:1"}},
            {"empty-callbacks",
             {"empty notify", "empty result", "empty request", "empty return", shutter, result}},
            {"lend", {"lend 0 x 2", "return 0:101 0:102", shutter, result}},
            {"return-twice", {"lend 0 x 1", "return 0:101", "return 0:101", shutter, result}}};
    for (const auto& [fault, events] : cases) {
        SCOPED_TRACE(fault);
        m_client = ndk::SharedRefBase::make<RecordingClient>();
        Open({fault});
        OfflineSessionConfigureInfo twoOutputs = Configuration(OpMode::kB2Y);
        twoOutputs.streams.push_back(twoOutputs.streams[1]);
        twoOutputs.streams[2].id = 5;
        Configure(twoOutputs);
        EXPECT_EQ(Process(MakeInfo()), "1");
        m_client->WaitForEvents(events.size());
        Close();
        EXPECT_EQ(m_client->Events(), events);
    }
}

}  // namespace offlinecamera

// Which stream configurations are taken, and what is said of the others.
#include "stream_set.h"

#include "session_fixture.h"

namespace offlinecamera {

TEST(StreamSet, StreamsThatDoNotFitTheModeAreNamed) {
    const OpMode b2y = OpMode::kB2Y;
    const struct {
        OpMode mode;
        std::function<void(OfflineSessionConfigureInfo&)> change;
        const char* refusal;  // empty: taken
    } cases[] = {
            {OpMode::kMMF, [](auto& i) { std::swap(i.streams[1], i.streams[2]); }, ""},
            {b2y, [](auto& i) { i.opMode = 2; }, "op mode 2 has no stream set"},
            {b2y, [](auto& i) { i.streams.clear(); }, "op mode 0: no streams"},
            {b2y, [](auto& i) { i.streams.push_back(i.streams[0]); }, "stream 0 is there twice"},
            {b2y, [](auto& i) { i.streams.pop_back(); }, "no output stream"},
            {b2y, [](auto& i) { i.streams[0].format = PixelFormat::RAW12; }, "has format RAW12"},
            {b2y, [](auto& i) { i.streams[1].format = PixelFormat::RAW10; }, "gives YCBCR"},
            {b2y, [](auto& i) { i.streams[1].width = 18; }, "stream 1 is 18 x 8: larger"},
            {b2y, [](auto& i) { i.streams[1].height = 7; }, "stream 1 is 12 x 7: sides are even"},
            {b2y, [](auto& i) { i.streams[0].width = 18; }, "multiple of 4"},
            {b2y, [](auto& i) { i.streams[0].height = 1 << 30; }, "sides are even, 2 to 32768"},
            {b2y, [](auto& i) { i.streams[0].streamType = StreamType(7); }, "neither input nor"},
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
        EXPECT_THAT(made.Ok() ? "" : made.Error(), testing::HasSubstr(refusal));
        EXPECT_EQ(made.Ok(), *refusal == '\0');
    }
}

}  // namespace offlinecamera

// Which stream configurations are taken, and what is said of the others.
#include "stream_set.h"

#include "session_fixture.h"

namespace offlinecamera {

using testing::HasSubstr;

namespace {

using Change = std::function<void(OfflineSessionConfigureInfo&)>;

/** The refusal of a good configuration after a change. */
std::string RefusalOf(OpMode mode, const Change& change) {
    OfflineSessionConfigureInfo info = Configuration(mode);
    change(info);
    StreamSet set;
    return MakeStreamSet(info, &set);
}

}  // namespace

TEST(StreamSet, EveryModeTakesItsOwnStreamsInAnyOrderOfDirections) {
    for (OpMode mode : kSupportedOpModes) {
        OfflineSessionConfigureInfo info = Configuration(mode);
        std::rotate(info.streams.begin(), info.streams.end() - 1, info.streams.end());
        StreamSet set;
        EXPECT_EQ(MakeStreamSet(info, &set), "");
        EXPECT_EQ(set.mode, mode);
        EXPECT_EQ(set.framesPerRequest, mode == OpMode::kMMF ? 3u : 1u);
        EXPECT_EQ(set.inputs.size(), mode == OpMode::kMMF ? 2u : 1u);
        EXPECT_EQ(set.outputs.size(), 1u);
    }
}

TEST(StreamSet, ModesWithoutStreamsAreRefused) {
    for (int32_t mode : {2, 4, 5, -1, 255}) {
        EXPECT_THAT(RefusalOf(OpMode::kB2Y, [&](auto& info) { info.opMode = mode; }),
                    HasSubstr("op mode " + std::to_string(mode) + " has no stream set"));
    }
    EXPECT_THAT(RefusalOf(OpMode::kB2Y, [](auto& info) { info.streams.clear(); }),
                HasSubstr("no streams"));
}

TEST(StreamSet, StreamsThatDoNotFitTheModeAreNamed) {
    const std::pair<Change, const char*> cases[] = {
            {[](auto& i) { i.streams.push_back(i.streams[0]); }, "stream 0 is there twice"},
            {[](auto& i) { i.streams.pop_back(); }, "no output stream"},
            {[](auto& i) { i.streams.erase(i.streams.begin()); }, "0 input streams"},
            {[](auto& i) { i.streams[0].format = PixelFormat::RAW12; }, "has format RAW12"},
            {[](auto& i) { i.streams[1].format = PixelFormat::RAW10; }, "the mode gives YCBCR"},
            {[](auto& i) { i.streams[1].width = 18; }, "stream 1 is 18 x 8: larger"},
            {[](auto& i) { i.streams[1].height = 7; }, "stream 1 is 12 x 7: sides are even"},
            {[](auto& i) { i.streams[0].width = 18; }, "multiple of 4"},
            {[](auto& i) { i.streams[0].width = -4; }, "stream 0 is -4 x 12"},
            {[](auto& i) { i.streams[0].height = 1 << 30; }, "sides are even, 2 to 32768"},
            {[](auto& i) { i.streams[0].streamType = StreamType(7); }, "neither input nor output"},
            {[](auto& i) {
                 i.sessionParams = {1, 2, 3};
             },
             "metadata of 3 bytes"},
            {[](auto& i) { i.streams.resize(20); }, "20 streams"},
    };
    for (const auto& [change, text] : cases) {
        EXPECT_THAT(RefusalOf(OpMode::kB2Y, change), HasSubstr(text));
    }
    EXPECT_THAT(RefusalOf(OpMode::kY2J, [](auto& i) { i.streams[1].bufferSize = 8; }),
                HasSubstr("buffer size of 8 bytes"));
    EXPECT_THAT(RefusalOf(OpMode::kY2J, [](auto& i) { i.streams[1].width = 8; }),
                HasSubstr("nothing is scaled"));
    EXPECT_THAT(RefusalOf(OpMode::kMMF, [](auto& i) { std::swap(i.streams[0], i.streams[1]); }),
                HasSubstr("input stream 1 has format"));
}

}  // namespace offlinecamera

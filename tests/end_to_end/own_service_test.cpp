// The example service as a person starts it: ./run --service.

#include <gmock/gmock.h>

#include "tests/end_to_end/run_script.h"

using ::testing::HasSubstr;

namespace end_to_end {
namespace {

using OwnService = RunScript;

constexpr size_t kRawStride = 5120;  // 4096 pixels in RAW10, a multiple of 64
constexpr size_t kYuvStride = 4096;
constexpr size_t kScanlines = 3072;

TEST_F(OwnService, GivesTheMosaicInGrey) {
    const Finished finished = Run({"--service", MINIMAL_SERVICE, "--planes", "-t", "B2Y"});
    EXPECT_EQ(finished.status, 0) << finished.err;
    EXPECT_EQ(finished.out, "cmd: -t=B2Y\nopMode: B2Y=0\nret: =0\n");
    const std::string frames = m_root + "/out/camera/offlinecameratest/";
    const std::string raw = ReadFile(frames + "4096_3072_RAW10.raw");
    const std::string picture =
            ReadFile(frames + "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv");
    ASSERT_EQ(picture.size(), kYuvStride * kScanlines * 3 / 2);
    size_t differences = 0;
    for (size_t y = 0; y < 3000; ++y) {
        const size_t row = (y + 36) * kRawStride;  // the middle 4000 x 3000 of 4096 x 3072
        for (size_t x = 0; x < 4000; ++x) {
            const size_t column = x + 48;
            differences += picture[y * kYuvStride + x] != raw[row + column / 4 * 5 + column % 4];
        }
    }
    EXPECT_EQ(differences, 0u);
    const std::string chroma = picture.substr(kYuvStride * (kScanlines + 1499), 4000);
    EXPECT_EQ(chroma, std::string(4000, '\x80'));
    for (const LogLine& line : ReadLog(m_root + "/out/run.log")) {
        EXPECT_NE(line.priority, 'E') << line.message;
    }
}

TEST_F(OwnService, RefusesWhatItCannotDoAndSaysWhy) {
    for (const char* mode : {"Y2J", "MMF", "Y2Y"}) {
        const Finished finished = Run({"--service", MINIMAL_SERVICE, "-t", mode});
        EXPECT_EQ(finished.status, 0) << finished.err;
        EXPECT_THAT(ReadFile(m_root + "/out/run.log"),
                    HasSubstr("ConfigureOfflineStreams, FAILED..."));
        EXPECT_THAT(ReadFile(m_root + "/out/device.log"), HasSubstr("op mode 0 only"));
    }
    EXPECT_EQ(Run({"--service", MINIMAL_SERVICE, "-t", "callback"}).status, 0);
}

}  // namespace
}  // namespace end_to_end

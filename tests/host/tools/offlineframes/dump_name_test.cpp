// What file names tell, and that hostile ones tell nothing wrong.

#include "host/tools/offlineframes/dump_name.h"

#include <gmock/gmock.h>

namespace offlineframes {
namespace {

using testing::Optional;

TEST(DumpName, GivesTheNumbersOfFramesAndJpegs) {
    const auto dump = parseDumpName(
            "/data/x/OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv");
    ASSERT_TRUE(dump);
    EXPECT_THAT(dump->stride, Optional(4096u));
    EXPECT_THAT(dump->scanlines, Optional(3072u));
    EXPECT_FALSE(dump->width);
    const auto jpeg =
            parseDumpName("OfflineAidl_CameraId_0_Frame_12_Y2J_Width[4000]_Height[3000].jpg");
    ASSERT_TRUE(jpeg);
    EXPECT_THAT(jpeg->width, Optional(4000u));
    EXPECT_THAT(jpeg->height, Optional(3000u));
    EXPECT_FALSE(jpeg->stride);
}

TEST(DumpName, LeavesUnusableNumbersUnknown) {
    // 0 is what the name carries when the planes could not be asked for.
    for (const char* number :
         {"0", "", "-1", "+8", "4096x", " 4096", "99999999999", "0x10", "4e3"}) {
        const auto dump = parseDumpName(
                std::string("OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[") + number +
                "].yuv");
        ASSERT_TRUE(dump) << number;
        EXPECT_THAT(dump->stride, Optional(4096u)) << number;
        EXPECT_FALSE(dump->scanlines) << number;
    }
}

TEST(DumpName, SurvivesHostileNames) {
    // A camera id may hold anything: the last bracket of a key counts.
    const auto odd = parseDumpName(
            "OfflineAidl_CameraId_x_Stride[1]_Frame_1.unknown_Stride[640]_Scanline[512].yuv");
    ASSERT_TRUE(odd);
    EXPECT_THAT(odd->stride, Optional(640u));

    const auto open = parseDumpName("OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096_Scanline[.yuv");
    ASSERT_TRUE(open);
    EXPECT_FALSE(open->stride);
    EXPECT_FALSE(open->scanlines);

    for (const char* name :
         {"", "/", ".yuv", "Stride[4096]_Scanline[3072].yuv", "OfflineAidl_CameraId_",
          "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].unknown",
          "OfflineAidl_CameraId_2_Frame_1_B2Y_Stride[4096]_Scanline[3072].yuv/other"}) {
        EXPECT_FALSE(parseDumpName(name)) << name;
    }
}

}  // namespace
}  // namespace offlineframes

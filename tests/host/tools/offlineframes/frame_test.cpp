// Frames: byte counts, what names tell, and every bit of what is encoded.

#include <gmock/gmock.h>

#include "host/tools/offlineframes/frame_encoder.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::HasSubstr;
using testing::Optional;

TEST(FrameGeometry, PadsAndCountsAsTheAllocatorDoes) {
    const struct {
        FrameGeometry geometry;
        size_t bytes;
    } cases[] = {
            {{FrameFormat::kRaw10, {4096, 3072}, 5120, 3072}, 15728640},
            {{FrameFormat::kRaw10, {100, 10}, 128, 10}, 1280},
            {{FrameFormat::kNv12, {4000, 3000}, 4096, 3072}, 18874368},
            {{FrameFormat::kNv12, {640, 480}, 640, 512}, 491520},
    };
    for (const auto& c : cases) {
        EXPECT_EQ(allocatorGeometry(c.geometry.format, c.geometry.size), c.geometry);
        EXPECT_EQ(valueOf(frameBytes(c.geometry)), c.bytes);
    }
}

TEST(FrameGeometry, RefusesWhatCannotBeAFrameAndSaysWhy) {
    const struct {
        FrameGeometry geometry;
        const char* reason;
    } cases[] = {
            {{FrameFormat::kRaw10, {0, 480}, 800, 480}, "1 to 32767"},
            {{FrameFormat::kRaw10, {642, 480}, 1000, 480}, "multiple of 4"},
            {{FrameFormat::kNv12, {640, 481}, 640, 482}, "height of 2"},
            {{FrameFormat::kRaw10, {640, 480}, 799, 480}, "stride of at least 800"},
            {{FrameFormat::kNv12, {640, 480}, 640, 478}, "at least 480 scan lines"},
            // Products beyond 32 and near 64 bits.
            {{FrameFormat::kNv12, {640, 480}, 65536, 65536}, "larger than"},
            {{FrameFormat::kNv12, {640, 480}, 4294967294, 4294967294}, "larger than"},
    };
    for (const auto& c : cases) {
        EXPECT_THAT(errorOf(frameBytes(c.geometry)),
                    testing::AllOf(HasSubstr(c.reason), HasSubstr(describe(c.geometry))));
    }
}

TEST(DumpName, GivesUsableNumbersOnly) {
    const std::string start = "/x/OfflineAidl_CameraId_x_Stride[1]_Frame_1_B2Y_Stride[4096]";
    const DumpName frame = parseDumpName(start + "_Scanline[3072].yuv").value_or(DumpName());
    EXPECT_THAT(frame.stride, Optional(4096u));  // the last one: a camera's id may hold anything
    EXPECT_THAT(frame.scanlines, Optional(3072u));
    const DumpName jpeg = parseDumpName("OfflineAidl_CameraId_0_Y2J_Width[40]_Height[30].jpg")
                                  .value_or(DumpName());
    EXPECT_THAT(jpeg.width, Optional(40u));
    EXPECT_THAT(jpeg.height, Optional(30u));
    // 0 is what the name carries when the planes could not be asked for.
    for (const char* number : {"0]", "]", "-1]", "+8]", "8x]", " 8]", "99999999999]", "8", ""}) {
        const auto dump = parseDumpName(start + "_Scanline[" + number + ".yuv");
        ASSERT_TRUE(dump) << number;
        EXPECT_FALSE(dump->scanlines) << number;
    }
    for (const char* name : {"", "/", ".yuv", "Stride[4096]_Scanline[3072].yuv",
                             "OfflineAidl_CameraId_", "OfflineAidl_CameraId_2.unknown",
                             "OfflineAidl_CameraId_2_Stride[4096]_Scanline[3072].yuv/other"}) {
        EXPECT_FALSE(parseDumpName(name)) << name;
    }
}

// Pixel x of a packed row, by the format's definition: upper eight bits in one byte, the lower two
// of four pixels together in the fifth.
int raw10Pixel(const uint8_t* row, uint32_t x) {
    const uint8_t* const group = row + x / 4 * 5;
    return group[x % 4] << 2 | (group[4] >> (x % 4 * 2) & 3);
}

TEST(EncodeRaw10, RampHoldsEveryLevelToTheLowestBit) {
    const FrameGeometry geometry = allocatorGeometry(FrameFormat::kRaw10, {2048, 1024});
    const ChartFrame frame = chartOnSensor(geometry.size);
    const Bytes bytes = encodeRaw10(Picture(2048, 1024), geometry, {}, frame);
    const ChartRamp ramp = chartRamp(frame);
    ASSERT_LT(ramp.firstRow, ramp.endRow);
    for (uint32_t y = ramp.firstRow; y < ramp.endRow; ++y) {
        for (uint32_t x = (y + 1) % 2; x < 2048; x += 2) {  // green places, 1024 levels
            ASSERT_EQ(raw10Pixel(&bytes[size_t{y} * geometry.stride], x), static_cast<int>(x / 2));
        }
    }
}

TEST(EncodeRaw10, InvertsThePhysicsForEachColour) {
    // White is 959 after the gains 2.0, 1.0 and 1.5; black is the black level.
    const FrameGeometry geometry = {FrameFormat::kRaw10, {8, 4}, 16, 6};
    const Bytes white = encodeRaw10(flatPicture(8, 4, {255, 255, 255}), geometry, {}, {});
    EXPECT_EQ(raw10Pixel(white.data(), 0), 64 + 480);       // red at 0, 0
    EXPECT_EQ(raw10Pixel(white.data(), 1), 1023);           // green beside it
    EXPECT_EQ(raw10Pixel(white.data() + 16, 0), 1023);      // and below
    EXPECT_EQ(raw10Pixel(white.data() + 16, 1), 64 + 639);  // blue at 1, 1
    EXPECT_EQ(white.size(), 16u * 6);
    EXPECT_EQ(white[10], 0);      // row padding
    EXPECT_EQ(white[16 * 4], 0);  // rows beyond the picture
    const Bytes black = encodeRaw10(flatPicture(8, 4, {0, 0, 0}), geometry, {}, {});
    for (uint32_t x = 0; x < 8; ++x) EXPECT_EQ(raw10Pixel(black.data(), x), 64);
}

TEST(EncodeNv12, PlacesLumaAndChromaByTheStride) {
    const FrameGeometry geometry = {FrameFormat::kNv12, {4, 2}, 8, 4};
    const Bytes red = encodeNv12(flatPicture(4, 2, {255, 0, 0}), geometry, {});
    // Luma 0.299 * 255, padding black; then Cb and Cr.
    const Bytes expected = {76,  76,  76,  76,  0,   0,   0,   0,   76,  76,  76,  76,
                            0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,
                            0,   0,   0,   0,   0,   0,   0,   0,   85,  255, 85,  255,
                            128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128, 128};
    EXPECT_EQ(red, expected);
}

TEST(Noise, HasItsSigmaRepeatsWithItsSeedAndIsClipped) {
    const FrameGeometry geometry = allocatorGeometry(FrameFormat::kRaw10, {512, 256});
    const Picture grey = flatPicture(512, 256, {128, 128, 128});
    const Bytes clean = encodeRaw10(grey, geometry, {}, {});
    const Bytes noisy = encodeRaw10(grey, geometry, {10, 7}, {});
    EXPECT_EQ(encodeRaw10(grey, geometry, {10, 7}, {}), noisy);
    EXPECT_NE(encodeRaw10(grey, geometry, {10, 8}, {}), noisy);
    double sum = 0;
    double squares = 0;
    for (uint32_t i = 0; i < 512 * 256; ++i) {
        const size_t row = size_t{i / 512} * geometry.stride;
        const double error = raw10Pixel(&noisy[row], i % 512) - raw10Pixel(&clean[row], i % 512);
        sum += error;
        squares += error * error;
    }
    EXPECT_NEAR(sum / (512 * 256), 0, 0.15);  // five standard errors
    EXPECT_NEAR(std::sqrt(squares / (512 * 256)), 10, 0.1);
    // Greens of white are clipped, not wrapped around: half would exceed the highest value.
    const Bytes white = encodeRaw10(flatPicture(512, 256, {255, 255, 255}), geometry, {200, 1}, {});
    for (uint32_t x = 1; x < 64; x += 2) EXPECT_GT(raw10Pixel(white.data(), x), 200);
}

}  // namespace
}  // namespace offlineframes

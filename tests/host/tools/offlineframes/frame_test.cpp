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
        EXPECT_EQ(Describe(AllocatorGeometry(c.geometry.format, c.geometry.size)),
                  Describe(c.geometry));
        EXPECT_EQ(valueOf(FrameBytes(c.geometry)), c.bytes);
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
        EXPECT_THAT(errorOf(FrameBytes(c.geometry)),
                    testing::AllOf(HasSubstr(c.reason), HasSubstr(Describe(c.geometry))));
    }
}

TEST(DumpName, GivesUsableNumbersOnly) {
    const std::string start = "/x/OfflineAidl_CameraId_x_Stride[1]_Frame_1_B2Y_Stride[4096]";
    const DumpName frame = ParseDumpName(start + "_Scanline[3072].yuv").value_or(DumpName());
    EXPECT_THAT(frame.stride, Optional(4096u));  // the last one: a camera's id may hold anything
    EXPECT_THAT(frame.scanlines, Optional(3072u));
    const DumpName jpeg = ParseDumpName("OfflineAidl_CameraId_0_Y2J_Width[40]_Height[30].jpg")
                                  .value_or(DumpName());
    EXPECT_THAT(jpeg.width, Optional(40u));
    EXPECT_THAT(jpeg.height, Optional(30u));
    // 0 is what the name carries when the planes could not be asked for.
    for (const char* number : {"0]", "]", "-1]", "+8]", "8x]", " 8]", "99999999999]", "8", ""}) {
        const auto dump = ParseDumpName(start + "_Scanline[" + number + ".yuv");
        ASSERT_TRUE(dump) << number;
        EXPECT_FALSE(dump->scanlines) << number;
    }
    for (const char* name : {"", "/", ".yuv", "Stride[4096]_Scanline[3072].yuv",
                             "OfflineAidl_CameraId_", "OfflineAidl_CameraId_2.unknown",
                             "OfflineAidl_CameraId_2_Stride[4096]_Scanline[3072].yuv/other"}) {
        EXPECT_FALSE(ParseDumpName(name)) << name;
    }
}

// Pixel x of a packed row, by the format's definition: upper eight bits in one byte, the lower two
// of four pixels together in the fifth.
int raw10Pixel(const uint8_t* row, uint32_t x) {
    const uint8_t* const group = row + x / 4 * 5;
    return group[x % 4] << 2 | (group[4] >> (x % 4 * 2) & 3);
}

TEST(EncodeRaw10, RampHoldsEveryLevelToTheLowestBit) {
    const FrameGeometry geometry = AllocatorGeometry(FrameFormat::kRaw10, {2048, 1024});
    const ChartFrame frame = ChartOnSensor(geometry.size);
    const Bytes bytes = EncodeRaw10(Picture(2048, 1024), geometry, {}, frame);
    const ChartRamp ramp = RampOf(frame);
    ASSERT_LT(ramp.firstRow, ramp.endRow);
    for (uint32_t y = ramp.firstRow; y < ramp.endRow; ++y) {
        for (uint32_t x = (y + 1) % 2; x < 2048; x += 2) {  // green places, 1024 levels
            ASSERT_EQ(raw10Pixel(&bytes[size_t{y} * geometry.stride], x), static_cast<int>(x / 2));
        }
    }
}

TEST(EncodeFrames, InvertThePhysicsAndPad) {
    // White is 959 after the gains 2.0, 1.0 and 1.5.
    const FrameGeometry raw = {FrameFormat::kRaw10, {8, 4}, 16, 6};
    const Bytes white = EncodeRaw10(flatPicture(8, 4, {255, 255, 255}), raw, {}, {});
    EXPECT_EQ(raw10Pixel(white.data(), 0), 64 + 480);       // red at 0, 0
    EXPECT_EQ(raw10Pixel(white.data(), 1), 1023);           // green beside it
    EXPECT_EQ(raw10Pixel(white.data() + 16, 0), 1023);      // and below
    EXPECT_EQ(raw10Pixel(white.data() + 16, 1), 64 + 639);  // blue at 1, 1
    EXPECT_EQ(white.size(), 16u * 6);
    EXPECT_EQ(white[10] + white[16 * 4], 0);  // padding
    EXPECT_EQ(raw10Pixel(EncodeRaw10(flatPicture(8, 4, {0, 0, 0}), raw, {}, {}).data(), 5), 64);
    // Luma 0.299 * 255, then Cb and Cr.
    const FrameGeometry nv12 = {FrameFormat::kNv12, {2, 2}, 4, 4};
    EXPECT_EQ(EncodeNv12(flatPicture(2, 2, {255, 0, 0}), nv12, {}),
              (Bytes{76, 76, 0, 0, 76, 76,  0,   0,   0,   0,   0,   0,
                     0,  0,  0, 0, 85, 255, 128, 128, 128, 128, 128, 128}));
}

TEST(Noise, HasItsSigmaRepeatsWithItsSeedAndIsClipped) {
    const FrameGeometry geometry = {FrameFormat::kNv12, {512, 256}, 512, 256};
    const auto noisy = [&](uint8_t grey, const Noise& noise) {
        return EncodeNv12(flatPicture(512, 256, {grey, grey, grey}), geometry, noise);
    };
    const Bytes frame = noisy(128, {10, 7});
    EXPECT_EQ(noisy(128, {10, 7}), frame);
    EXPECT_NE(noisy(128, {10, 8}), frame);
    double sum = 0;
    double squares = 0;
    for (const uint8_t sample : frame) {
        sum += sample - 128;
        squares += (sample - 128) * (sample - 128);
    }
    EXPECT_NEAR(sum / frame.size(), 0, 0.15);  // five standard errors
    EXPECT_NEAR(std::sqrt(squares / frame.size()), 10, 0.1);
    // Clipped and not wrapped around: half of them would exceed the highest value.
    const Bytes white = noisy(255, {40, 1});
    EXPECT_GT(*std::min_element(white.begin(), white.begin() + 512), 80);
}

}  // namespace
}  // namespace offlineframes

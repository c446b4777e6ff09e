// Frames: byte counts, what names tell, and every bit of what is encoded.

#include <gmock/gmock.h>

#include "host/tools/offlineframes/frame_encoder.h"
#include "test_support.h"

namespace offlineframes {
namespace {

using testing::HasSubstr;

TEST(FrameGeometry, RefusesWhatCannotBeAFrameAndSaysWhy) {
    const std::pair<FrameGeometry, const char*> cases[] = {
            {{FrameFormat::kRaw10, {0, 480}, 800, 480}, "1 to 32767"},
            {{FrameFormat::kRaw10, {642, 480}, 1000, 480}, "multiple of 4"},
            {{FrameFormat::kNv12, {640, 481}, 640, 482}, "height of 2"},
            {{FrameFormat::kRaw10, {640, 480}, 799, 480}, "stride of at least 800"},
            {{FrameFormat::kNv12, {640, 480}, 640, 478}, "at least 480 scan lines"},
            // Products beyond 32 and near 64 bits.
            {{FrameFormat::kNv12, {640, 480}, 65536, 65536}, "larger than"},
            {{FrameFormat::kNv12, {640, 480}, 4294967294, 4294967294}, "larger than"},
    };
    for (const auto& [geometry, reason] : cases) {
        EXPECT_THAT(errorOf(frameBytes(geometry)),
                    testing::AllOf(HasSubstr(reason), HasSubstr(describe(geometry))));
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

TEST(EncodeFrames, InvertThePhysicsAndPad) {
    // White is 959 after the gains 2.0, 1.0 and 1.5.
    const FrameGeometry raw = {FrameFormat::kRaw10, {8, 4}, 16, 6};
    const Bytes white = encodeRaw10(flatPicture(8, 4, {255, 255, 255}), raw, {}, {});
    EXPECT_EQ(raw10Pixel(white.data(), 0), 64 + 480);       // red at 0, 0
    EXPECT_EQ(raw10Pixel(white.data(), 1), 1023);           // green beside it
    EXPECT_EQ(raw10Pixel(white.data() + 16, 0), 1023);      // and below
    EXPECT_EQ(raw10Pixel(white.data() + 16, 1), 64 + 639);  // blue at 1, 1
    EXPECT_EQ(white.size(), 16u * 6);
    EXPECT_EQ(white[10] + white[16 * 4], 0);  // padding
    EXPECT_EQ(raw10Pixel(encodeRaw10(flatPicture(8, 4, {0, 0, 0}), raw, {}, {}).data(), 5), 64);
    // Luma 0.299 * 255, then Cb and Cr.
    const FrameGeometry nv12 = {FrameFormat::kNv12, {2, 2}, 4, 4};
    EXPECT_EQ(encodeNv12(flatPicture(2, 2, {255, 0, 0}), nv12, {}),
              (Bytes{76, 76, 0, 0, 76, 76,  0,   0,   0,   0,   0,   0,
                     0,  0,  0, 0, 85, 255, 128, 128, 128, 128, 128, 128}));
}

TEST(Noise, HasItsSigmaAndIsClipped) {
    const auto noisy = [&](uint8_t grey, double sigma) {
        return encodeNv12(flatPicture(512, 256, {grey, grey, grey}),
                          {FrameFormat::kNv12, {512, 256}, 512, 256}, {sigma, 7});
    };
    double sum = 0;
    double squares = 0;
    const Bytes frame = noisy(128, 10);
    for (const uint8_t sample : frame) {
        sum += sample - 128;
        squares += (sample - 128) * (sample - 128);
    }
    EXPECT_NEAR(sum / frame.size(), 0, 0.15);  // five standard errors
    EXPECT_NEAR(std::sqrt(squares / frame.size()), 10, 0.1);
    // Clipped and not wrapped around: half of them would exceed the highest value.
    const Bytes white = noisy(255, 40);
    EXPECT_GT(*std::min_element(white.begin(), white.begin() + 512), 80);
}

}  // namespace
}  // namespace offlineframes

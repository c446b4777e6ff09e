// Frames hold the bits the formats ask for.

#include "host/tools/offlineframes/frame_encoder.h"

#include <gmock/gmock.h>

#include <set>

#include "test_support.h"

namespace offlineframes {
namespace {

// Pixel x of a packed row, taken apart by the format's definition: upper eight bits in one byte,
// the lower two of four pixels together in the fifth.
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
    std::set<int> levels;
    for (uint32_t y = ramp.firstRow; y < ramp.endRow; ++y) {
        const uint8_t* const row = &bytes[size_t{y} * geometry.stride];
        for (uint32_t x = (y + 1) % 2; x < 2048; x += 2) {  // green places
            ASSERT_EQ(raw10Pixel(row, x), static_cast<int>(x / 2)) << "x " << x << " y " << y;
            levels.insert(raw10Pixel(row, x));
        }
    }
    EXPECT_EQ(levels.size(), 1024u);
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
    ASSERT_EQ(red.size(), 8u * 4 * 3 / 2);
    EXPECT_EQ(red[0], 76);        // 0.299 * 255
    EXPECT_EQ(red[8 + 3], 76);    // second row
    EXPECT_EQ(red[4], 0);         // padding is black
    EXPECT_EQ(red[32], 85);       // Cb
    EXPECT_EQ(red[32 + 1], 255);  // Cr
    EXPECT_EQ(red[32 + 4], 128);
}

TEST(Noise, HasItsSigmaAndRepeatsWithItsSeed) {
    const FrameGeometry geometry = allocatorGeometry(FrameFormat::kRaw10, {512, 256});
    const Picture grey = flatPicture(512, 256, {128, 128, 128});
    const Bytes clean = encodeRaw10(grey, geometry, {}, {});
    const Bytes noisy = encodeRaw10(grey, geometry, {10, 7}, {});
    EXPECT_EQ(encodeRaw10(grey, geometry, {10, 7}, {}), noisy);
    EXPECT_NE(encodeRaw10(grey, geometry, {10, 8}, {}), noisy);
    double sum = 0;
    double squares = 0;
    for (uint32_t y = 0; y < 256; ++y) {
        for (uint32_t x = 0; x < 512; ++x) {
            const size_t row = size_t{y} * geometry.stride;
            const double difference = raw10Pixel(&noisy[row], x) - raw10Pixel(&clean[row], x);
            sum += difference;
            squares += difference * difference;
        }
    }
    const double count = 512.0 * 256;
    EXPECT_NEAR(sum / count, 0, 0.15);  // five standard errors
    EXPECT_NEAR(std::sqrt(squares / count), 10, 0.1);
}

TEST(Noise, StaysInsideTheFormatsRange) {
    const FrameGeometry geometry = allocatorGeometry(FrameFormat::kRaw10, {64, 64});
    const Bytes bytes = encodeRaw10(flatPicture(64, 64, {255, 255, 255}), geometry, {200, 1}, {});
    // Greens are clipped, not wrapped around: half of them would exceed the highest value.
    for (uint32_t x = 1; x < 64; x += 2) EXPECT_GT(raw10Pixel(bytes.data(), x), 200);
}

}  // namespace
}  // namespace offlineframes

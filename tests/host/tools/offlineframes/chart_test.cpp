// The chart survives the camera: packed, developed and shown it is the chart again.

#include "host/tools/offlineframes/chart.h"

#include <gtest/gtest.h>

#include "host/tools/offlineframes/frame_decoder.h"
#include "host/tools/offlineframes/frame_encoder.h"
#include "host/tools/offlineframes/resample.h"
#include "test_support.h"

namespace offlineframes {
namespace {

constexpr PictureSize kSensor = {1024, 768};

Picture developedChart() {
    const ChartFrame frame = chartOnSensor(kSensor);
    const FrameGeometry geometry = allocatorGeometry(FrameFormat::kRaw10, kSensor);
    const Bytes raw = encodeRaw10(drawSensorChart(frame), geometry, {}, frame);
    Result<Picture> developed = developRaw10(raw, geometry);
    EXPECT_TRUE(developed.ok());
    return std::move(developed).value();
}

// True where nothing within four pixels is far from the pixel itself.
bool isAwayFromEdges(const Picture& picture, uint32_t x, uint32_t y) {
    constexpr uint32_t kReach = 4;
    if (x < kReach || y < kReach || x + kReach >= picture.width || y + kReach >= picture.height) {
        return false;
    }
    for (uint32_t ny = y - kReach; ny <= y + kReach; ++ny) {
        for (uint32_t nx = x - kReach; nx <= x + kReach; ++nx) {
            for (int c = 0; c < 3; ++c) {
                if (std::abs(picture.pixel(nx, ny)[c] - picture.pixel(x, y)[c]) > 6) return false;
            }
        }
    }
    return true;
}

TEST(Chart, ComesBackFromTheSensorAwayFromEdges) {
    const Picture chart = drawSensorChart(chartOnSensor(kSensor));
    const Picture developed = developedChart();
    double squares = 0;
    uint64_t samples = 0;
    for (uint32_t y = 0; y < chart.height; ++y) {
        for (uint32_t x = 0; x < chart.width; ++x) {
            if (!isAwayFromEdges(chart, x, y)) continue;
            for (int c = 0; c < 3; ++c) {
                const double difference = chart.pixel(x, y)[c] - developed.pixel(x, y)[c];
                squares += difference * difference;
                ++samples;
            }
        }
    }
    EXPECT_GT(samples, chart.rgb.size() / 4);
    const double psnr = 10 * std::log10(255.0 * 255.0 * static_cast<double>(samples) / squares);
    EXPECT_GT(psnr, 44) << "over " << samples << " samples";
}

TEST(Chart, PatchesKeepTheirColours) {
    const ChartFrame frame = chartOnSensor(kSensor);
    const Picture developed = developedChart();
    const double scale = frame.visible.width / kChartWidth;
    for (const ChartPatch& patch : chartPatches()) {
        const auto x =
                static_cast<uint32_t>(frame.left + (patch.box.left + patch.box.right) / 2 * scale);
        const auto y =
                static_cast<uint32_t>(frame.top + (patch.box.top + patch.box.bottom) / 2 * scale);
        const uint8_t* const pixel = developed.pixel(x, y);
        EXPECT_NEAR(pixel[0], patch.colour.r, 2) << "red at " << x << ", " << y;
        EXPECT_NEAR(pixel[1], patch.colour.g, 2) << "green at " << x << ", " << y;
        EXPECT_NEAR(pixel[2], patch.colour.b, 2) << "blue at " << x << ", " << y;
    }
}

TEST(Chart, VisiblePartIsTheCropOfTheSensor) {
    for (const PictureSize visible : {PictureSize{4000, 3000}, {500, 376}}) {
        const ChartFrame frame = chartOfVisible(visible);
        const Picture crop = centreCrop(drawSensorChart(frame), visible);
        EXPECT_EQ(crop.rgb, drawVisibleChart(frame).rgb);
    }
    const ChartFrame full = chartOnSensor({4096, 3072});
    EXPECT_EQ(full.visible, (PictureSize{4000, 3000}));
    EXPECT_EQ(full.left, 48u);
    EXPECT_EQ(full.top, 36u);
}

TEST(Chart, CanBeDrawnAtAnySize) {
    for (const PictureSize size : {PictureSize{2, 2}, {4, 2}, {2, 400}, {1000, 2}, {66, 50}}) {
        EXPECT_EQ(drawVisibleChart(chartOfVisible(size)).height, size.height);
        const ChartFrame frame = chartOnSensor(size);
        EXPECT_EQ(drawSensorChart(frame).width, size.width);
        EXPECT_LE(chartRamp(frame).endRow, size.height);
    }
}

TEST(Chart, LooksDifferentFromEverySide) {
    // Mirrored or turned by half a circle it must not pass for itself: compare the corners.
    const Picture chart = drawVisibleChart(chartOfVisible({1000, 750}));
    const auto dots = [&](uint32_t left, uint32_t top) {
        int dark = 0;
        for (uint32_t y = top; y < top + 50; ++y) {
            for (uint32_t x = left; x < left + 50; ++x) dark += chart.pixel(x, y)[1] < 40;
        }
        return dark;
    };
    const int one = dots(20, 20);
    ASSERT_GT(one, 60);
    EXPECT_NEAR(dots(930, 20), 2 * one, one / 2);
    EXPECT_NEAR(dots(930, 680), 3 * one, one / 2);
    EXPECT_NEAR(dots(20, 680), 4 * one, one / 2);
}

TEST(Chart, MakesALargeJpeg) {
    // A JPEG below this many bytes is dumped by its stream's size and not by its own.
    constexpr size_t kSmallestTrustedJpeg = 262152;
    const Picture chart = drawVisibleChart(chartOfVisible({4000, 3000}));
    EXPECT_GT(jpegBytes(chart, 0).size(), 2 * kSmallestTrustedJpeg);
}

}  // namespace
}  // namespace offlineframes

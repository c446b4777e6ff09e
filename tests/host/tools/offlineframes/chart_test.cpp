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

TEST(Chart, PatchesKeepTheirColours) {
    const ChartFrame frame = chartOnSensor(kSensor);
    const FrameGeometry geometry = allocatorGeometry(FrameFormat::kRaw10, kSensor);
    const Bytes raw = encodeRaw10(drawSensorChart(frame), geometry, {}, frame);
    Result<Picture> result = developRaw10(raw, geometry);
    ASSERT_TRUE(result.ok()) << result.error();
    const Picture developed = std::move(result).value();
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

TEST(Chart, MakesALargeJpeg) {
    // A JPEG below this many bytes is dumped by its stream's size and not by its own.
    constexpr size_t kSmallestTrustedJpeg = 262152;
    const Picture chart = drawVisibleChart(chartOfVisible({4000, 3000}));
    EXPECT_GT(jpegBytes(chart, 0).size(), 2 * kSmallestTrustedJpeg);
}

}  // namespace
}  // namespace offlineframes

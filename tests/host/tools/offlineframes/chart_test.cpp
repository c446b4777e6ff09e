// The chart on the sensor and in the visible picture, at any size.

#include "host/tools/offlineframes/chart.h"

#include <gtest/gtest.h>

#include "host/tools/offlineframes/resample.h"

namespace offlineframes {
namespace {

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

}  // namespace
}  // namespace offlineframes

// The chart's frame and its composition; the panels are in chart_panels.cpp.

#include "chart.h"

#include <imaging/camera_physics.h>

#include "chart_panels.h"

namespace offlineframes {
namespace {

constexpr Box kRampBox = {-kChartWidth, 2330, 2 * kChartWidth, 2530};

uint32_t even(double value) {
    return static_cast<uint32_t>(value) & ~1u;
}

void drawRamp(Canvas& canvas, const ChartFrame& frame) {
    canvas.shadePixels(kRampBox, [&](int x, int) {
        const uint32_t sensorX = std::min(static_cast<uint32_t>(x + static_cast<int>(frame.left)),
                                          frame.sensor.width - 1);
        const int level = chartRampLevel(sensorX, frame.sensor.width);
        const int linear = imaging::LinearFromRaw(level, imaging::Channel::kGreen);
        const uint8_t tone = imaging::ToneFromLinear(linear);
        return Colour{tone, tone, tone};
    });
}

Picture draw(const ChartFrame& frame, PictureSize canvasSize, uint32_t left, uint32_t top) {
    Canvas canvas(canvasSize.width, canvasSize.height, left, top, frame.visible.width,
                  frame.visible.height);
    drawBackground(canvas);
    drawColourPatches(canvas, chartPatches());
    drawStar(canvas);
    drawDetailColumn(canvas);
    drawGreySteps(canvas);
    drawColourRamps(canvas);
    drawBorder(canvas);
    drawRamp(canvas, frame);
    drawRampScale(canvas, kRampBox, frame.left, frame.sensor.width, frame.visible.width);
    drawHeader(canvas, frame.visible);
    return canvas.take();
}

}  // namespace

ChartFrame chartOnSensor(PictureSize sensor) {
    // 250 / 256 of the sensor is visible: 4000 of 4096, 3000 of 3072.
    const PictureSize visible = {std::max(2u, even(sensor.width * 250.0 / 256)),
                                 std::max(2u, even(sensor.height * 250.0 / 256))};
    return {sensor, visible, imaging::CropOffset(sensor.width, visible.width),
            imaging::CropOffset(sensor.height, visible.height)};
}

ChartFrame chartOfVisible(PictureSize visible) {
    const PictureSize sensor = {even(visible.width * 256.0 / 250),
                                even(visible.height * 256.0 / 250)};
    return {sensor, visible, imaging::CropOffset(sensor.width, visible.width),
            imaging::CropOffset(sensor.height, visible.height)};
}

Picture drawSensorChart(const ChartFrame& frame) {
    return draw(frame, frame.sensor, frame.left, frame.top);
}

Picture drawVisibleChart(const ChartFrame& frame) {
    return draw(frame, frame.visible, 0, 0);
}

ChartRamp chartRamp(const ChartFrame& frame) {
    // The rows whose middles lie in the ramp's box, as the canvas counts them.
    const auto row = [&](double v) {
        return static_cast<uint32_t>(
                std::ceil(frame.top + v * frame.visible.height / kChartHeight - 0.5));
    };
    return {row(kRampBox.top), row(kRampBox.bottom)};
}

std::array<ChartPatch, kChartPatches> chartPatches() {
    constexpr Colour kColours[kChartPatches] = {
            {230, 30, 40},   {40, 170, 60},   {40, 70, 200},   {235, 205, 40},   // primaries
            {200, 50, 140},  {30, 160, 190},  {240, 130, 40},  {110, 60, 150},   //
            {255, 0, 0},     {0, 255, 0},     {0, 0, 255},     {255, 255, 255},  // full
            {0, 255, 255},   {255, 0, 255},   {255, 255, 0},   {0, 0, 0},        //
            {245, 214, 190}, {224, 172, 140}, {164, 108, 80},  {96, 62, 48},     // skin
            {90, 110, 70},   {120, 150, 190}, {128, 128, 128}, {200, 200, 200},  // leaf, sky, grey
    };
    std::array<ChartPatch, kChartPatches> patches;
    for (int i = 0; i < kChartPatches; ++i) {
        const double left = 130 + (i % 4) * 275;
        const double top = 420 + (i / 4) * 275;
        patches[static_cast<size_t>(i)] = {kColours[i], {left, top, left + 250, top + 250}};
    }
    return patches;
}

}  // namespace offlineframes

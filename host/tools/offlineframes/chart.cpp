// Where the chart, its ramp and its patches are on a sensor; chart_drawing.cpp draws them.

#include "chart.h"

#include <imaging/camera_physics.h>

#include <algorithm>
#include <cmath>

namespace offlineframes {
namespace {

uint32_t Even(double value) {
    return static_cast<uint32_t>(value) & ~1u;
}

ChartFrame Centred(PictureSize sensor, PictureSize visible) {
    return {sensor, visible, imaging::CropOffset(sensor.width, visible.width),
            imaging::CropOffset(sensor.height, visible.height)};
}

}  // namespace

ChartFrame chartOnSensor(PictureSize sensor) {
    // 250 / 256 of the sensor is visible: 4000 of 4096, 3000 of 3072.
    return Centred(sensor, {std::max(2u, Even(sensor.width * 250.0 / 256)),
                            std::max(2u, Even(sensor.height * 250.0 / 256))});
}

ChartFrame chartOfVisible(PictureSize visible) {
    return Centred({Even(visible.width * 256.0 / 250), Even(visible.height * 256.0 / 250)},
                   visible);
}

ChartRamp chartRamp(const ChartFrame& frame) {
    // The rows whose middles are in the ramp's box, as the canvas counts them.
    const auto row = [&](double v) {
        return static_cast<uint32_t>(
                std::ceil(frame.top + v * frame.visible.height / kChartHeight - 0.5));
    };
    return {row(kChartRampBox.top), row(kChartRampBox.bottom)};
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

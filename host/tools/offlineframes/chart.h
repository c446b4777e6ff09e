// The built-in test chart, computed for any size. It shows at a glance sharpness (star, zone plate,
// line pairs, small letters), right colours (24 patches, hue and primary ramps), tone (grey steps,
// a ramp of all 1024 raw levels), the right way up (TOP, corners with 1, 2, 3 and 4 dots clockwise
// from the top left), geometry (circles, ruler along the border) and any shifted row or seam.
#pragma once

#include <array>
#include <cstdint>

#include "picture.h"

namespace offlineframes {

struct Colour {
    uint8_t r, g, b;
};

// In chart units: the visible chart is 4000 x 3000 at any size of the picture.
struct Box {
    double left, top, right, bottom;
};
inline constexpr double kChartWidth = 4000;
inline constexpr double kChartHeight = 3000;

// The chart on a sensor: a RAW frame has a striped margin around the visible chart that the centre
// crop of development (4096x3072 to 4000x3000, or that ratio) removes exactly.
struct ChartFrame {
    PictureSize sensor;   // pixels of the mosaic
    PictureSize visible;  // pixels after the crop
    uint32_t left = 0;    // of the visible part in the sensor
    uint32_t top = 0;
};
ChartFrame ChartOnSensor(PictureSize sensor);    // 4096x3072: visible 4000x3000 at (48, 36)
ChartFrame ChartOfVisible(PictureSize visible);  // the reverse

// The chart in display values, with margin or only the visible part.
Picture DrawSensorChart(const ChartFrame& frame);
Picture DrawVisibleChart(const ChartFrame& frame);

// The raw ramp crosses the whole sensor: level 0 at the left edge to 1023 at the right one. Its
// green pixels hold every level where the sensor is at least 2048 pixels wide; red and blue make it
// grey.
inline constexpr Box kChartRampBox = {-kChartWidth, 2330, 2 * kChartWidth, 2530};
struct ChartRamp {
    uint32_t firstRow = 0;  // sensor rows
    uint32_t endRow = 0;
};
ChartRamp RampOf(const ChartFrame& frame);
inline uint16_t RampLevel(uint32_t x, uint32_t sensorWidth) {
    return static_cast<uint16_t>(uint64_t{x} * 1024 / sensorWidth);
}

// A flat colour of the chart and where it is.
struct ChartPatch {
    Colour colour;
    Box box;
};
inline constexpr int kChartPatches = 24;
std::array<ChartPatch, kChartPatches> ChartPatches();

}  // namespace offlineframes

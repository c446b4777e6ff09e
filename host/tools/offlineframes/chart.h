// The built-in test chart, computed for any size. It shows at a glance sharpness (star, zone plate,
// line pairs, small letters), right colours (24 patches, hue and primary ramps), tone (grey steps,
// a ramp of all 1024 raw levels), the right way up (TOP, corners with 1, 2, 3 and 4 dots clockwise
// from the top left), geometry (circles, ruler along the border) and any shifted row or seam.
#pragma once

#include <array>
#include <cstdint>

#include "picture_file.h"

namespace offlineframes {

struct Colour {
    uint8_t r, g, b;
};

// In chart units: the visible chart is 4000 x 3000 at any size of the picture.
struct Box {
    double left, top, right, bottom;
};

// The chart in display values as a sensor has it, with a striped margin that the centre crop of
// development (4096x3072 to 4000x3000, or that ratio) removes exactly; and what is left then.
Picture DrawSensorChart(PictureSize sensor);
Picture DrawVisibleChart(PictureSize visible);

// The raw ramp crosses the whole sensor in these rows: level 0 at the left edge to 1023 at the
// right one. Its green pixels hold every level where the sensor is at least 2048 pixels wide; red
// and blue make it grey.
struct RampRows {
    uint32_t first = 0;
    uint32_t end = 0;
};
RampRows RampOf(PictureSize sensor);
inline uint16_t RampLevel(uint32_t x, uint32_t sensorWidth) {
    return static_cast<uint16_t>(uint64_t{x} * 1024 / sensorWidth);
}

// A flat colour of the chart and where it is.
struct ChartPatch {
    Colour colour;
    Box box;
};
std::array<ChartPatch, 24> ChartPatches();

}  // namespace offlineframes

// The parts of the test chart. Each paints its own area of the canvas.
#pragma once

#include <array>

#include "chart.h"
#include "chart_canvas.h"

namespace offlineframes {

void drawBackground(Canvas& canvas);  // gradient, striped margin outside the chart
void drawBorder(Canvas& canvas);      // ruler of 100 units, corner marks
void drawHeader(Canvas& canvas, PictureSize visible);
void drawColourPatches(Canvas& canvas, const std::array<ChartPatch, kChartPatches>& patches);
void drawStar(Canvas& canvas);          // Siemens star between circles
void drawDetailColumn(Canvas& canvas);  // zone plate, texture, line pairs, small letters
void drawGreySteps(Canvas& canvas);
void drawColourRamps(Canvas& canvas);
// Ticks above the ramp at every 64 raw levels.
void drawRampScale(Canvas& canvas, const Box& ramp, uint32_t left, uint32_t sensorWidth,
                   uint32_t visibleWidth);

}  // namespace offlineframes

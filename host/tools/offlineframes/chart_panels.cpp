// The panels of the test chart, in chart units.

#include "chart_panels.h"

#include <string>

namespace offlineframes {
namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr Colour kInk = {236, 239, 243};
constexpr Colour kQuiet = {150, 158, 168};
constexpr Colour kDark = {20, 22, 26};
// Finest detail of the star and the zone plate, in pixels per period. Red and blue have every
// second pixel, so theirs may not be finer than 4.
constexpr double kFinestPeriod = 5;

uint8_t toByte(double value) {
    return static_cast<uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

Colour grey(double value) {
    const uint8_t byte = toByte(value);
    return {byte, byte, byte};
}

// A sine pattern around mid grey, fading out where a period has fewer pixels than a frame can hold.
Colour sinePattern(double phase, double periodPixels) {
    const double contrast = std::clamp((periodPixels - kFinestPeriod) / 2, 0.0, 1.0);
    return grey(128 + 118 * contrast * std::sin(phase));
}

// A fixed pattern of 0..1 noise (an integer hash, so the chart is the same everywhere).
double noiseAt(int x, int y, uint32_t seed) {
    uint32_t h = static_cast<uint32_t>(x) * 0x9E3779B1u ^ static_cast<uint32_t>(y) * 0x85EBCA77u ^
                 seed * 0xC2B2AE3Du;
    h = (h ^ (h >> 15)) * 0x2C1B3C6Du;
    h = (h ^ (h >> 12)) * 0x297A2D39u;
    return (h ^ (h >> 15)) / 4294967296.0;
}

// Noise in cells of `size` pixels, blended smoothly from cell to cell.
double cloudAt(int x, int y, int size, uint32_t seed) {
    const int cx = x / size;
    const int cy = y / size;
    const double fx = double(x % size) / size;
    const double fy = double(y % size) / size;
    const double top = noiseAt(cx, cy, seed) * (1 - fx) + noiseAt(cx + 1, cy, seed) * fx;
    const double low = noiseAt(cx, cy + 1, seed) * (1 - fx) + noiseAt(cx + 1, cy + 1, seed) * fx;
    return top * (1 - fy) + low * fy;
}

void centredText(Canvas& canvas, double u, double v, double height, const std::string& words,
                 Colour colour) {
    canvas.text(u - Canvas::textWidth(height, words) / 2, v, height, words, colour);
}

void drawZonePlate(Canvas& canvas, const Box& box) {
    const double cu = (box.left + box.right) / 2;
    const double cv = (box.top + box.bottom) / 2;
    // Phase pi r^2 / a: the period at radius r is a / r; it is finest at the middle of a side.
    const double a = box.width() / 2 * kFinestPeriod / canvas.scale();
    canvas.shade(box, [&](double u, double v) {
        const double r = std::hypot(u - cu, v - cv);
        const double period = r > 0 ? a / r * canvas.scale() : 1000;
        return sinePattern(kPi * r * r / a + kPi / 2, period);
    });
}

void drawTexture(Canvas& canvas, const Box& box) {
    canvas.shadePixels(box, [](int x, int y) {
        const double coarse = cloudAt(x, y, 48, 1) - 0.5;
        const double middle = cloudAt(x, y, 12, 2) - 0.5;
        const double fine = noiseAt(x / 2, y / 2, 3) - 0.5;
        const double light = 118 + 120 * coarse + 60 * middle + 60 * fine;
        return Colour{toByte(light * 1.06), toByte(light), toByte(light * 0.86)};
    });
}

enum class Direction { kUpright, kLevel, kDiagonal };

// Black and white bars, `pixels` wide each.
void drawBars(Canvas& canvas, const Box& box, int pixels, Direction direction) {
    canvas.shadePixels(box, [=](int x, int y) {
        const int along = direction == Direction::kUpright ? x
                          : direction == Direction::kLevel ? y
                                                           : x + y;
        return along / pixels % 2 == 0 ? Colour{24, 24, 24} : Colour{232, 232, 232};
    });
}

void drawLinePairs(Canvas& canvas, double left, double top) {
    constexpr int kBarPixels[5] = {8, 6, 4, 3, 2};
    constexpr Direction kDirections[3] = {Direction::kUpright, Direction::kLevel,
                                          Direction::kDiagonal};
    for (int column = 0; column < 5; ++column) {
        const double u = left + column * 220;
        centredText(canvas, u + 97.5, top, 36, std::to_string(kBarPixels[column]) + " PX", kInk);
        for (int row = 0; row < 3; ++row) {
            const double v = top + 60 + row * 215;
            drawBars(canvas, {u, v, u + 195, v + 190}, kBarPixels[column], kDirections[row]);
        }
    }
}

void drawSmallLetters(Canvas& canvas, double left, double top) {
    constexpr double kHeights[5] = {48, 36, 28, 20, 14};
    double v = top;
    for (const double height : kHeights) {
        const std::string words = "SHARP 0123456789 " + std::to_string(int(height));
        canvas.text(left, v, height, words, kInk);
        v += height * 1.6;
    }
    canvas.text(left, v + 30, 24, "A MOSAIC TURNS 3 PX AND 2 PX BARS COLOURED", kQuiet);
}

}  // namespace

void drawBackground(Canvas& canvas) {
    const Box everything = {-kChartWidth, -kChartHeight, 2 * kChartWidth, 2 * kChartHeight};
    canvas.shade(everything, [](double u, double v) {
        if (u < 0 || v < 0 || u >= kChartWidth || v >= kChartHeight) {
            // Outside: seen after a crop only if the crop is wrong.
            const bool stripe = std::fmod(u + v + 8 * kChartWidth, 48) < 24;
            return stripe ? Colour{235, 120, 30} : Colour{60, 30, 20};
        }
        const double light = 0.6 * u / kChartWidth + 0.4 * v / kChartHeight;
        return Colour{toByte(34 + 40 * light), toByte(42 + 46 * light), toByte(56 + 52 * light)};
    });
}

void drawBorder(Canvas& canvas) {
    constexpr double kRuler = 36;
    const auto tooth = [](double along) { return std::fmod(along, 200) < 100 ? kInk : kDark; };
    const auto acrossTop = [&](double u, double) { return tooth(u); };
    const auto alongSide = [&](double, double v) { return tooth(v); };
    canvas.shade({0, 0, kChartWidth, kRuler}, acrossTop);
    canvas.shade({0, kChartHeight - kRuler, kChartWidth, kChartHeight}, acrossTop);
    canvas.shade({0, 0, kRuler, kChartHeight}, alongSide);
    canvas.shade({kChartWidth - kRuler, 0, kChartWidth, kChartHeight}, alongSide);

    constexpr double kCorners[4][2] = {{80, 80}, {3720, 80}, {3720, 2720}, {80, 2720}};
    constexpr double kDots[4][4][2] = {{{100, 100}},
                                       {{55, 55}, {145, 145}},
                                       {{50, 50}, {100, 100}, {150, 150}},
                                       {{58, 58}, {142, 58}, {58, 142}, {142, 142}}};
    for (int corner = 0; corner < 4; ++corner) {
        const double u = kCorners[corner][0];
        const double v = kCorners[corner][1];
        canvas.roundedBox({u, v, u + 200, v + 200}, 30, kInk);
        for (int dot = 0; dot <= corner; ++dot) {
            canvas.disc(u + kDots[corner][dot][0], v + kDots[corner][dot][1], 25, kDark);
        }
    }
}

void drawHeader(Canvas& canvas, PictureSize visible) {
    canvas.triangle(kChartWidth / 2, 62, 190, 110, {255, 196, 40});
    centredText(canvas, kChartWidth / 2, 222, 110, "TOP", kInk);
    canvas.text(330, 130, 90, "OFFLINE FRAMES", kInk);
    canvas.text(330, 262, 48, "TEST CHART", kQuiet);
    const std::string size = std::to_string(visible.width) + " X " + std::to_string(visible.height);
    canvas.text(3670 - Canvas::textWidth(90, size), 130, 90, size, kInk);
    const std::string note = "RULER 40 X 30 TEETH";
    canvas.text(3670 - Canvas::textWidth(48, note), 262, 48, note, kQuiet);
}

void drawColourPatches(Canvas& canvas, const std::array<ChartPatch, kChartPatches>& patches) {
    canvas.roundedBox({105, 395, 1230, 2070}, 24, kDark);
    for (const ChartPatch& patch : patches) canvas.fill(patch.box, patch.colour);
}

void drawStar(Canvas& canvas) {
    constexpr double kCentreU = 2000;
    constexpr double kCentreV = 1232;
    constexpr double kRadius = 600;
    constexpr int kSpokes = 48;
    canvas.roundedBox({1280, 395, 2720, 2070}, 24, kDark);
    const Box box = {kCentreU - kRadius, kCentreV - kRadius, kCentreU + kRadius,
                     kCentreV + kRadius};
    canvas.shade(box, [&](double u, double v) {
        const double r = std::hypot(u - kCentreU, v - kCentreV);
        if (r > kRadius) return kDark;
        const double angle = std::atan2(v - kCentreV, u - kCentreU);
        return sinePattern(kSpokes * angle, 2 * kPi * r * canvas.scale() / kSpokes);
    });
    for (const double radius : {608.0, 632.0, 656.0, 680.0}) {
        canvas.ring(kCentreU, kCentreV, radius, 8, kInk);
    }
    centredText(canvas, kCentreU, 455, 40, "CIRCLES ROUND - SPOKES STRAIGHT", kQuiet);
    centredText(canvas, kCentreU, 1970, 40, "FINEST DETAIL 5 PX PER PERIOD", kQuiet);
}

void drawDetailColumn(Canvas& canvas) {
    canvas.roundedBox({2770, 395, 3895, 2070}, 24, kDark);
    drawZonePlate(canvas, {2795, 420, 3320, 945});
    drawTexture(canvas, {3345, 420, 3870, 945});
    drawLinePairs(canvas, 2795, 985);
    drawSmallLetters(canvas, 2805, 1725);
}

void drawGreySteps(Canvas& canvas) {
    constexpr int kSteps = 17;
    const double width = (3870.0 - 130.0) / kSteps;
    for (int i = 0; i < kSteps; ++i) {
        const int value = std::min(i * 16, 255);
        const double u = 130 + i * width;
        canvas.fill({u, 2110, u + width, 2250}, grey(value));
        const std::string number = std::to_string(value);
        centredText(canvas, u + width / 2, 2163, 34, number, grey(value < 128 ? 255 : 0));
    }
}

void drawColourRamps(Canvas& canvas) {
    constexpr double kLeft = 330;
    constexpr double kRight = 3670;
    const auto ramp = [&](double top, auto colourAt) {
        canvas.shade({kLeft, top, kRight, top + 70},
                     [&](double u, double) { return colourAt((u - kLeft) / (kRight - kLeft)); });
    };
    ramp(2600, [](double t) { return Colour{toByte(255 * t), 0, 0}; });
    ramp(2670, [](double t) { return Colour{0, toByte(255 * t), 0}; });
    ramp(2740, [](double t) { return Colour{0, 0, toByte(255 * t)}; });
    ramp(2810, [](double t) {
        // Hue once around: each primary is full for a third and fades over the next sixths.
        const auto primary = [t](double centre) {
            const double away = std::abs(t - centre) * 6;
            return toByte(255 * std::clamp(2 - std::min(away, 6 - away), 0.0, 1.0));
        };
        return Colour{primary(0), primary(1.0 / 3), primary(2.0 / 3)};
    });
}

void drawRampScale(Canvas& canvas, const Box& ramp, uint32_t left, uint32_t sensorWidth,
                   uint32_t visibleWidth) {
    for (int level = 64; level < 1024; level += 64) {
        const double x = double(level) * sensorWidth / 1024 - left;
        const double u = x * kChartWidth / visibleWidth;
        canvas.line(u, ramp.top - 22, u, ramp.top - 6, 5, kInk);
        centredText(canvas, u, ramp.top - 52, 22, std::to_string(level), kQuiet);
    }
    canvas.text(90, ramp.top - 52, 22, "RAW", kQuiet);
}

}  // namespace offlineframes

// The test chart: where it is on a sensor, its panels, its shapes and its texts.

#include "chart.h"

#include <cairo.h>
#include <imaging/camera_physics.h>

#include <algorithm>
#include <cmath>
#include <string>

namespace offlineframes {
namespace {

constexpr double kWidth = 4000;  // chart units
constexpr double kHeight = 3000;
constexpr double kRampTop = 2330;
constexpr double kRampBottom = 2530;
constexpr double kPi = 3.14159265358979323846;
constexpr Colour kInk = {236, 239, 243};
constexpr Colour kQuiet = {150, 158, 168};
constexpr Colour kDark = {20, 22, 26};
// Finest detail of the star and the zone plate, in pixels per period. Red and blue have every
// second pixel, so theirs may not be finer than 4.
constexpr double kFinestPeriod = 5;

uint32_t Even(double value) {
    return static_cast<uint32_t>(value) & ~1u;
}

// Where the chart is on a sensor.
struct Place {
    PictureSize sensor;   // pixels of the mosaic
    PictureSize visible;  // pixels after the crop

    uint32_t Left() const { return imaging::CropOffset(sensor.width, visible.width); }
    uint32_t Top() const { return imaging::CropOffset(sensor.height, visible.height); }
};

Place OnSensor(PictureSize sensor) {
    // 250 / 256 of the sensor is visible: 4000 of 4096, 3000 of 3072.
    return {sensor,
            {std::max(2u, Even(sensor.width * 250.0 / 256)),
             std::max(2u, Even(sensor.height * 250.0 / 256))}};
}

// The first pixel whose middle is at `edge` or beyond.
double FirstPixel(double edge) {
    return std::ceil(edge - 0.5);
}

// A pixel of a panel.
struct Spot {
    double u, v;   // its middle, in chart units
    int x, y;      // counted from the corner of the visible chart
    double scale;  // pixels per chart unit, the smaller of the two directions
};

uint8_t ToByte(double value) {
    return static_cast<uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

Colour Grey(double value) {
    const uint8_t byte = ToByte(value);
    return {byte, byte, byte};
}

Colour Background(const Spot& at) {
    if (at.u < 0 || at.v < 0 || at.u >= kWidth || at.v >= kHeight) {
        // Outside: seen after a crop only if the crop is wrong.
        const bool stripe = std::fmod(at.u + at.v + 8 * kWidth, 48) < 24;
        return stripe ? Colour{235, 120, 30} : Colour{60, 30, 20};
    }
    const double light = 0.6 * at.u / kWidth + 0.4 * at.v / kHeight;
    return {ToByte(34 + 40 * light), ToByte(42 + 46 * light), ToByte(56 + 52 * light)};
}

// A sine pattern around mid grey, fading out where a period has fewer pixels than a frame can hold.
Colour SinePattern(double phase, double periodPixels) {
    const double contrast = std::clamp((periodPixels - kFinestPeriod) / 2, 0.0, 1.0);
    return Grey(128 + 118 * contrast * std::sin(phase));
}

Colour Star(const Spot& at) {
    const double r = std::hypot(at.u - 2000, at.v - 1232);
    const double angle = std::atan2(at.v - 1232, at.u - 2000);
    return r > 600 ? kDark : SinePattern(48 * angle, 2 * kPi * r * at.scale / 48);
}

Colour ZonePlate(const Spot& at) {
    // Phase pi r^2 / a: the period at radius r is a / r; it is finest at the middle of a side.
    const double a = 525.0 / 2 * kFinestPeriod / at.scale;
    const double r = std::hypot(at.u - 3057.5, at.v - 682.5);
    return SinePattern(kPi * r * r / a + kPi / 2, r > 0 ? a / r * at.scale : 1000);
}

// A fixed pattern of 0..1 noise (an integer hash, so the chart is the same everywhere).
double NoiseAt(int x, int y, uint32_t seed) {
    uint32_t h = static_cast<uint32_t>(x) * 0x9E3779B1u ^ static_cast<uint32_t>(y) * 0x85EBCA77u ^
                 seed * 0xC2B2AE3Du;
    h = (h ^ (h >> 15)) * 0x2C1B3C6Du;
    h = (h ^ (h >> 12)) * 0x297A2D39u;
    return (h ^ (h >> 15)) / 4294967296.0;
}

// Noise in cells of `size` pixels, blended smoothly from cell to cell.
double CloudAt(const Spot& at, int size, uint32_t seed) {
    const int x = at.x / size;
    const int y = at.y / size;
    const double fx = double(at.x % size) / size;
    const double fy = double(at.y % size) / size;
    const double top = NoiseAt(x, y, seed) * (1 - fx) + NoiseAt(x + 1, y, seed) * fx;
    const double low = NoiseAt(x, y + 1, seed) * (1 - fx) + NoiseAt(x + 1, y + 1, seed) * fx;
    return top * (1 - fy) + low * fy;
}

Colour Texture(const Spot& at) {
    const double fine = NoiseAt(at.x / 2, at.y / 2, 3) - 0.5;
    const double light =
            118 + 120 * (CloudAt(at, 48, 1) - 0.5) + 60 * (CloudAt(at, 12, 2) - 0.5) + 60 * fine;
    return {ToByte(light * 1.06), ToByte(light), ToByte(light * 0.86)};
}

// Red, green, blue and, below them, hue once around.
Colour ColourRamps(const Spot& at) {
    const double t = (at.u - 330) / 3340;
    const int ramp = static_cast<int>((at.v - 2600) / 70);
    const auto channel = [&](int index) {
        if (ramp < 3) return index == ramp ? ToByte(255 * t) : uint8_t{0};
        // Each primary is full for a third and fades over the next sixths.
        const double away = std::abs(t - index / 3.0) * 6;
        return ToByte(255 * std::clamp(2 - std::min(away, 6 - away), 0.0, 1.0));
    };
    return {channel(0), channel(1), channel(2)};
}

// A chart being drawn. The pen's matrix turns chart units into pixels.
struct Canvas {
    PictureSize size;
    std::vector<uint32_t> pixels;
    cairo_t* pen;
};

// Gives every pixel whose middle is in the box the colour colourAt(Spot), not blended with what is
// around it.
template <class ColourAt>
void Paint(Canvas* canvas, const Box& box, ColourAt colourAt) {
    const PictureSize size = canvas->size;
    cairo_matrix_t m;
    cairo_get_matrix(canvas->pen, &m);
    const auto first = [](double edge, uint32_t end) {
        return static_cast<uint32_t>(std::clamp(FirstPixel(edge), 0.0, double(end)));
    };
    const uint32_t left = first(m.x0 + box.left * m.xx, size.width);
    const uint32_t right = first(m.x0 + box.right * m.xx, size.width);
    const uint32_t bottom = first(m.y0 + box.bottom * m.yy, size.height);
    cairo_surface_flush(cairo_get_target(canvas->pen));
    for (uint32_t y = first(m.y0 + box.top * m.yy, size.height); y < bottom; ++y) {
        for (uint32_t x = left; x < right; ++x) {
            const Spot at = {(x + 0.5 - m.x0) / m.xx, (y + 0.5 - m.y0) / m.yy,
                             static_cast<int>(x - m.x0), static_cast<int>(y - m.y0),
                             std::min(m.xx, m.yy)};
            const auto [r, g, b] = colourAt(at);
            canvas->pixels[size_t{y} * size.width + x] = uint32_t{r} << 16 | uint32_t{g} << 8 | b;
        }
    }
    cairo_surface_mark_dirty(cairo_get_target(canvas->pen));
}

void Fill(Canvas* canvas, const Box& box, Colour colour) {
    Paint(canvas, box, [colour](const Spot&) { return colour; });
}

void SetColour(cairo_t* pen, Colour colour) {
    cairo_set_source_rgb(pen, colour.r / 255.0, colour.g / 255.0, colour.b / 255.0);
}

void DrawRoundedBox(cairo_t* pen, const Box& box, double radius, Colour colour) {
    SetColour(pen, colour);
    cairo_arc(pen, box.right - radius, box.top + radius, radius, -kPi / 2, 0);
    cairo_arc(pen, box.right - radius, box.bottom - radius, radius, 0, kPi / 2);
    cairo_arc(pen, box.left + radius, box.bottom - radius, radius, kPi / 2, kPi);
    cairo_arc(pen, box.left + radius, box.top + radius, radius, kPi, 1.5 * kPi);
    cairo_fill(pen);
}

// Parts of a text's width.
constexpr double kLeft = 0, kMiddle = 0.5, kRight = 1;

// Writes a text whose capitals are `height` units high and start at `v`, with that part of its
// width at `u`.
void Write(cairo_t* pen, double part, double u, double v, double height, Colour colour,
           const std::string& words) {
    constexpr double kCapitals = 0.64;  // height of the font's capitals, by its size
    constexpr double kWiden = 1.18;     // its letters are narrow
    cairo_matrix_t letters;
    cairo_matrix_init_scale(&letters, kWiden * height / kCapitals, height / kCapitals);
    cairo_set_font_matrix(pen, &letters);
    cairo_text_extents_t extents;
    cairo_text_extents(pen, words.c_str(), &extents);
    SetColour(pen, colour);
    cairo_move_to(pen, u - extents.width * part - extents.x_bearing, v + height);
    cairo_show_text(pen, words.c_str());
    cairo_new_path(pen);  // text leaves a current point
}

void DrawRuler(Canvas* canvas) {
    const auto across = [](const Spot& at) { return std::fmod(at.u, 200) < 100 ? kInk : kDark; };
    const auto down = [](const Spot& at) { return std::fmod(at.v, 200) < 100 ? kInk : kDark; };
    Paint(canvas, {0, 0, kWidth, 36}, across);
    Paint(canvas, {0, kHeight - 36, kWidth, kHeight}, across);
    Paint(canvas, {0, 0, 36, kHeight}, down);
    Paint(canvas, {kWidth - 36, 0, kWidth, kHeight}, down);
}

// With ticks at every 64 levels.
void DrawRawRamp(const Place& place, Canvas* canvas) {
    Paint(canvas, {-kWidth, kRampTop, 2 * kWidth, kRampBottom}, [&](const Spot& at) {
        const uint32_t width = place.sensor.width;
        const uint32_t x = std::min(static_cast<uint32_t>(at.x) + place.Left(), width - 1);
        const int level = RampLevel(x, width);
        return Grey(
                imaging::ToneFromLinear(imaging::LinearFromRaw(level, imaging::Channel::kGreen)));
    });
    Write(canvas->pen, kLeft, 90, kRampTop - 52, 22, kQuiet, "RAW");
    for (int level = 64; level < 1024; level += 64) {
        const double x = double(level) * place.sensor.width / 1024 - place.Left();
        const double u = x * kWidth / place.visible.width;
        Fill(canvas, {u - 2.5, kRampTop - 22, u + 2.5, kRampTop - 6}, kInk);
        Write(canvas->pen, kMiddle, u, kRampTop - 52, 22, kQuiet, std::to_string(level));
    }
}

void DrawGreySteps(Canvas* canvas) {
    for (int step = 0; step < 17; ++step) {
        const int value = std::min(step * 16, 255);
        const double left = 130 + step * 220.0;
        Fill(canvas, {left, 2110, left + 220, 2250}, Grey(value));
        Write(canvas->pen, kMiddle, left + 110, 2163, 34, Grey(value < 128 ? 255 : 0),
              std::to_string(value));
    }
}

// Bars 8 to 2 pixels wide, black and white: upright, level, diagonal.
void DrawBars(Canvas* canvas) {
    double left = 2795;
    for (const int pixels : {8, 6, 4, 3, 2}) {
        for (int row = 0; row < 3; ++row) {
            const double top = 1045 + row * 215;
            Paint(canvas, {left, top, left + 195, top + 190}, [&](const Spot& at) {
                const int along = (row != 1 ? at.x : 0) + (row != 0 ? at.y : 0);
                return Grey(along / pixels % 2 == 0 ? 24 : 232);
            });
        }
        Write(canvas->pen, kMiddle, left + 97.5, 985, 36, kInk, std::to_string(pixels) + " PX");
        left += 220;
    }
}

// What points up, the rings around the star, the corners with their dots.
void DrawShapes(cairo_t* pen) {
    SetColour(pen, {255, 196, 40});
    cairo_move_to(pen, kWidth / 2, 62);
    cairo_line_to(pen, kWidth / 2 + 110, 190);
    cairo_line_to(pen, kWidth / 2 - 110, 190);
    cairo_fill(pen);
    SetColour(pen, kInk);
    cairo_set_line_width(pen, 8);
    for (const double radius : {608.0, 632.0, 656.0, 680.0}) {
        cairo_arc(pen, 2000, 1232, radius, 0, 2 * kPi);
        cairo_stroke(pen);
    }
    constexpr double kCorners[4][2] = {{80, 80}, {3720, 80}, {3720, 2720}, {80, 2720}};
    constexpr double kDots[4][4][2] = {{{100, 100}},
                                       {{55, 55}, {145, 145}},
                                       {{50, 50}, {100, 100}, {150, 150}},
                                       {{58, 58}, {142, 58}, {58, 142}, {142, 142}}};
    for (int corner = 0; corner < 4; ++corner) {
        const auto [u, v] = kCorners[corner];
        DrawRoundedBox(pen, {u, v, u + 200, v + 200}, 30, kInk);
        SetColour(pen, kDark);
        for (int dot = 0; dot <= corner; ++dot) {
            cairo_arc(pen, u + kDots[corner][dot][0], v + kDots[corner][dot][1], 25, 0, 2 * kPi);
            cairo_fill(pen);
        }
    }
}

void WriteTexts(cairo_t* pen, PictureSize visible) {
    const std::string size = std::to_string(visible.width) + " X " + std::to_string(visible.height);
    Write(pen, kMiddle, kWidth / 2, 222, 110, kInk, "TOP");
    Write(pen, kLeft, 330, 130, 90, kInk, "OFFLINE FRAMES");
    Write(pen, kLeft, 330, 262, 48, kQuiet, "TEST CHART");
    Write(pen, kRight, 3670, 130, 90, kInk, size);
    Write(pen, kRight, 3670, 262, 48, kQuiet, "RULER 40 X 30 TEETH");
    Write(pen, kMiddle, 2000, 455, 40, kQuiet, "CIRCLES ROUND - SPOKES STRAIGHT");
    Write(pen, kMiddle, 2000, 1970, 40, kQuiet, "FINEST DETAIL 5 PX PER PERIOD");
    Write(pen, kLeft, 2805, 1988.6, 24, kQuiet, "A MOSAIC TURNS 3 PX AND 2 PX BARS COLOURED");
    double v = 1725;
    for (const int small : {48, 36, 28, 20, 14}) {
        Write(pen, kLeft, 2805, v, small, kInk, "SHARP 0123456789 " + std::to_string(small));
        v += small * 1.6;
    }
}

// Draws the chart whose visible part begins at (left, top) of a picture of `size`.
Picture Draw(const Place& place, PictureSize size, uint32_t left, uint32_t top) {
    Canvas canvas = {size, std::vector<uint32_t>(size_t{size.width} * size.height), nullptr};
    cairo_surface_t* const surface = cairo_image_surface_create_for_data(
            reinterpret_cast<uint8_t*>(canvas.pixels.data()), CAIRO_FORMAT_RGB24,
            static_cast<int>(size.width), static_cast<int>(size.height),
            static_cast<int>(size.width * sizeof(uint32_t)));
    cairo_t* const pen = canvas.pen = cairo_create(surface);
    cairo_translate(pen, left, top);
    cairo_scale(pen, place.visible.width / kWidth, place.visible.height / kHeight);
    // Cairo's built-in font: the same on every machine.
    cairo_select_font_face(pen, "@cairo:mono", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    Paint(&canvas, {-kWidth, -kHeight, 2 * kWidth, 2 * kHeight}, Background);
    DrawRoundedBox(pen, {105, 395, 1230, 2070}, 24, kDark);
    DrawRoundedBox(pen, {1280, 395, 2720, 2070}, 24, kDark);
    DrawRoundedBox(pen, {2770, 395, 3895, 2070}, 24, kDark);
    Paint(&canvas, {1400, 632, 2600, 1832}, Star);
    Paint(&canvas, {2795, 420, 3320, 945}, ZonePlate);
    Paint(&canvas, {3345, 420, 3870, 945}, Texture);
    Paint(&canvas, {330, 2600, 3670, 2880}, ColourRamps);
    for (const ChartPatch& patch : ChartPatches()) Fill(&canvas, patch.box, patch.colour);
    DrawRuler(&canvas);
    DrawRawRamp(place, &canvas);
    DrawGreySteps(&canvas);
    DrawBars(&canvas);
    DrawShapes(pen);
    WriteTexts(pen, place.visible);
    cairo_destroy(pen);
    cairo_surface_destroy(surface);
    Picture picture(size);
    uint8_t* to = picture.rgb.data();
    for (const uint32_t pixel : canvas.pixels) {
        for (int shift = 16; shift >= 0; shift -= 8) *to++ = uint8_t(pixel >> shift);
    }
    return picture;
}

}  // namespace

RampRows RampOf(PictureSize sensor) {
    const Place place = OnSensor(sensor);
    const auto row = [&](double v) {
        return static_cast<uint32_t>(FirstPixel(place.Top() + v * place.visible.height / kHeight));
    };
    return {row(kRampTop), row(kRampBottom)};
}

std::array<ChartPatch, 24> ChartPatches() {
    constexpr Colour kColours[] = {
            {230, 30, 40},   {40, 170, 60},   {40, 70, 200},   {235, 205, 40},   // primaries
            {200, 50, 140},  {30, 160, 190},  {240, 130, 40},  {110, 60, 150},   //
            {255, 0, 0},     {0, 255, 0},     {0, 0, 255},     {255, 255, 255},  // full
            {0, 255, 255},   {255, 0, 255},   {255, 255, 0},   {0, 0, 0},        //
            {245, 214, 190}, {224, 172, 140}, {164, 108, 80},  {96, 62, 48},     // skin
            {90, 110, 70},   {120, 150, 190}, {128, 128, 128}, {200, 200, 200},  // leaf, sky, grey
    };
    std::array<ChartPatch, 24> patches;
    for (size_t i = 0; i < patches.size(); ++i) {
        const double left = 130 + double(i % 4) * 275;
        const double top = 420 + double(i / 4) * 275;
        patches[i] = {kColours[i], {left, top, left + 250, top + 250}};
    }
    return patches;
}

Picture DrawSensorChart(PictureSize sensor) {
    const Place place = OnSensor(sensor);
    return Draw(place, sensor, place.Left(), place.Top());
}

Picture DrawVisibleChart(PictureSize visible) {
    const PictureSize sensor = {Even(visible.width * 256.0 / 250),
                                Even(visible.height * 256.0 / 250)};
    return Draw({sensor, visible}, visible, 0, 0);
}

}  // namespace offlineframes

// The test chart: where it is on a sensor, and its drawing, panel by panel.

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
constexpr Box kRampBox = {-kWidth, 2330, 2 * kWidth, 2530};
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

uint32_t* RowOf(cairo_surface_t* surface, int y) {
    unsigned char* const data = cairo_image_surface_get_data(surface);
    const ptrdiff_t stride = cairo_image_surface_get_stride(surface);
    return reinterpret_cast<uint32_t*>(data + y * stride);
}

// A pixel to be shaded.
struct Spot {
    double u, v;  // its middle, in chart units
    int x, y;     // counted from the corner of the visible chart
};

// Every pixel whose middle is in `box` becomes colourAt(spot), unblended. The pen's matrix turns
// chart units into pixels.
template <class Shader>
void Shade(cairo_t* pen, const Box& box, Shader colourAt) {
    cairo_matrix_t m;
    cairo_get_matrix(pen, &m);
    cairo_surface_t* const surface = cairo_get_target(pen);
    cairo_surface_flush(surface);
    const auto first = [](double edge, int end) {
        return static_cast<int>(std::clamp(std::ceil(edge - 0.5), 0.0, double(end)));
    };
    const int width = cairo_image_surface_get_width(surface);
    const int height = cairo_image_surface_get_height(surface);
    const int right = first(m.x0 + box.right * m.xx, width);
    const int bottom = first(m.y0 + box.bottom * m.yy, height);
    for (int y = first(m.y0 + box.top * m.yy, height); y < bottom; ++y) {
        uint32_t* const row = RowOf(surface, y);
        for (int x = first(m.x0 + box.left * m.xx, width); x < right; ++x) {
            const Colour colour =
                    colourAt(Spot{(x + 0.5 - m.x0) / m.xx, (y + 0.5 - m.y0) / m.yy,
                                  x - static_cast<int>(m.x0), y - static_cast<int>(m.y0)});
            row[x] = uint32_t{colour.r} << 16 | uint32_t{colour.g} << 8 | colour.b;
        }
    }
    cairo_surface_mark_dirty(surface);
}

void Fill(cairo_t* pen, const Box& box, Colour colour) {
    Shade(pen, box, [colour](const Spot&) { return colour; });
}

// Pixels per chart unit, the smaller of the two directions.
double ScaleOf(cairo_t* pen) {
    cairo_matrix_t m;
    cairo_get_matrix(pen, &m);
    return std::min(m.xx, m.yy);
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

// Text whose capitals are `height` units high and start at `v`; `u` is the text's left edge (align
// 0), middle (0.5) or right edge (1).
void DrawText(cairo_t* pen, double u, double v, double height, const std::string& words,
              Colour colour, double align) {
    constexpr double kCapitals = 0.64;  // height of the font's capitals, by its size
    constexpr double kWiden = 1.18;     // its letters are narrow
    cairo_matrix_t letters;
    cairo_matrix_init_scale(&letters, kWiden * height / kCapitals, height / kCapitals);
    cairo_set_font_matrix(pen, &letters);
    cairo_text_extents_t extents;
    cairo_text_extents(pen, words.c_str(), &extents);
    SetColour(pen, colour);
    cairo_move_to(pen, u - align * extents.width - extents.x_bearing, v + height);
    cairo_show_text(pen, words.c_str());
    cairo_new_path(pen);  // text leaves a current point
}

uint8_t ToByte(double value) {
    return static_cast<uint8_t>(std::clamp(value + 0.5, 0.0, 255.0));
}

Colour Grey(double value) {
    const uint8_t byte = ToByte(value);
    return {byte, byte, byte};
}

// A sine pattern around mid grey, fading out where a period has fewer pixels than a frame can hold.
Colour SinePattern(double phase, double periodPixels) {
    const double contrast = std::clamp((periodPixels - kFinestPeriod) / 2, 0.0, 1.0);
    return Grey(128 + 118 * contrast * std::sin(phase));
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
double CloudAt(int x, int y, int size, uint32_t seed) {
    const int cx = x / size;
    const int cy = y / size;
    const double fx = double(x % size) / size;
    const double fy = double(y % size) / size;
    const double top = NoiseAt(cx, cy, seed) * (1 - fx) + NoiseAt(cx + 1, cy, seed) * fx;
    const double low = NoiseAt(cx, cy + 1, seed) * (1 - fx) + NoiseAt(cx + 1, cy + 1, seed) * fx;
    return top * (1 - fy) + low * fy;
}

void DrawBackground(cairo_t* pen) {
    Shade(pen, {-kWidth, -kHeight, 2 * kWidth, 2 * kHeight}, [](const Spot& at) {
        if (at.u < 0 || at.v < 0 || at.u >= kWidth || at.v >= kHeight) {
            // Outside: seen after a crop only if the crop is wrong.
            const bool stripe = std::fmod(at.u + at.v + 8 * kWidth, 48) < 24;
            return stripe ? Colour{235, 120, 30} : Colour{60, 30, 20};
        }
        const double light = 0.6 * at.u / kWidth + 0.4 * at.v / kHeight;
        return Colour{ToByte(34 + 40 * light), ToByte(42 + 46 * light), ToByte(56 + 52 * light)};
    });
}

// The dark grounds of three panels, what points up, and the texts beside the panels.
void DrawFrame(cairo_t* pen, PictureSize visible) {
    DrawRoundedBox(pen, {105, 395, 1230, 2070}, 24, kDark);
    DrawRoundedBox(pen, {1280, 395, 2720, 2070}, 24, kDark);
    DrawRoundedBox(pen, {2770, 395, 3895, 2070}, 24, kDark);
    SetColour(pen, {255, 196, 40});
    cairo_move_to(pen, kWidth / 2, 62);
    cairo_line_to(pen, kWidth / 2 + 110, 190);
    cairo_line_to(pen, kWidth / 2 - 110, 190);
    cairo_fill(pen);
    const std::string size = std::to_string(visible.width) + " X " + std::to_string(visible.height);
    const struct {
        double u, v, height;
        std::string words;
        Colour colour;
        double align;
    } texts[] = {
            {kWidth / 2, 222, 110, "TOP", kInk, 0.5},
            {330, 130, 90, "OFFLINE FRAMES", kInk, 0},
            {330, 262, 48, "TEST CHART", kQuiet, 0},
            {3670, 130, 90, size, kInk, 1},
            {3670, 262, 48, "RULER 40 X 30 TEETH", kQuiet, 1},
            {2000, 455, 40, "CIRCLES ROUND - SPOKES STRAIGHT", kQuiet, 0.5},
            {2000, 1970, 40, "FINEST DETAIL 5 PX PER PERIOD", kQuiet, 0.5},
            {2805, 1725, 48, "SHARP 0123456789 48", kInk, 0},
            {2805, 1801.8, 36, "SHARP 0123456789 36", kInk, 0},
            {2805, 1859.4, 28, "SHARP 0123456789 28", kInk, 0},
            {2805, 1904.2, 20, "SHARP 0123456789 20", kInk, 0},
            {2805, 1936.2, 14, "SHARP 0123456789 14", kInk, 0},
            {2805, 1988.6, 24, "A MOSAIC TURNS 3 PX AND 2 PX BARS COLOURED", kQuiet, 0},
            {90, kRampBox.top - 52, 22, "RAW", kQuiet, 0},
    };
    for (const auto& text : texts) {
        DrawText(pen, text.u, text.v, text.height, text.words, text.colour, text.align);
    }
}

void DrawBorder(cairo_t* pen) {
    constexpr double kRuler = 36;
    const auto tooth = [](double along) { return std::fmod(along, 200) < 100 ? kInk : kDark; };
    for (const double v : {0.0, kHeight - kRuler}) {
        Shade(pen, {0, v, kWidth, v + kRuler}, [&](const Spot& at) { return tooth(at.u); });
    }
    for (const double u : {0.0, kWidth - kRuler}) {
        Shade(pen, {u, 0, u + kRuler, kHeight}, [&](const Spot& at) { return tooth(at.v); });
    }
    constexpr double kCorners[4][2] = {{80, 80}, {3720, 80}, {3720, 2720}, {80, 2720}};
    constexpr double kDots[4][4][2] = {{{100, 100}},
                                       {{55, 55}, {145, 145}},
                                       {{50, 50}, {100, 100}, {150, 150}},
                                       {{58, 58}, {142, 58}, {58, 142}, {142, 142}}};
    for (int corner = 0; corner < 4; ++corner) {
        const auto [u, v] = kCorners[corner];
        DrawRoundedBox(pen, {u, v, u + 200, v + 200}, 30, kInk);
        for (int dot = 0; dot <= corner; ++dot) {
            const auto [right, down] = kDots[corner][dot];
            SetColour(pen, kDark);
            cairo_arc(pen, u + right, v + down, 25, 0, 2 * kPi);
            cairo_fill(pen);
        }
    }
}

void DrawPatches(cairo_t* pen) {
    for (const ChartPatch& patch : ChartPatches()) Fill(pen, patch.box, patch.colour);
}

void DrawStar(cairo_t* pen) {
    constexpr double kU = 2000;  // its centre
    constexpr double kV = 1232;
    constexpr double kRadius = 600;
    constexpr int kSpokes = 48;
    const double scale = ScaleOf(pen);
    Shade(pen, {kU - kRadius, kV - kRadius, kU + kRadius, kV + kRadius}, [&](const Spot& at) {
        const double r = std::hypot(at.u - kU, at.v - kV);
        if (r > kRadius) return kDark;
        const double angle = std::atan2(at.v - kV, at.u - kU);
        return SinePattern(kSpokes * angle, 2 * kPi * r * scale / kSpokes);
    });
    SetColour(pen, kInk);
    cairo_set_line_width(pen, 8);
    for (const double radius : {608.0, 632.0, 656.0, 680.0}) {
        cairo_arc(pen, kU, kV, radius, 0, 2 * kPi);
        cairo_stroke(pen);
    }
}

void DrawZonePlate(cairo_t* pen) {
    constexpr Box kBox = {2795, 420, 3320, 945};
    // Phase pi r^2 / a: the period at radius r is a / r; it is finest at the middle of a side.
    const double scale = ScaleOf(pen);
    const double a = (kBox.right - kBox.left) / 2 * kFinestPeriod / scale;
    Shade(pen, kBox, [&](const Spot& at) {
        const double r = std::hypot(at.u - (kBox.left + kBox.right) / 2,
                                    at.v - (kBox.top + kBox.bottom) / 2);
        const double period = r > 0 ? a / r * scale : 1000;
        return SinePattern(kPi * r * r / a + kPi / 2, period);
    });
}

void DrawTexture(cairo_t* pen) {
    Shade(pen, {3345, 420, 3870, 945}, [](const Spot& at) {
        const double coarse = CloudAt(at.x, at.y, 48, 1) - 0.5;
        const double middle = CloudAt(at.x, at.y, 12, 2) - 0.5;
        const double fine = NoiseAt(at.x / 2, at.y / 2, 3) - 0.5;
        const double light = 118 + 120 * coarse + 60 * middle + 60 * fine;
        return Colour{ToByte(light * 1.06), ToByte(light), ToByte(light * 0.86)};
    });
}

// Bars 8 to 2 pixels wide, black and white: upright, level, diagonal.
void DrawLinePairs(cairo_t* pen) {
    double left = 2795;
    for (const int pixels : {8, 6, 4, 3, 2}) {
        DrawText(pen, left + 97.5, 985, 36, std::to_string(pixels) + " PX", kInk, 0.5);
        for (int row = 0; row < 3; ++row) {
            const double v = 1045 + row * 215;
            Shade(pen, {left, v, left + 195, v + 190}, [=](const Spot& at) {
                const int along = (row != 1 ? at.x : 0) + (row != 0 ? at.y : 0);
                return along / pixels % 2 == 0 ? Colour{24, 24, 24} : Colour{232, 232, 232};
            });
        }
        left += 220;
    }
}

void DrawGreySteps(cairo_t* pen) {
    constexpr int kSteps = 17;
    const double width = (3870.0 - 130.0) / kSteps;
    for (int i = 0; i < kSteps; ++i) {
        const int value = std::min(i * 16, 255);
        const double u = 130 + i * width;
        Fill(pen, {u, 2110, u + width, 2250}, Grey(value));
        DrawText(pen, u + width / 2, 2163, 34, std::to_string(value), Grey(value < 128 ? 255 : 0),
                 0.5);
    }
}

// Red, green, blue and, below them, hue once around.
void DrawColourRamps(cairo_t* pen) {
    constexpr Box kBox = {330, 2600, 3670, 2880};
    Shade(pen, kBox, [&](const Spot& at) {
        const double t = (at.u - kBox.left) / (kBox.right - kBox.left);
        const int ramp = static_cast<int>((at.v - kBox.top) / 70);
        const auto channel = [&](int index) {
            if (ramp < 3) return index == ramp ? ToByte(255 * t) : uint8_t{0};
            // Each primary is full for a third and fades over the next sixths.
            const double away = std::abs(t - index / 3.0) * 6;
            return ToByte(255 * std::clamp(2 - std::min(away, 6 - away), 0.0, 1.0));
        };
        return Colour{channel(0), channel(1), channel(2)};
    });
}

// The ramp is exact: an antialiasing painter would blend its levels.
void DrawRawRamp(cairo_t* pen, const Place& place) {
    const uint32_t width = place.sensor.width;
    Shade(pen, kRampBox, [&](const Spot& at) {
        const uint32_t x = std::min(static_cast<uint32_t>(at.x) + place.Left(), width - 1);
        const int level = RampLevel(x, width);
        return Grey(
                imaging::ToneFromLinear(imaging::LinearFromRaw(level, imaging::Channel::kGreen)));
    });
    // Ticks at every 64 raw levels.
    for (int level = 64; level < 1024; level += 64) {
        const double x = double(level) * width / 1024 - place.Left();
        const double u = x * kWidth / place.visible.width;
        Fill(pen, {u - 2.5, kRampBox.top - 22, u + 2.5, kRampBox.top - 6}, kInk);
        DrawText(pen, u, kRampBox.top - 52, 22, std::to_string(level), kQuiet, 0.5);
    }
}

// Draws the chart whose visible part begins at (left, top) of a picture of `size`.
Picture Draw(const Place& place, PictureSize size, uint32_t left, uint32_t top) {
    cairo_surface_t* const surface = cairo_image_surface_create(
            CAIRO_FORMAT_RGB24, static_cast<int>(size.width), static_cast<int>(size.height));
    cairo_t* const pen = cairo_create(surface);
    cairo_translate(pen, left, top);
    cairo_scale(pen, place.visible.width / kWidth, place.visible.height / kHeight);
    // Cairo's built-in font: the same on every machine.
    cairo_select_font_face(pen, "@cairo:mono", CAIRO_FONT_SLANT_NORMAL, CAIRO_FONT_WEIGHT_BOLD);
    DrawBackground(pen);
    DrawFrame(pen, place.visible);
    for (const auto draw : {DrawPatches, DrawStar, DrawZonePlate, DrawTexture, DrawLinePairs,
                            DrawGreySteps, DrawColourRamps, DrawBorder}) {
        draw(pen);
    }
    DrawRawRamp(pen, place);
    cairo_destroy(pen);
    cairo_surface_flush(surface);
    Picture picture(size);
    uint8_t* to = picture.rgb.data();
    for (uint32_t y = 0; y < size.height; ++y) {
        const uint32_t* const row = RowOf(surface, static_cast<int>(y));
        for (uint32_t x = 0; x < size.width; ++x) {
            for (int shift = 16; shift >= 0; shift -= 8) *to++ = uint8_t(row[x] >> shift);
        }
    }
    cairo_surface_destroy(surface);
    return picture;
}

}  // namespace

RampRows RampOf(PictureSize sensor) {
    // The rows whose middles are in the ramp's box, as the canvas counts them.
    const Place place = OnSensor(sensor);
    const auto row = [&](double v) {
        return static_cast<uint32_t>(
                std::ceil(place.Top() + v * place.visible.height / kHeight - 0.5));
    };
    return {row(kRampBox.top), row(kRampBox.bottom)};
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

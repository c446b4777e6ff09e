// The test chart: where it is on a sensor, and its drawing, panel by panel.

#include "chart.h"

#include <cairo.h>
#include <imaging/camera_physics.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <string>

namespace offlineframes {
namespace {

uint32_t Even(double value) {
    return static_cast<uint32_t>(value) & ~1u;
}

ChartFrame Centred(PictureSize sensor, PictureSize visible) {
    return {sensor, visible, imaging::CropOffset(sensor.width, visible.width),
            imaging::CropOffset(sensor.height, visible.height)};
}

constexpr double kPi = 3.14159265358979323846;
constexpr Colour kInk = {236, 239, 243};
constexpr Colour kQuiet = {150, 158, 168};
constexpr Colour kDark = {20, 22, 26};
// Finest detail of the star and the zone plate, in pixels per period. Red and blue have every
// second pixel, so theirs may not be finer than 4.
constexpr double kFinestPeriod = 5;

// The canvas: exact pixels by shaders, smooth shapes and letters by cairo, all in chart units.
class Canvas {
  public:
    // The visible chart covers `visible` pixels from (left, top) of a picture of `size`.
    Canvas(PictureSize size, uint32_t left, uint32_t top, PictureSize visible)
        : m_size(size),
          m_left(left),
          m_top(top),
          m_scaleX(visible.width / kChartWidth),
          m_scaleY(visible.height / kChartHeight),
          m_surface(cairo_image_surface_create(CAIRO_FORMAT_RGB24, static_cast<int>(size.width),
                                               static_cast<int>(size.height)),
                    cairo_surface_destroy),
          m_pen(cairo_create(m_surface.get()), cairo_destroy) {
        cairo_translate(m_pen.get(), m_left, m_top);
        cairo_scale(m_pen.get(), m_scaleX, m_scaleY);
        // Cairo's built-in font: the same on every machine.
        cairo_select_font_face(m_pen.get(), "@cairo:mono", CAIRO_FONT_SLANT_NORMAL,
                               CAIRO_FONT_WEIGHT_BOLD);
    }

    // Every pixel whose middle is in `box` becomes colourAt(u, v).
    template <class Shader>
    void Shade(const Box& box, Shader colourAt);
    // The same, telling the shader whole pixels from the corner of the visible chart.
    template <class Shader>
    void ShadePixels(const Box& box, Shader colourAt) {
        Shade(box, [&](double u, double v) {
            return colourAt(static_cast<int>(std::floor(u * m_scaleX)),
                            static_cast<int>(std::floor(v * m_scaleY)));
        });
    }
    void Fill(const Box& box, Colour colour) {
        Shade(box, [colour](double, double) { return colour; });
    }

    // Cairo's drawing state, set to `colour`, for smooth shapes.
    cairo_t* Pen(Colour colour) {
        cairo_new_path(m_pen.get());  // text leaves a current point
        cairo_set_source_rgb(m_pen.get(), colour.r / 255.0, colour.g / 255.0, colour.b / 255.0);
        return m_pen.get();
    }
    void Disc(double u, double v, double radius, Colour colour) {
        cairo_arc(Pen(colour), u, v, radius, 0, 2 * kPi);
        cairo_fill(m_pen.get());
    }
    void RoundedBox(const Box& box, double radius, Colour colour);

    // Text whose capitals are `height` units high and start at `v`; `u` is the text's left edge
    // (align 0), middle (0.5) or right edge (1).
    void Text(double u, double v, double height, const std::string& words, Colour colour,
              double align = kLeft);
    static constexpr double kLeft = 0;
    static constexpr double kMiddle = 0.5;
    static constexpr double kRight = 1;

    // Pixels per chart unit, the smaller of the two directions.
    double Scale() const { return std::min(m_scaleX, m_scaleY); }
    Picture Take() const;

  private:
    uint32_t* Row(uint32_t y) const {
        unsigned char* const data = cairo_image_surface_get_data(m_surface.get());
        const int stride = cairo_image_surface_get_stride(m_surface.get());
        return reinterpret_cast<uint32_t*>(data + static_cast<ptrdiff_t>(y) * stride);
    }

    PictureSize m_size;
    double m_left;
    double m_top;
    double m_scaleX;
    double m_scaleY;
    std::unique_ptr<cairo_surface_t, void (*)(cairo_surface_t*)> m_surface;
    std::unique_ptr<cairo_t, void (*)(cairo_t*)> m_pen;
};

template <class Shader>
void Canvas::Shade(const Box& box, Shader colourAt) {
    // Pixels are addressed by their middles.
    const auto first = [](double edge, uint32_t end) {
        return static_cast<uint32_t>(std::clamp(std::ceil(edge - 0.5), 0.0, double(end)));
    };
    const uint32_t x1 = first(m_left + box.right * m_scaleX, m_size.width);
    const uint32_t y1 = first(m_top + box.bottom * m_scaleY, m_size.height);
    cairo_surface_flush(m_surface.get());
    for (uint32_t y = first(m_top + box.top * m_scaleY, m_size.height); y < y1; ++y) {
        uint32_t* const row = Row(y);
        const double v = (y + 0.5 - m_top) / m_scaleY;
        for (uint32_t x = first(m_left + box.left * m_scaleX, m_size.width); x < x1; ++x) {
            const Colour colour = colourAt((x + 0.5 - m_left) / m_scaleX, v);
            row[x] = uint32_t{colour.r} << 16 | uint32_t{colour.g} << 8 | colour.b;
        }
    }
    cairo_surface_mark_dirty(m_surface.get());
}

void Canvas::RoundedBox(const Box& box, double radius, Colour colour) {
    cairo_t* const pen = Pen(colour);
    cairo_arc(pen, box.right - radius, box.top + radius, radius, -kPi / 2, 0);
    cairo_arc(pen, box.right - radius, box.bottom - radius, radius, 0, kPi / 2);
    cairo_arc(pen, box.left + radius, box.bottom - radius, radius, kPi / 2, kPi);
    cairo_arc(pen, box.left + radius, box.top + radius, radius, kPi, 1.5 * kPi);
    cairo_fill(pen);
}

void Canvas::Text(double u, double v, double height, const std::string& words, Colour colour,
                  double align) {
    constexpr double kCapitals = 0.64;  // height of the font's capitals, by its size
    constexpr double kWiden = 1.18;     // its letters are narrow
    cairo_t* const pen = Pen(colour);
    cairo_matrix_t letters;
    cairo_matrix_init_scale(&letters, kWiden * height / kCapitals, height / kCapitals);
    cairo_set_font_matrix(pen, &letters);
    cairo_text_extents_t extents;
    cairo_text_extents(pen, words.c_str(), &extents);
    cairo_move_to(pen, u - align * extents.width - extents.x_bearing, v + height);
    cairo_show_text(pen, words.c_str());
}

Picture Canvas::Take() const {
    cairo_surface_flush(m_surface.get());
    Picture picture(m_size.width, m_size.height);
    uint8_t* to = picture.rgb.data();
    for (uint32_t y = 0; y < m_size.height; ++y) {
        const uint32_t* const row = Row(y);
        for (uint32_t x = 0; x < m_size.width; ++x) {
            for (int shift = 16; shift >= 0; shift -= 8) {
                *to++ = static_cast<uint8_t>(row[x] >> shift);
            }
        }
    }
    return picture;
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

void DrawZonePlate(Canvas& canvas, const Box& box) {
    const double cu = (box.left + box.right) / 2;
    const double cv = (box.top + box.bottom) / 2;
    // Phase pi r^2 / a: the period at radius r is a / r; it is finest at the middle of a side.
    const double a = (box.right - box.left) / 2 * kFinestPeriod / canvas.Scale();
    canvas.Shade(box, [&](double u, double v) {
        const double r = std::hypot(u - cu, v - cv);
        const double period = r > 0 ? a / r * canvas.Scale() : 1000;
        return SinePattern(kPi * r * r / a + kPi / 2, period);
    });
}

void DrawTexture(Canvas& canvas, const Box& box) {
    canvas.ShadePixels(box, [](int x, int y) {
        const double coarse = CloudAt(x, y, 48, 1) - 0.5;
        const double middle = CloudAt(x, y, 12, 2) - 0.5;
        const double fine = NoiseAt(x / 2, y / 2, 3) - 0.5;
        const double light = 118 + 120 * coarse + 60 * middle + 60 * fine;
        return Colour{ToByte(light * 1.06), ToByte(light), ToByte(light * 0.86)};
    });
}

// Bars 8 to 2 pixels wide, black and white: upright, level, diagonal.
void DrawLinePairs(Canvas& canvas, double left, double top) {
    for (const int pixels : {8, 6, 4, 3, 2}) {
        canvas.Text(left + 97.5, top, 36, std::to_string(pixels) + " PX", kInk, Canvas::kMiddle);
        for (int row = 0; row < 3; ++row) {
            const double v = top + 60 + row * 215;
            canvas.ShadePixels({left, v, left + 195, v + 190}, [=](int x, int y) {
                const int along = (row != 1 ? x : 0) + (row != 0 ? y : 0);
                return along / pixels % 2 == 0 ? Colour{24, 24, 24} : Colour{232, 232, 232};
            });
        }
        left += 220;
    }
}

void DrawSmallLetters(Canvas& canvas, double left, double v) {
    for (const int height : {48, 36, 28, 20, 14}) {
        canvas.Text(left, v, height, "SHARP 0123456789 " + std::to_string(height), kInk);
        v += height * 1.6;
    }
}

// The dark grounds of three panels, and every text that is the same on all charts.
void DrawFrames(Canvas& canvas) {
    canvas.RoundedBox({105, 395, 1230, 2070}, 24, kDark);
    canvas.RoundedBox({1280, 395, 2720, 2070}, 24, kDark);
    canvas.RoundedBox({2770, 395, 3895, 2070}, 24, kDark);
    constexpr struct {
        double u, v, height;
        const char* words;
        Colour colour;
        double align;
    } kTexts[] = {
            {kChartWidth / 2, 222, 110, "TOP", kInk, Canvas::kMiddle},
            {330, 130, 90, "OFFLINE FRAMES", kInk, Canvas::kLeft},
            {330, 262, 48, "TEST CHART", kQuiet, Canvas::kLeft},
            {3670, 262, 48, "RULER 40 X 30 TEETH", kQuiet, Canvas::kRight},
            {2000, 455, 40, "CIRCLES ROUND - SPOKES STRAIGHT", kQuiet, Canvas::kMiddle},
            {2000, 1970, 40, "FINEST DETAIL 5 PX PER PERIOD", kQuiet, Canvas::kMiddle},
            {2805, 1988.6, 24, "A MOSAIC TURNS 3 PX AND 2 PX BARS COLOURED", kQuiet, Canvas::kLeft},
            {90, kChartRampBox.top - 52, 22, "RAW", kQuiet, Canvas::kLeft},
    };
    for (const auto& text : kTexts) {
        canvas.Text(text.u, text.v, text.height, text.words, text.colour, text.align);
    }
}

void DrawBackground(Canvas& canvas) {
    const Box everything = {-kChartWidth, -kChartHeight, 2 * kChartWidth, 2 * kChartHeight};
    canvas.Shade(everything, [](double u, double v) {
        if (u < 0 || v < 0 || u >= kChartWidth || v >= kChartHeight) {
            // Outside: seen after a crop only if the crop is wrong.
            const bool stripe = std::fmod(u + v + 8 * kChartWidth, 48) < 24;
            return stripe ? Colour{235, 120, 30} : Colour{60, 30, 20};
        }
        const double light = 0.6 * u / kChartWidth + 0.4 * v / kChartHeight;
        return Colour{ToByte(34 + 40 * light), ToByte(42 + 46 * light), ToByte(56 + 52 * light)};
    });
}

void DrawBorder(Canvas& canvas) {
    constexpr double kRuler = 36;
    const auto tooth = [](double along) { return std::fmod(along, 200) < 100 ? kInk : kDark; };
    for (const double v : {0.0, kChartHeight - kRuler}) {
        canvas.Shade({0, v, kChartWidth, v + kRuler}, [&](double u, double) { return tooth(u); });
    }
    for (const double u : {0.0, kChartWidth - kRuler}) {
        canvas.Shade({u, 0, u + kRuler, kChartHeight}, [&](double, double v) { return tooth(v); });
    }
    constexpr double kCorners[4][2] = {{80, 80}, {3720, 80}, {3720, 2720}, {80, 2720}};
    constexpr double kDots[4][4][2] = {{{100, 100}},
                                       {{55, 55}, {145, 145}},
                                       {{50, 50}, {100, 100}, {150, 150}},
                                       {{58, 58}, {142, 58}, {58, 142}, {142, 142}}};
    for (int corner = 0; corner < 4; ++corner) {
        const double u = kCorners[corner][0];
        const double v = kCorners[corner][1];
        canvas.RoundedBox({u, v, u + 200, v + 200}, 30, kInk);
        for (int dot = 0; dot <= corner; ++dot) {
            canvas.Disc(u + kDots[corner][dot][0], v + kDots[corner][dot][1], 25, kDark);
        }
    }
}

void DrawHeader(Canvas& canvas, PictureSize visible) {
    cairo_t* const pen = canvas.Pen({255, 196, 40});
    cairo_move_to(pen, kChartWidth / 2, 62);
    cairo_line_to(pen, kChartWidth / 2 + 110, 190);
    cairo_line_to(pen, kChartWidth / 2 - 110, 190);
    cairo_fill(pen);
    const std::string size = std::to_string(visible.width) + " X " + std::to_string(visible.height);
    canvas.Text(3670, 130, 90, size, kInk, Canvas::kRight);
}

void DrawStar(Canvas& canvas) {
    constexpr double kCentreU = 2000;
    constexpr double kCentreV = 1232;
    constexpr double kRadius = 600;
    constexpr int kSpokes = 48;
    const Box box = {kCentreU - kRadius, kCentreV - kRadius, kCentreU + kRadius,
                     kCentreV + kRadius};
    canvas.Shade(box, [&](double u, double v) {
        const double r = std::hypot(u - kCentreU, v - kCentreV);
        if (r > kRadius) return kDark;
        const double angle = std::atan2(v - kCentreV, u - kCentreU);
        return SinePattern(kSpokes * angle, 2 * kPi * r * canvas.Scale() / kSpokes);
    });
    cairo_t* const pen = canvas.Pen(kInk);
    cairo_set_line_width(pen, 8);
    for (const double radius : {608.0, 632.0, 656.0, 680.0}) {
        cairo_arc(pen, kCentreU, kCentreV, radius, 0, 2 * kPi);
        cairo_stroke(pen);
    }
}

void DrawGreySteps(Canvas& canvas) {
    constexpr int kSteps = 17;
    const double width = (3870.0 - 130.0) / kSteps;
    for (int i = 0; i < kSteps; ++i) {
        const int value = std::min(i * 16, 255);
        const double u = 130 + i * width;
        canvas.Fill({u, 2110, u + width, 2250}, Grey(value));
        const std::string number = std::to_string(value);
        canvas.Text(u + width / 2, 2163, 34, number, Grey(value < 128 ? 255 : 0), Canvas::kMiddle);
    }
}

// Red, green, blue and, below them, hue once around.
void DrawColourRamps(Canvas& canvas) {
    constexpr Box kBox = {330, 2600, 3670, 2880};
    canvas.Shade(kBox, [&](double u, double v) {
        const double t = (u - kBox.left) / (kBox.right - kBox.left);
        const int ramp = static_cast<int>((v - kBox.top) / 70);
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
void DrawRamp(Canvas& canvas, const ChartFrame& frame) {
    canvas.ShadePixels(kChartRampBox, [&](int x, int) {
        const uint32_t sensorX = std::min(static_cast<uint32_t>(x + static_cast<int>(frame.left)),
                                          frame.sensor.width - 1);
        const int level = RampLevel(sensorX, frame.sensor.width);
        const int linear = imaging::LinearFromRaw(level, imaging::Channel::kGreen);
        const uint8_t tone = imaging::ToneFromLinear(linear);
        return Colour{tone, tone, tone};
    });
    // Ticks at every 64 raw levels.
    for (int level = 64; level < 1024; level += 64) {
        const double x = double(level) * frame.sensor.width / 1024 - frame.left;
        const double u = x * kChartWidth / frame.visible.width;
        canvas.Fill({u - 2.5, kChartRampBox.top - 22, u + 2.5, kChartRampBox.top - 6}, kInk);
        canvas.Text(u, kChartRampBox.top - 52, 22, std::to_string(level), kQuiet, Canvas::kMiddle);
    }
}

Picture Draw(const ChartFrame& frame, PictureSize size, uint32_t left, uint32_t top) {
    Canvas canvas(size, left, top, frame.visible);
    DrawBackground(canvas);
    DrawFrames(canvas);
    for (const ChartPatch& patch : ChartPatches()) canvas.Fill(patch.box, patch.colour);
    DrawStar(canvas);
    DrawZonePlate(canvas, {2795, 420, 3320, 945});
    DrawTexture(canvas, {3345, 420, 3870, 945});
    DrawLinePairs(canvas, 2795, 985);
    DrawSmallLetters(canvas, 2805, 1725);
    DrawGreySteps(canvas);
    DrawColourRamps(canvas);
    DrawBorder(canvas);
    DrawRamp(canvas, frame);
    DrawHeader(canvas, frame.visible);
    return canvas.Take();
}

}  // namespace

ChartFrame ChartOnSensor(PictureSize sensor) {
    // 250 / 256 of the sensor is visible: 4000 of 4096, 3000 of 3072.
    return Centred(sensor, {std::max(2u, Even(sensor.width * 250.0 / 256)),
                            std::max(2u, Even(sensor.height * 250.0 / 256))});
}

ChartFrame ChartOfVisible(PictureSize visible) {
    return Centred({Even(visible.width * 256.0 / 250), Even(visible.height * 256.0 / 250)},
                   visible);
}

ChartRamp RampOf(const ChartFrame& frame) {
    // The rows whose middles are in the ramp's box, as the canvas counts them.
    const auto row = [&](double v) {
        return static_cast<uint32_t>(
                std::ceil(frame.top + v * frame.visible.height / kChartHeight - 0.5));
    };
    return {row(kChartRampBox.top), row(kChartRampBox.bottom)};
}

std::array<ChartPatch, kChartPatches> ChartPatches() {
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

Picture DrawSensorChart(const ChartFrame& frame) {
    return Draw(frame, frame.sensor, frame.left, frame.top);
}

Picture DrawVisibleChart(const ChartFrame& frame) {
    return Draw(frame, frame.visible, 0, 0);
}

}  // namespace offlineframes

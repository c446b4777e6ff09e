// Shapes of the chart, painted by their distance functions.

#include "chart_canvas.h"

#include "chart_font.h"

namespace offlineframes {
namespace {

double segmentDistance(double u, double v, double u0, double v0, double u1, double v1) {
    const double du = u1 - u0;
    const double dv = v1 - v0;
    const double length2 = du * du + dv * dv;
    const double along =
            length2 > 0 ? std::clamp(((u - u0) * du + (v - v0) * dv) / length2, 0.0, 1.0) : 0.0;
    return std::hypot(u - u0 - along * du, v - v0 - along * dv);
}

constexpr double kGlyphWidth = 4;    // of the font's grid
constexpr double kGlyphHeight = 6;   // of the font's grid
constexpr double kGlyphAdvance = 6;  // from one glyph to the next
constexpr double kStroke = 0.9;      // stroke thickness, in grid steps

}  // namespace

template <class Distance>
void Canvas::paint(const Box& box, Colour colour, Distance distance) {
    const double pixels = scale();
    const double reach = 1 / pixels;
    const Box wide = {box.left - reach, box.top - reach, box.right + reach, box.bottom + reach};
    forPixels(wide, [&](uint8_t* pixel, double u, double v) {
        const double cover = std::clamp(0.5 - distance(u, v) * pixels, 0.0, 1.0);
        if (cover <= 0) return;
        const auto mix = [cover](uint8_t old, uint8_t now) {
            return static_cast<uint8_t>(old + (now - old) * cover + 0.5);
        };
        pixel[0] = mix(pixel[0], colour.r);
        pixel[1] = mix(pixel[1], colour.g);
        pixel[2] = mix(pixel[2], colour.b);
    });
}

void Canvas::fill(const Box& box, Colour colour) {
    shade(box, [colour](double, double) { return colour; });
}

void Canvas::disc(double u, double v, double radius, Colour colour) {
    paint({u - radius, v - radius, u + radius, v + radius}, colour,
          [=](double pu, double pv) { return std::hypot(pu - u, pv - v) - radius; });
}

void Canvas::ring(double u, double v, double radius, double thickness, Colour colour) {
    const double outer = radius + thickness / 2;
    paint({u - outer, v - outer, u + outer, v + outer}, colour, [=](double pu, double pv) {
        return std::abs(std::hypot(pu - u, pv - v) - radius) - thickness / 2;
    });
}

void Canvas::line(double u0, double v0, double u1, double v1, double thickness, Colour colour) {
    const double half = thickness / 2;
    paint({std::min(u0, u1) - half, std::min(v0, v1) - half, std::max(u0, u1) + half,
           std::max(v0, v1) + half},
          colour, [=](double u, double v) { return segmentDistance(u, v, u0, v0, u1, v1) - half; });
}

void Canvas::roundedBox(const Box& box, double radius, Colour colour) {
    const double cu = (box.left + box.right) / 2;
    const double cv = (box.top + box.bottom) / 2;
    paint(box, colour, [=](double u, double v) {
        const double du = std::abs(u - cu) - box.width() / 2 + radius;
        const double dv = std::abs(v - cv) - box.height() / 2 + radius;
        return std::hypot(std::max(du, 0.0), std::max(dv, 0.0)) + std::min(std::max(du, dv), 0.0) -
               radius;
    });
}

void Canvas::triangle(double u, double top, double bottom, double halfWidth, Colour colour) {
    const double height = bottom - top;
    const double slant = std::hypot(height, halfWidth);
    paint({u - halfWidth, top, u + halfWidth, bottom}, colour, [=](double pu, double pv) {
        const double side = (std::abs(pu - u) * height - (pv - top) * halfWidth) / slant;
        return std::max(side, pv - bottom);
    });
}

double Canvas::textWidth(double height, std::string_view words) {
    if (words.empty()) return 0;
    return height / kGlyphHeight * (kGlyphAdvance * (words.size() - 1) + kGlyphWidth);
}

void Canvas::text(double u, double v, double height, std::string_view words, Colour colour) {
    const double step = height / kGlyphHeight;
    for (const char letter : words) {
        for (const GlyphLine& stroke : glyphLines(letter)) {
            line(u + stroke.x0 * step, v + stroke.y0 * step, u + stroke.x1 * step,
                 v + stroke.y1 * step, kStroke * step, colour);
        }
        u += kGlyphAdvance * step;
    }
}

}  // namespace offlineframes

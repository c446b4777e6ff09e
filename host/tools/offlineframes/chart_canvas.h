// A small painter with smooth edges. Coordinates are chart units: the visible chart is 4000 x 3000
// whatever the size of the picture.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <string_view>
#include <utility>

#include "picture.h"

namespace offlineframes {

struct Colour {
    uint8_t r, g, b;
};

inline constexpr double kChartWidth = 4000;
inline constexpr double kChartHeight = 3000;

struct Box {
    double left, top, right, bottom;
    double width() const { return right - left; }
    double height() const { return bottom - top; }
};

class Canvas {
  public:
    // The chart's 4000 x 3000 units cover `visible` pixels from (left, top) of the picture.
    Canvas(uint32_t width, uint32_t height, uint32_t left, uint32_t top, uint32_t visibleWidth,
           uint32_t visibleHeight)
        : mPicture(width, height),
          mLeft(left),
          mTop(top),
          mScaleX(visibleWidth / kChartWidth),
          mScaleY(visibleHeight / kChartHeight) {}

    // Every pixel whose middle lies in `box` becomes colourAt(u, v), in chart units.
    template <class Shader>
    void shade(const Box& box, Shader colourAt) {
        forPixels(box, [&](uint8_t* pixel, double u, double v) {
            const Colour colour = colourAt(u, v);
            pixel[0] = colour.r;
            pixel[1] = colour.g;
            pixel[2] = colour.b;
        });
    }
    // The same, telling the shader whole pixels from the corner of the visible chart.
    template <class Shader>
    void shadePixels(const Box& box, Shader colourAt) {
        shade(box, [&](double u, double v) {
            return colourAt(static_cast<int>(std::floor(u * mScaleX)),
                            static_cast<int>(std::floor(v * mScaleY)));
        });
    }

    void fill(const Box& box, Colour colour);
    void disc(double u, double v, double radius, Colour colour);
    void ring(double u, double v, double radius, double thickness, Colour colour);
    void line(double u0, double v0, double u1, double v1, double thickness, Colour colour);
    void roundedBox(const Box& box, double radius, Colour colour);
    void triangle(double u, double top, double bottom, double halfWidth,
                  Colour colour);  // point up

    // Text whose capitals are `height` units high, its top left corner at (u, v). Capitals, digits,
    // blank and "-./". textWidth() is the space it takes.
    void text(double u, double v, double height, std::string_view words, Colour colour);
    static double textWidth(double height, std::string_view words);

    // Pixels per chart unit, the smaller of the two directions.
    double scale() const { return std::min(mScaleX, mScaleY); }
    Picture take() { return std::move(mPicture); }

  private:
    template <class Body>
    void forPixels(const Box& box, Body body);
    // Blends `colour` by the distance to a shape's edge, negative inside, in chart units.
    template <class Distance>
    void paint(const Box& box, Colour colour, Distance distance);

    Picture mPicture;
    double mLeft;
    double mTop;
    double mScaleX;
    double mScaleY;
};

template <class Body>
void Canvas::forPixels(const Box& box, Body body) {
    // Pixels are addressed by their middles.
    const auto first = [](double edge, uint32_t end) {
        return static_cast<uint32_t>(std::clamp(std::ceil(edge - 0.5), 0.0, double(end)));
    };
    const uint32_t x0 = first(mLeft + box.left * mScaleX, mPicture.width);
    const uint32_t x1 = first(mLeft + box.right * mScaleX, mPicture.width);
    const uint32_t y0 = first(mTop + box.top * mScaleY, mPicture.height);
    const uint32_t y1 = first(mTop + box.bottom * mScaleY, mPicture.height);
    for (uint32_t y = y0; y < y1; ++y) {
        const double v = (y + 0.5 - mTop) / mScaleY;
        for (uint32_t x = x0; x < x1; ++x) {
            body(mPicture.pixel(x, y), (x + 0.5 - mLeft) / mScaleX, v);
        }
    }
}

}  // namespace offlineframes

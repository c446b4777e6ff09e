// The reference camera once more, from the physics as stated in imaging/camera_physics.h and from
// the paper's drawings, in double precision and one pixel at a time. It shares no code with the
// library and has no thought of speed.
#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <functional>
#include <utility>

namespace imaging {

constexpr int kRed = 0;
constexpr int kGreen = 1;
constexpr int kBlue = 2;

inline int ColourAt(int64_t x, int64_t y) {
    constexpr int kRggb[2][2] = {{kRed, kGreen}, {kGreen, kBlue}};
    return kRggb[y & 1][x & 1];
}

using Kernel = std::array<std::array<double, 5>, 5>;

// The paper's filters, in sixteenths.
constexpr Kernel kSame = {{{0}, {0}, {0, 0, 16, 0, 0}, {0}, {0}}};
constexpr Kernel kGreenAtColour = {
        {{0, 0, -2}, {0, 0, 4}, {-2, 4, 8, 4, -2}, {0, 0, 4}, {0, 0, -2}}};
constexpr Kernel kBeside = {
        {{0, 0, 1}, {0, -2, 0, -2}, {-2, 8, 10, 8, -2}, {0, -2, 0, -2}, {0, 0, 1}}};
constexpr Kernel kAbove = {
        {{0, 0, -2}, {0, -2, 8, -2}, {1, 0, 10, 0, 1}, {0, -2, 8, -2}, {0, 0, -2}}};
constexpr Kernel kOpposite = {
        {{0, 0, -3}, {0, 4, 0, 4}, {-3, 0, 12, 0, -3}, {0, 4, 0, 4}, {0, 0, -3}}};

inline const Kernel& KernelFor(int wanted, int64_t x, int64_t y) {
    const int here = ColourAt(x, y);
    if (wanted == here) return kSame;
    if (wanted == kGreen) return kGreenAtColour;
    if (here != kGreen) return kOpposite;
    return ColourAt(x + 1, y) == wanted ? kBeside : kAbove;
}

inline int64_t Reflected(int64_t i, int64_t size) {
    while (i < 0 || i >= size) i = i < 0 ? -i : 2 * (size - 1) - i;
    return i;
}

inline double Srgb(double x) {
    return x <= 0.0031308 ? 12.92 * x : 1.055 * std::pow(x, 1 / 2.4) - 0.055;
}

inline double Round(double x) {
    return std::floor(x + 0.5);
}

inline int Sample(double x) {
    return static_cast<int>(std::clamp(Round(x), 0.0, 255.0));
}

class NaiveCamera {
  public:
    using Mosaic = std::function<int(uint32_t x, uint32_t y)>;  // raw codes 0..1023

    struct Frame {
        uint32_t width;
        uint32_t height;
        uint32_t outWidth;
        uint32_t outHeight;
    };

    NaiveCamera(const Frame& frame, Mosaic mosaic) : m_frame(frame), m_mosaic(std::move(mosaic)) {}

    // Samples of the picture; chroma is that of the 2 x 2 block of pixel x, y.
    int Y(uint32_t x, uint32_t y) const {
        const Rgb c = Toned(x, y);
        return Sample((4899 * c.red + 9617 * c.green + 1868 * c.blue) / 16384);
    }

    // "Ties down" in the physics: as seen from above, -Round(-x).
    int Cb(uint32_t x, uint32_t y) const {
        const Rgb c = BlockMean(x, y);
        return Sample(-Round(-128 - (-2765 * c.red - 5427 * c.green + 8192 * c.blue) / 16384));
    }

    int Cr(uint32_t x, uint32_t y) const {
        const Rgb c = BlockMean(x, y);
        return Sample(-Round(-128 - (8192 * c.red - 6860 * c.green - 1332 * c.blue) / 16384));
    }

  private:
    struct Rgb {
        double red, green, blue;
    };

    Rgb Toned(uint32_t x, uint32_t y) const {
        // The crop begins in the middle, at an even place.
        const int64_t left = (m_frame.width - m_frame.outWidth) / 4 * 2;
        const int64_t top = (m_frame.height - m_frame.outHeight) / 4 * 2;
        const auto tone = [&](int colour) {
            return Round(255 * Srgb(Interpolated(colour, left + x, top + y) / 959));
        };
        return {tone(kRed), tone(kGreen), tone(kBlue)};
    }

    Rgb BlockMean(uint32_t x, uint32_t y) const {
        Rgb mean = {0, 0, 0};
        for (uint32_t i = 0; i < 4; ++i) {
            const Rgb c = Toned(x / 2 * 2 + i % 2, y / 2 * 2 + i / 2);
            mean = {mean.red + c.red / 4, mean.green + c.green / 4, mean.blue + c.blue / 4};
        }
        return mean;
    }

    double Interpolated(int colour, int64_t x, int64_t y) const {
        const Kernel& kernel = KernelFor(colour, x, y);
        double sum = 0;
        for (int i = 0; i < 25; ++i) {
            const double weight = kernel[static_cast<size_t>(i / 5)][static_cast<size_t>(i % 5)];
            if (weight != 0) sum += weight / 16 * Linear(x + i % 5 - 2, y + i / 5 - 2);
        }
        return Round(8 * std::clamp(sum, 0.0, 959.0)) / 8;
    }

    double Linear(int64_t x, int64_t y) const {
        const int64_t column = Reflected(x, m_frame.width);
        const int64_t row = Reflected(y, m_frame.height);
        constexpr double kGain[3] = {2, 1, 1.5};
        const double signal =
                m_mosaic(static_cast<uint32_t>(column), static_cast<uint32_t>(row)) - 64.0;
        return std::clamp(Round(signal * kGain[ColourAt(column, row)]), 0.0, 959.0);
    }

    const Frame m_frame;
    const Mosaic m_mosaic;
};

}  // namespace imaging

// The reference camera once more, from the physics as stated in imaging/camera_physics.h and from
// the paper's drawings, in double precision and one pixel at a time. It shares no code with the
// library and has no thought of speed.
#pragma once

#include <cstdint>
#include <functional>

namespace imaging {

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
    int Y(uint32_t x, uint32_t y) const;
    int Cb(uint32_t x, uint32_t y) const;
    int Cr(uint32_t x, uint32_t y) const;

  private:
    struct Rgb {
        double red, green, blue;
    };

    Rgb Toned(uint32_t x, uint32_t y) const;
    Rgb BlockMean(uint32_t x, uint32_t y) const;
    double Interpolated(int colour, int64_t x, int64_t y) const;
    double Linear(int64_t x, int64_t y) const;

    const Frame m_frame;
    const Mosaic m_mosaic;
};

}  // namespace imaging

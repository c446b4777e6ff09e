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

    enum class Precision {
        kStated,  // rounds wherever the physics says so: must agree exactly
        kReal,    // rounds the white-balanced codes and the final samples only
    };

    struct Frame {
        uint32_t width;
        uint32_t height;
        uint32_t outWidth;
        uint32_t outHeight;
    };

    NaiveCamera(const Frame& frame, Mosaic mosaic, Precision precision)
        : mFrame(frame), mMosaic(std::move(mosaic)), mPrecision(precision) {}

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

    const Frame mFrame;
    const Mosaic mMosaic;
    const Precision mPrecision;
};

}  // namespace imaging

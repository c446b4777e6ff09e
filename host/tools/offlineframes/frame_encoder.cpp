// Mosaic and NV12 frames from pictures.

#include "frame_encoder.h"

#include <imaging/camera_physics.h>
#include <imaging/raw10.h>
#include <imaging/rgb.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>

#include "picture_file.h"

namespace offlineframes {
namespace {

using imaging::Channel;

class NoiseSource {
  public:
    explicit NoiseSource(const Noise& noise) : m_sigma(noise.sigma), m_random(noise.seed) {}

    template <class Sample>
    void Add(Sample* samples, size_t count, int maximum) {
        if (m_sigma == 0) return;
        for (size_t i = 0; i < count; ++i) {
            const double noisy = std::round(samples[i] + m_sigma * m_gauss(m_random));
            samples[i] = static_cast<Sample>(std::clamp(noisy, 0.0, double(maximum)));
        }
    }

  private:
    const double m_sigma;
    std::mt19937_64 m_random;
    std::normal_distribution<double> m_gauss;
};

// The level between two raw codes that develops to `linear` on average.
double RawLevel(double linear, Channel channel) {
    int code = imaging::kBlackLevel;
    while (imaging::LinearFromRaw(code, channel) < linear) ++code;
    const int above = imaging::LinearFromRaw(code, channel);
    const int below = imaging::LinearFromRaw(code - 1, channel);
    return above == linear ? code : code - (above - linear) / (above - below);
}

// The raw levels of display values, for each channel. Those of the chart are whole codes.
using RawTable = std::array<std::array<double, 256>, 3>;

RawTable MakeRawTable(bool chart) {
    RawTable table = {};
    for (size_t tone = 0; tone < 256; ++tone) {
        const double linear = imaging::LinearFromTone(static_cast<uint8_t>(tone));
        for (const Channel channel : {Channel::kRed, Channel::kGreen, Channel::kBlue}) {
            table[static_cast<size_t>(channel)][tone] =
                    chart ? imaging::RawFromLinear(static_cast<int>(std::lround(linear)), channel)
                          : RawLevel(linear, channel);
        }
    }
    return table;
}

uint16_t RampCode(uint16_t level, Channel channel) {
    if (channel == Channel::kGreen) return level;
    return static_cast<uint16_t>(
            imaging::RawFromLinear(imaging::LinearFromRaw(level, Channel::kGreen), channel));
}

}  // namespace

Bytes EncodeRaw10(const Picture& picture, const FrameGeometry& geometry, const Noise& noise,
                  bool chart) {
    const RawTable table = MakeRawTable(chart);
    const RampRows ramp = chart ? RampOf(picture) : RampRows{};
    NoiseSource source(noise);
    // Up to half a code either way before rounding: dark tones are closer together than codes, and
    // rounding alone tints them.
    std::mt19937 dither(static_cast<uint32_t>(noise.seed));
    constexpr double kCode = 1.0 / (1ull << 32);
    Bytes bytes(size_t{geometry.stride} * geometry.scanlines);
    std::vector<uint16_t> row(picture.width);
    for (uint32_t y = 0; y < picture.height; ++y) {
        const bool inRamp = y >= ramp.first && y < ramp.end;
        for (uint32_t x = 0; x < picture.width; ++x) {
            const Channel channel = imaging::MosaicChannel(x, y);
            const auto index = static_cast<size_t>(channel);
            row[x] = inRamp ? RampCode(RampLevel(x, picture.width), channel)
                            : static_cast<uint16_t>(table[index][picture.Pixel(x, y)[index]] +
                                                    dither() * kCode);
        }
        source.Add(row.data(), row.size(), imaging::kWhiteLevel);
        imaging::PackRaw10Row(row.data(), picture.width, &bytes[size_t{y} * geometry.stride]);
    }
    return bytes;
}

Bytes EncodeNv12(const Picture& picture, const FrameGeometry& geometry, const Noise& noise) {
    const size_t stride = geometry.stride;
    const size_t lumaBytes = stride * geometry.scanlines;
    Bytes bytes(lumaBytes);
    bytes.resize(lumaBytes + lumaBytes / 2, 128);
    uint8_t* const chroma = &bytes[lumaBytes];
    imaging::Nv12FromRgb(picture.rgb.data(),
                         {bytes.data(), chroma, picture.width, picture.height, stride});
    NoiseSource source(noise);
    for (uint32_t y = 0; y < picture.height; ++y)
        source.Add(&bytes[y * stride], picture.width, 255);
    for (uint32_t y = 0; y < picture.height / 2; ++y) {
        source.Add(&chroma[y * stride], picture.width, 255);
    }
    return bytes;
}

Bytes MakeFrame(const Picture* photo, const FrameGeometry& geometry, const Noise& noise) {
    const bool raw = geometry.format == FrameFormat::kRaw10;
    const Picture picture = photo ? FitPicture(*photo, geometry.size)
                            : raw ? DrawSensorChart(geometry.size)
                                  : DrawVisibleChart(geometry.size);
    return raw ? EncodeRaw10(picture, geometry, noise, !photo)
               : EncodeNv12(picture, geometry, noise);
}

}  // namespace offlineframes

// Mosaic and NV12 frames from pictures.

#include "frame_encoder.h"

#include <imaging/camera_physics.h>
#include <imaging/raw10.h>

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

uint16_t RawCode(int linear, Channel channel) {
    return static_cast<uint16_t>(imaging::RawFromLinear(linear, channel));
}

// Raw codes of display values, for each channel.
using RawTable = std::array<std::array<uint16_t, 256>, 3>;

RawTable MakeRawTable() {
    RawTable table = {};
    for (size_t tone = 0; tone < 256; ++tone) {
        const int linear = imaging::LinearFromTone(static_cast<uint8_t>(tone));
        for (const Channel channel : {Channel::kRed, Channel::kGreen, Channel::kBlue}) {
            table[static_cast<size_t>(channel)][tone] = RawCode(linear, channel);
        }
    }
    return table;
}

uint16_t RampCode(uint16_t level, Channel channel) {
    if (channel == Channel::kGreen) return level;
    return RawCode(imaging::LinearFromRaw(level, Channel::kGreen), channel);
}

}  // namespace

Bytes EncodeRaw10(const Picture& picture, const FrameGeometry& geometry, const Noise& noise,
                  bool chart) {
    const RawTable table = MakeRawTable();
    const RampRows ramp = chart ? RampOf(picture) : RampRows{};
    NoiseSource source(noise);
    Bytes bytes(size_t{geometry.stride} * geometry.scanlines);
    std::vector<uint16_t> row(picture.width);
    for (uint32_t y = 0; y < picture.height; ++y) {
        const bool inRamp = y >= ramp.first && y < ramp.end;
        for (uint32_t x = 0; x < picture.width; ++x) {
            const Channel channel = imaging::MosaicChannel(x, y);
            const auto index = static_cast<size_t>(channel);
            row[x] = inRamp ? RampCode(RampLevel(x, picture.width), channel)
                            : table[index][picture.Pixel(x, y)[index]];
        }
        source.Add(row.data(), row.size(), imaging::kWhiteLevel);
        imaging::PackRaw10Row(row.data(), picture.width, &bytes[size_t{y} * geometry.stride]);
    }
    return bytes;
}

Bytes EncodeNv12(const Picture& picture, const FrameGeometry& geometry, const Noise& noise) {
    const size_t lumaBytes = size_t{geometry.stride} * geometry.scanlines;
    NoiseSource source(noise);
    Bytes bytes(lumaBytes);
    bytes.resize(lumaBytes + lumaBytes / 2, 128);
    for (uint32_t y = 0; y < picture.height; ++y) {
        uint8_t* const luma = &bytes[size_t{y} * geometry.stride];
        for (uint32_t x = 0; x < picture.width; ++x) {
            const uint8_t* const rgb = picture.Pixel(x, y);
            luma[x] = imaging::Luma(rgb[0], rgb[1], rgb[2]);
        }
        source.Add(luma, picture.width, 255);
    }
    for (uint32_t y = 0; y < picture.height; y += 2) {
        uint8_t* const chroma = &bytes[lumaBytes + size_t{y / 2} * geometry.stride];
        for (uint32_t x = 0; x < picture.width; x += 2) {
            const uint8_t* const top = picture.Pixel(x, y);
            const uint8_t* const low = picture.Pixel(x, y + 1);
            const auto sum = [&](int c) { return top[c] + top[c + 3] + low[c] + low[c + 3]; };
            chroma[x] = imaging::ChromaBlue(sum(0), sum(1), sum(2));
            chroma[x + 1] = imaging::ChromaRed(sum(0), sum(1), sum(2));
        }
        source.Add(chroma, picture.width, 255);
    }
    return bytes;
}

Bytes MakeFrame(const std::optional<Picture>& photo, const FrameGeometry& geometry,
                const Noise& noise) {
    const bool raw = geometry.format == FrameFormat::kRaw10;
    const Picture picture = photo ? FitPicture(*photo, geometry.size)
                            : raw ? DrawSensorChart(geometry.size)
                                  : DrawVisibleChart(geometry.size);
    return raw ? EncodeRaw10(picture, geometry, noise, !photo)
               : EncodeNv12(picture, geometry, noise);
}

}  // namespace offlineframes

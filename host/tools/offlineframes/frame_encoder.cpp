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
    explicit NoiseSource(const Noise& noise)
        : m_active(noise.sigma > 0),
          m_random(noise.seed),
          m_gauss(0.0, m_active ? noise.sigma : 1.0) {}

    template <class Sample>
    void Add(Sample* samples, size_t count, int maximum) {
        if (!m_active) return;
        for (size_t i = 0; i < count; ++i) {
            const double noisy = std::round(samples[i] + m_gauss(m_random));
            samples[i] = static_cast<Sample>(std::clamp(noisy, 0.0, double(maximum)));
        }
    }

  private:
    bool m_active;
    std::mt19937_64 m_random;
    std::normal_distribution<double> m_gauss;
};

// Raw codes of display values, for each channel.
using RawTable = std::array<std::array<uint16_t, 256>, 3>;

RawTable MakeRawTable() {
    RawTable table = {};
    for (int channel = 0; channel < 3; ++channel) {
        for (int tone = 0; tone < 256; ++tone) {
            const int linear = imaging::LinearFromTone(static_cast<uint8_t>(tone));
            table[static_cast<size_t>(channel)][static_cast<size_t>(tone)] = static_cast<uint16_t>(
                    imaging::RawFromLinear(linear, static_cast<Channel>(channel)));
        }
    }
    return table;
}

uint16_t RampCode(uint16_t level, Channel channel) {
    if (channel == Channel::kGreen) return level;
    const int linear = imaging::LinearFromRaw(level, Channel::kGreen);
    return static_cast<uint16_t>(imaging::RawFromLinear(linear, channel));
}

}  // namespace

Bytes EncodeRaw10(const Picture& picture, const FrameGeometry& geometry, const Noise& noise,
                  const std::optional<ChartFrame>& chart) {
    const RawTable table = MakeRawTable();
    const ChartRamp ramp = chart ? RampOf(*chart) : ChartRamp{};
    NoiseSource source(noise);
    Bytes bytes(size_t{geometry.stride} * geometry.scanlines);
    std::vector<uint16_t> row(picture.width);
    for (uint32_t y = 0; y < picture.height; ++y) {
        const bool inRamp = y >= ramp.firstRow && y < ramp.endRow;
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
    Bytes bytes(lumaBytes + lumaBytes / 2, 128);
    std::fill(bytes.begin(), bytes.begin() + static_cast<ptrdiff_t>(lumaBytes), 0);
    for (uint32_t y = 0; y < picture.height; ++y) {
        uint8_t* const luma = &bytes[size_t{y} * geometry.stride];
        const uint8_t* rgb = picture.Pixel(0, y);
        for (uint32_t x = 0; x < picture.width; ++x, rgb += 3) {
            luma[x] = imaging::Luma(rgb[0], rgb[1], rgb[2]);
        }
        source.Add(luma, picture.width, 255);
    }
    for (uint32_t y = 0; y < picture.height; y += 2) {
        uint8_t* const chroma = &bytes[lumaBytes + size_t{y / 2} * geometry.stride];
        for (uint32_t x = 0; x < picture.width; x += 2) {
            const uint8_t* top = picture.Pixel(x, y);
            const uint8_t* low = picture.Pixel(x, y + 1);
            const int r = top[0] + top[3] + low[0] + low[3];
            const int g = top[1] + top[4] + low[1] + low[4];
            const int b = top[2] + top[5] + low[2] + low[5];
            chroma[x] = imaging::ChromaBlue(r, g, b);
            chroma[x + 1] = imaging::ChromaRed(r, g, b);
        }
        source.Add(chroma, picture.width, 255);
    }
    return bytes;
}

Bytes MakeFrame(const std::optional<Picture>& photo, const FrameGeometry& geometry,
                const Noise& noise) {
    if (geometry.format == FrameFormat::kNv12) {
        return EncodeNv12(photo ? FitPicture(*photo, geometry.size)
                                : DrawVisibleChart(ChartOfVisible(geometry.size)),
                          geometry, noise);
    }
    if (photo) return EncodeRaw10(FitPicture(*photo, geometry.size), geometry, noise, std::nullopt);
    const ChartFrame chart = ChartOnSensor(geometry.size);
    return EncodeRaw10(DrawSensorChart(chart), geometry, noise, chart);
}

}  // namespace offlineframes

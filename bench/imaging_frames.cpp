// A scene with soft gradients, edges and the noise of a sensor.
#include "imaging_frames.h"

#include <imaging/raw10.h>

#include <algorithm>
#include <cmath>
#include <vector>

namespace bench {

namespace {

constexpr uint32_t kWidth = 2048, kHeight = 1536;  // of a quarter frame
constexpr uint32_t kOutWidth = 2000, kOutHeight = 1500;

uint32_t Factor(uint32_t quarters) {
    return quarters >= 16 ? 4 : quarters >= 4 ? 2 : 1;
}

}  // namespace

Frame::Frame(uint32_t quarters, uint32_t seed)
    : width(kWidth * Factor(quarters)),
      height(kHeight * Factor(quarters)),
      mOutWidth(kOutWidth * Factor(quarters)),
      mOutHeight(kOutHeight * Factor(quarters)),
      raw(Raw10Buffer(width, height)),
      picture(Nv12Buffer(mOutWidth, mOutHeight)) {
    std::vector<double> wave(width);
    for (uint32_t x = 0; x < width; ++x) wave[x] = 120 * std::sin(x * 0.011);
    std::vector<uint16_t> row(width);
    uint32_t random = seed;
    for (uint32_t y = 0; y < height; ++y) {
        const double rowWave = 100 * std::cos(y * 0.017);
        for (uint32_t x = 0; x < width; ++x) {
            random = random * 1664525 + 1013904223;
            const double noise = (random >> 24) / 16.0 - 8;
            const double edge = (x / 200 + y / 150) % 2 == 0 ? 90 : -90;
            const double code = 330 + wave[x] + rowWave + edge + noise;
            row[x] = static_cast<uint16_t>(std::clamp(code, 0.0, 1023.0));
        }
        imaging::PackRaw10Row(row.data(), width, raw.Data() + size_t{y} * raw.Layout().stride);
    }
}

imaging::MutableRawView Frame::Raw() {
    return {raw.Data(), width, height, raw.Layout().stride};
}

imaging::MutableNv12View Frame::Picture() {
    const graphics::BufferLayout& layout = picture.Layout();
    return {picture.Data(), picture.Data() + layout.planes[1].offset, mOutWidth, mOutHeight,
            layout.stride};
}

}  // namespace bench

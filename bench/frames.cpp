// Makes and maps buffers as the allocator and the mapper do, and fills frames with a scene.
#include "frames.h"

#include <imaging/raw10.h>

#include <algorithm>
#include <cmath>

#include "bench.h"

namespace bench {
namespace {

constexpr uint64_t kReadAndWriteOften = 0x33;
constexpr uint32_t kWidth = 4096, kHeight = 3072, kOutWidth = 4000, kOutHeight = 3000;

template <class T>
T Taken(base::Result<T> result, const char* what) {
    Require(result.Ok(), std::string(what) + " a buffer: " + (result.Ok() ? "" : result.Error()));
    return std::move(result).Value();
}

}  // namespace

Buffer::Buffer(const graphics::BufferDescription& description)
    : m_description(description), m_layout(Taken(graphics::LayOut(m_description), "lay out")) {
    MakeFresh();
}

void Buffer::MakeFresh() {
    m_mapping = {};
    m_handle.reset();
    m_handle = Taken(graphics::CreateBuffer(m_description), "create");
    MapAnew();
}

void Buffer::MapAnew() {
    Taken(m_mapping.Map(m_handle->data[0], m_layout.size), "map");
}

graphics::BufferDescription Describe(int32_t format, uint32_t width, uint32_t height) {
    return {"bench", width, height, 1, format, kReadAndWriteOften, 0};
}

Frame::Frame(uint32_t seed)
    : raw(Describe(graphics::kFormatRaw10, kWidth, kHeight)),
      picture(Describe(graphics::kFormatYcbcr420, kOutWidth, kOutHeight)) {
    std::vector<double> wave(kWidth);
    for (uint32_t x = 0; x < kWidth; ++x) wave[x] = 120 * std::sin(x * 0.011);
    std::vector<uint16_t> row(kWidth);
    uint32_t random = seed;
    for (uint32_t y = 0; y < kHeight; ++y) {
        const double rowWave = 100 * std::cos(y * 0.017);
        for (uint32_t x = 0; x < kWidth; ++x) {
            random = random * 1664525 + 1013904223;
            const double noise = (random >> 24) / 16.0 - 8;
            const double edge = (x / 200 + y / 150) % 2 == 0 ? 90 : -90;
            const double code = 330 + wave[x] + rowWave + edge + noise;
            row[x] = static_cast<uint16_t>(std::clamp(code, 0.0, 1023.0));
        }
        imaging::PackRaw10Row(row.data(), kWidth, raw.Data() + size_t{y} * raw.Layout().stride);
    }
}

imaging::MutableRawView Frame::Raw() {
    return {raw.Data(), kWidth, kHeight, raw.Layout().stride};
}

imaging::MutableNv12View Frame::Picture() {
    const graphics::BufferLayout& layout = picture.Layout();
    return {picture.Data(), picture.Data() + layout.planes[1].offset, kOutWidth, kOutHeight,
            layout.stride};
}

}  // namespace bench

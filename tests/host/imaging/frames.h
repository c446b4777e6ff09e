// Frames in memory for tests: a mosaic by pixel and a picture with its own padding.
#pragma once

#include <imaging/planes.h>
#include <imaging/raw10.h>

#include <cstdint>
#include <functional>
#include <vector>

namespace imaging {

// A RAW10 frame whose rows are 7 bytes longer than they need be, filled by a function of x, y.
class RawFrame {
  public:
    using Pixels = std::function<uint16_t(uint32_t x, uint32_t y)>;

    RawFrame(
            uint32_t width, uint32_t height,
            const Pixels& pixels = [](uint32_t, uint32_t) { return uint16_t{500}; })
        : bytes(height * (Raw10RowBytes(width) + 7)), m_width(width), m_height(height) {
        std::vector<uint16_t> row(width);
        for (uint32_t y = 0; y < height; ++y) {
            for (uint32_t x = 0; x < width; ++x) row[x] = pixels(x, y);
            PackRaw10Row(row.data(), width, &bytes[y * Stride()]);
        }
    }

    size_t Stride() const { return Raw10RowBytes(m_width) + 7; }
    MutableRawView View() { return {bytes.data(), m_width, m_height, Stride()}; }

    std::vector<uint8_t> bytes;

  private:
    const uint32_t m_width;
    const uint32_t m_height;
};

// An NV12 picture whose rows are 6 bytes longer than they need be; everything begins as
// kUntouched.
class Nv12Picture {
  public:
    static constexpr uint8_t kUntouched = 0xa5;

    Nv12Picture(uint32_t width, uint32_t height)
        : width(width), height(height), bytes(height * 3 / 2 * Stride(), kUntouched) {}

    size_t Stride() const { return width + 6; }
    MutableNv12View View() {
        return {bytes.data(), bytes.data() + height * Stride(), width, height, Stride()};
    }
    uint8_t Y(uint32_t x, uint32_t y) const { return bytes[y * Stride() + x]; }
    uint8_t Cb(uint32_t x, uint32_t y) const { return Chroma(x, y, 0); }
    uint8_t Cr(uint32_t x, uint32_t y) const { return Chroma(x, y, 1); }

    const uint32_t width;
    const uint32_t height;
    std::vector<uint8_t> bytes;

  private:
    uint8_t Chroma(uint32_t x, uint32_t y, uint32_t which) const {
        return bytes[(height + y / 2) * Stride() + x / 2 * 2 + which];
    }
};

}  // namespace imaging

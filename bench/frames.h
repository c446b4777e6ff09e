// Buffers of the stand-in device, and frames in them to measure with.
#pragma once

#include <graphics/buffer_handle.h>
#include <graphics/buffer_mapping.h>
#include <imaging/planes.h>

#include <cstdint>

namespace bench {

// A sealed memfd, mapped, as allocator and mapper make it.
class Buffer {
  public:
    explicit Buffer(const graphics::BufferDescription& description);

    uint8_t* Data() { return static_cast<uint8_t*>(m_mapping.Data()); }
    const graphics::BufferLayout& Layout() const { return m_layout; }

    // As a buffer that was just allocated and mapped: it has no page yet.
    void MakeFresh();

    // As the buffer in a process that just imported it: filled, but mapped anew.
    void MapAnew();

  private:
    const graphics::BufferDescription m_description;
    const graphics::BufferLayout m_layout;
    graphics::UniqueHandle m_handle;
    graphics::BufferMapping m_mapping;
};

// As the test modes' streams have it; sides in pixels, a blob's in bytes and 1.
graphics::BufferDescription Describe(int32_t format, uint32_t width, uint32_t height);

// A RAW10 frame of the test modes, filled with soft gradients, edges and a sensor's noise, and the
// picture that it is developed into.
struct Frame {
    explicit Frame(uint32_t seed);

    imaging::MutableRawView Raw();
    imaging::MutableNv12View Picture();

    Buffer raw;
    Buffer picture;
};

}  // namespace bench

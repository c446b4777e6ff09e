// A buffer of the stand-in device: a sealed memory file, mapped.
#pragma once

#include <graphics/buffer_handle.h>
#include <graphics/buffer_mapping.h>

#include <cstdint>

namespace bench {

class Buffer {
  public:
    explicit Buffer(const graphics::BufferDescription& description);

    uint8_t* Data() { return static_cast<uint8_t*>(mMapping.Data()); }
    const graphics::BufferLayout& Layout() const { return mLayout; }

    /** As a buffer that was just allocated and mapped: no page is there yet. */
    void MakeFresh();

    /** As the buffer in a process that just imported it: filled, but mapped anew. */
    void MapAnew();

  private:
    const graphics::BufferDescription mDescription;
    graphics::BufferLayout mLayout;
    graphics::UniqueHandle mHandle;
    graphics::BufferMapping mMapping;
};

/** Descriptions as the test's streams have them. */
graphics::BufferDescription Raw10Buffer(uint32_t width, uint32_t height);
graphics::BufferDescription Nv12Buffer(uint32_t width, uint32_t height);
graphics::BufferDescription BlobBuffer(uint32_t bytes);

}  // namespace bench

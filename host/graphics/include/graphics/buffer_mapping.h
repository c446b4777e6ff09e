// A buffer's memory in this process.
#pragma once

#include <graphics/buffer_error.h>

#include <cstddef>
#include <cstdint>

namespace graphics {

// The buffer's pages for reading and writing, and after them at least as many bytes of read-only
// zeroes: an offline camera client writes a JPEG whose size it does not find to its file as
// width x height x 4 bytes, twice what the buffer has. A write to the tail raises SIGSEGV. Bytes
// between the end of the buffer and the end of its last page can be written, but have no meaning.
class BufferMapping {
  public:
    BufferMapping() = default;
    ~BufferMapping();
    BufferMapping(BufferMapping&& other) noexcept;
    BufferMapping& operator=(BufferMapping&& other) noexcept;

    // Maps `size` bytes (1 to kMaxBufferBytes) of the memfd `fd`, which is borrowed for the call.
    // kNoResources when the system refuses. Replaces an earlier mapping.
    base::Result<base::Done> Map(int fd, uint64_t size);

    // Makes the kernel provide the buffer's pages now, which costs half of what faults at each page
    // cost. The content stays. The tail is left out.
    void Populate() const;

    // The first byte, or null when not mapped.
    void* Data() const { return m_base; }

  private:
    char* m_base = nullptr;
    size_t m_length = 0;  // bytes, the tail included: twice the buffer's pages
};

}  // namespace graphics

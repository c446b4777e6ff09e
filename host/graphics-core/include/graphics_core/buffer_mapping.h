// A buffer's memory in this process.
#pragma once

#include <graphics_core/outcome.h>

#include <cstddef>
#include <cstdint>

namespace graphics {

// The buffer's pages for reading and writing, and after them at least as many bytes of read-only
// zeroes: an offline camera client writes a JPEG whose size it does not find to its file as
// width x height x 4 bytes, twice what the buffer has. Writing there ends the process. What lies
// between the end of the buffer and the end of its last page can be written, but is nobody's.
class BufferMapping {
  public:
    BufferMapping() = default;
    ~BufferMapping();
    BufferMapping(BufferMapping&& other) noexcept;
    BufferMapping& operator=(BufferMapping&& other) noexcept;

    // Maps `size` bytes (1 to kMaxBufferBytes) of the memory file `fd`, which is borrowed for the
    // call. kNoResources without address space. Replaces an earlier mapping.
    Outcome map(int fd, uint64_t size);

    // The first byte, or null when not mapped.
    void* data() const { return mBase; }

  private:
    void* mBase = nullptr;
    size_t mLength = 0;  // bytes, the tail included
};

}  // namespace graphics

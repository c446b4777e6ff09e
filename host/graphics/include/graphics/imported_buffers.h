// The buffers that this process has imported. A pointer is looked up here before anything is read
// through it.
#pragma once

#include <graphics/buffer_handle.h>
#include <graphics/buffer_mapping.h>

#include <cstdint>
#include <mutex>
#include <unordered_map>

namespace graphics {

// In pixels. All zero: the whole buffer.
struct Region {
    int32_t left = 0;
    int32_t top = 0;
    int32_t width = 0;
    int32_t height = 0;
};

// Every operation may be called from any thread. A pointer that is not an imported buffer gives
// kBadBuffer.
class ImportedBuffers {
  public:
    // The table of the library or program that links this code. Never destroyed: threads may still
    // use it while the process exits.
    static ImportedBuffers& Instance();

    // Checks `raw` (which stays the caller's) and gives an independent handle, to be released with
    // Release(). The same `raw` may be imported any number of times.
    base::Result<native_handle_t*> Import(const native_handle_t* raw);

    // Unmaps the buffer, closes and deletes the handle. The memory must not be in use any more.
    base::Result<base::Done> Release(const void* buffer);

    // Gives the address of the buffer's first byte, which stays the same until Release(), after
    // waiting for `fence` (borrowed; -1: none). The region must be inside the buffer. Locks nest.
    // `cpuUsage` takes bits of kCpuUsageMask, at least one; the memory can be written whatever they
    // are, as clients fill buffers that they ask to read.
    base::Result<void*> Lock(const void* buffer, uint64_t cpuUsage, const Region& region,
                             int fence);

    // Both give kBadBuffer too when the buffer is not locked.
    base::Result<base::Done> Unlock(const void* buffer);
    base::Result<base::Done> RequireLocked(const void* buffer);

    base::Result<BufferInfo> Describe(const void* buffer);

  private:
    struct Imported {
        CheckedBuffer buffer;
        BufferMapping mapping;  // made by the first lock
        uint32_t locks = 0;
    };

    // Null when unknown. With m_mutex held.
    Imported* Find(const void* buffer);
    base::Result<Imported*> FindLocked(const void* buffer);

    std::mutex m_mutex;
    std::unordered_map<const void*, Imported> m_buffers;
};

}  // namespace graphics

// The buffers that this process has imported. A pointer is looked up here before anything is read
// through it.
#pragma once

#include <graphics_core/buffer_handle.h>
#include <graphics_core/buffer_mapping.h>

#include <cstdint>
#include <mutex>
#include <unordered_map>
#include <vector>

namespace graphics {

// In pixels, right and bottom not included; wide enough for every sum of two 32-bit numbers.
struct Region {
    int64_t left = 0;
    int64_t top = 0;
    int64_t right = 0;
    int64_t bottom = 0;
};

// Every operation may be called from any thread. A pointer that is not an imported buffer gives
// kBadBuffer.
class ImportedBuffers {
  public:
    // The ones of this library's user: each mapper library knows only what it has imported itself.
    static ImportedBuffers& instance();

    // Checks `raw` (which stays the caller's) and gives an independent handle, to be released with
    // release(). The same `raw` may be imported any number of times.
    Outcome import(const native_handle_t* raw, const native_handle_t** out);

    // Unmaps the buffer, closes and deletes the handle. The caller makes sure that nobody still
    // uses the memory.
    Outcome release(const void* buffer);

    // Gives the address of the buffer's first byte, which stays the same until release(), after
    // waiting for `fence` (borrowed; -1: none). A region of zeroes is the whole buffer, another one
    // must lie inside. Locks nest. `cpuUsage` takes bits of kCpuUsageMask, at least one; the memory
    // can be written whatever they are, as clients fill buffers that they ask to read.
    Outcome lock(const void* buffer, uint64_t cpuUsage, const Region& region, int fence,
                 void** outData);

    // Both give kBadBuffer too when the buffer is not locked.
    Outcome unlock(const void* buffer);
    Outcome requireLocked(const void* buffer);

    Outcome describe(const void* buffer, BufferInfo* out);
    std::vector<BufferInfo> all();

  private:
    struct Imported {
        UniqueHandle handle;
        BufferInfo info;
        BufferMapping mapping;  // made by the first lock
        uint32_t locks = 0;
    };

    // Null when unknown. With mMutex held.
    Imported* find(const void* buffer);

    std::mutex mMutex;
    std::unordered_map<const void*, Imported> mBuffers;
};

}  // namespace graphics

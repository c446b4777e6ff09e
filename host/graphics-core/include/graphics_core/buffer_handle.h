// The native handle of a buffer: one descriptor, and integers that say what it holds.
#pragma once

#include <cutils/native_handle.h>
#include <graphics_core/buffer_layout.h>

#include <cstdint>
#include <memory>

namespace graphics {

// The integers of a handle, in this order. Whoever gets a handle checks every one of them with
// checkBuffer() before using any.
struct HandleIntegers {
    uint32_t magic;  // kHandleMagic
    uint32_t width;
    uint32_t height;
    uint32_t layerCount;
    int32_t format;
    uint32_t stride;  // bytes per row of the first plane
    uint64_t usage;
    uint64_t size;                 // bytes
    uint64_t id;                   // the memory file's inode: unique among the buffers that exist
    char name[kMaxNameBytes + 1];  // filled up with zeroes
};
inline constexpr uint32_t kHandleMagic = 0x01424745;  // "EGB", version 1
inline constexpr int kHandleFds = 1;
inline constexpr int kHandleInts = sizeof(HandleIntegers) / sizeof(int);

// Copies the integers of a handle out and in. False if its shape is not that of a buffer: null, or
// another version or number of descriptors or integers.
bool readIntegers(const native_handle_t* handle, HandleIntegers* out);
bool writeIntegers(const HandleIntegers& integers, native_handle_t* handle);

// Owns a handle with its descriptors.
struct HandleCloser {
    void operator()(native_handle_t* handle) const;
};
using UniqueHandle = std::unique_ptr<native_handle_t, HandleCloser>;

// What a checked handle stands for.
struct BufferInfo {
    BufferDescription description;
    BufferLayout layout;
    uint64_t id = 0;
};

// Makes a buffer of zeroes: a close-on-exec memory file of exactly the layout's size, sealed so
// that nobody can resize it. Errors of layOut(); kNoResources when the system refuses.
Outcome createBuffer(const BufferDescription& description, UniqueHandle* out);

// Compares integers with each other and with the memory file `fd` (borrowed): they must describe a
// layout of exactly the file's size, and the file must be sealed against shrinking, or a mapping
// of it could lose its memory, and not against writing. kBadBuffer otherwise, *out unchanged. Any
// thread.
Outcome checkBuffer(const HandleIntegers& integers, int fd, BufferInfo* out);

// Checks a handle as above and gives a new one with a descriptor of its own (close-on-exec).
// `raw` stays the caller's. kBadBuffer, or kNoResources without descriptors left.
Outcome duplicateBuffer(const native_handle_t* raw, UniqueHandle* outHandle, BufferInfo* outInfo);

// Whether a buffer can be used as one that was allocated with `description` and got `stride`:
// kBadValue when it has another shape or lacks a usage.
Outcome checkFits(const BufferInfo& info, const BufferDescription& description, uint32_t stride);

}  // namespace graphics

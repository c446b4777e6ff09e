// The native handle of a buffer: one descriptor, and integers that say what it holds.
#pragma once

#include <cutils/native_handle.h>
#include <graphics/buffer_layout.h>

#include <cstdint>
#include <memory>

namespace graphics {

// The integers of a handle, in this order.
struct HandleIntegers {
    uint32_t magic;  // kHandleMagic
    uint32_t width;
    uint32_t height;
    uint32_t layerCount;
    int32_t format;
    uint32_t stride;  // bytes per row of the first plane
    uint64_t usage;
    uint64_t size;                 // bytes
    uint64_t id;                   // the memfd's inode: unique among the buffers that exist
    char name[kMaxNameBytes + 1];  // filled up with zeroes
};
inline constexpr uint32_t kHandleMagic = 0x01424745;  // "EGB", version 1
inline constexpr int kHandleFds = 1;
inline constexpr int kHandleInts = sizeof(HandleIntegers) / sizeof(int);

// Copies the integers of a handle out and in. False if its shape is not that of a buffer: null, or
// another version or number of descriptors or integers.
bool ReadIntegers(const native_handle_t* handle, HandleIntegers* out);
bool WriteIntegers(const HandleIntegers& integers, native_handle_t* handle);

// Owns a handle with its descriptors.
struct HandleCloser {
    void operator()(native_handle_t* handle) const;
};
using UniqueHandle = std::unique_ptr<native_handle_t, HandleCloser>;

// What a checked handle describes.
struct BufferInfo {
    BufferDescription description;
    BufferLayout layout;
};

struct CheckedBuffer {
    UniqueHandle handle;
    BufferInfo info;
};

// Makes a buffer of zeroes: a close-on-exec memfd of exactly the layout's size, sealed against any
// other size. Errors of LayOut(); kNoResources when the system refuses.
base::Result<UniqueHandle> CreateBuffer(const BufferDescription& description);

// Compares the integers of `raw` (borrowed) with each other and with its memfd, and gives a new
// handle with a descriptor of its own (close-on-exec). kBadBuffer when they do not fit or the memfd
// is not sealed against shrinking; kNoResources without descriptors left.
base::Result<CheckedBuffer> DuplicateBuffer(const native_handle_t* raw);

}  // namespace graphics

// What a buffer is asked to be, and its layout in memory.
#pragma once

#include <graphics/buffer_error.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace graphics {

// Pixel formats that can be allocated, as the platform numbers them.
inline constexpr int32_t kFormatBlob = 0x21;
inline constexpr int32_t kFormatYcbcr420 = 0x23;  // as NV12
inline constexpr int32_t kFormatRaw10 = 0x25;

// Bits of component types, as the platform numbers them.
inline constexpr uint32_t kComponentY = 1u << 0;
inline constexpr uint32_t kComponentCb = 1u << 1;
inline constexpr uint32_t kComponentCr = 1u << 2;
inline constexpr uint32_t kComponentRaw = 1u << 20;

inline constexpr uint64_t kCpuUsageMask = 0xff;  // usage bits that ask for access by the CPU

inline constexpr uint32_t kMaxSide = 32768;  // pixels
inline constexpr uint32_t kMaxBlobBytes = 1u << 30;
inline constexpr uint64_t kMaxBufferBytes = uint64_t{1} << 31;
inline constexpr size_t kMaxNameBytes = 127;

struct BufferDescription {
    std::string name;     // for people
    uint32_t width = 0;   // pixels; bytes for BLOB
    uint32_t height = 0;  // pixels; 1 for BLOB
    uint32_t layerCount = 0;
    int32_t format = 0;
    uint64_t usage = 0;         // usage bits of the platform
    uint64_t reservedSize = 0;  // bytes
};

struct PlaneComponent {
    uint32_t type;  // one component bit
    uint32_t offsetInBits;
    uint32_t sizeInBits;
};

struct Plane {
    std::vector<PlaneComponent> components;
    uint64_t offset;  // bytes
    uint32_t sampleIncrementInBits;
    uint32_t stride;       // bytes per row
    uint32_t scanlines;    // rows allocated
    uint64_t size;         // bytes
    uint32_t width;        // samples
    uint32_t height;       // samples
    uint32_t subsampling;  // both ways
};

// A BLOB has no planes.
struct BufferLayout {
    uint32_t stride = 0;  // bytes per row of the first plane; bytes of a BLOB
    uint64_t size = 0;    // bytes of the whole buffer: exactly its planes
    std::vector<Plane> planes;
};

// The layout of a buffer of that description:
//   RAW10          packed, 4 pixels in 5 bytes; rows padded to 64 bytes
//   YCBCR_420_888  NV12; rows padded to 128 bytes, luma rows to a multiple of 128; the CbCr plane
//                  with half as many rows follows
//   BLOB           width bytes
// kBadValue: contradicts itself (a size of zero). kUnsupported: another format, usage or shape.
base::Result<BufferLayout> LayOut(const BufferDescription& description);

}  // namespace graphics

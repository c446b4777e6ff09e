// Makes and maps buffers as the allocator and the mapper do.
#include "buffer.h"

#include <cstdio>
#include <cstdlib>

namespace bench {

namespace {

constexpr uint64_t kReadAndWriteOften = 0x33;

void Require(const graphics::Outcome& outcome, const char* what) {
    if (outcome.ok()) return;
    fprintf(stderr, "cannot %s a buffer: %s\n", what, outcome.reason.c_str());
    exit(1);
}

}  // namespace

Buffer::Buffer(const graphics::BufferDescription& description) : mDescription(description) {
    Require(layOut(mDescription, &mLayout), "lay out");
    MakeFresh();
}

void Buffer::MakeFresh() {
    mMapping = {};
    mHandle.reset();
    Require(createBuffer(mDescription, &mHandle), "create");
    MapAnew();
}

void Buffer::MapAnew() {
    Require(mMapping.map(mHandle->data[0], mLayout.size), "map");
}

graphics::BufferDescription Raw10Buffer(uint32_t width, uint32_t height) {
    return {"raw", width, height, 1, graphics::kFormatRaw10, kReadAndWriteOften, 0};
}

graphics::BufferDescription Nv12Buffer(uint32_t width, uint32_t height) {
    return {"yuv", width, height, 1, graphics::kFormatYcbcr420, kReadAndWriteOften, 0};
}

graphics::BufferDescription BlobBuffer(uint32_t bytes) {
    return {"blob", bytes, 1, 1, graphics::kFormatBlob, kReadAndWriteOften, 0};
}

}  // namespace bench

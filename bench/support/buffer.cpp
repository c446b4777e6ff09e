// Makes and maps buffers as the allocator and the mapper do.
#include "buffer.h"

#include <cstdio>
#include <cstdlib>
#include <utility>

namespace bench {

namespace {

constexpr uint64_t kReadAndWriteOften = 0x33;

// The value of a result; ends the program without one.
template <class T>
T Require(base::Result<T> result, const char* what) {
    if (result.Ok()) return std::move(result).Value();
    fprintf(stderr, "cannot %s a buffer: %s\n", what, result.Error().c_str());
    exit(1);
}

}  // namespace

Buffer::Buffer(const graphics::BufferDescription& description)
    : mDescription(description), mLayout(Require(LayOut(mDescription), "lay out")) {
    MakeFresh();
}

void Buffer::MakeFresh() {
    mMapping = {};
    mHandle = Require(CreateBuffer(mDescription), "create");
    MapAnew();
}

void Buffer::MapAnew() {
    Require(mMapping.Map(mHandle->data[0], mLayout.size), "map");
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

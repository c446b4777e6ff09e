// Maps a buffer with its zero tail.
#include <graphics_core/buffer_mapping.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace graphics {

namespace {

Outcome mmapFailure() {
    return failure(BufferError::kNoResources, std::string("mmap: ") + std::strerror(errno));
}

}  // namespace

BufferMapping::~BufferMapping() {
    if (mBase != nullptr) munmap(mBase, mLength);
}

BufferMapping::BufferMapping(BufferMapping&& other) noexcept
    : mBase(std::exchange(other.mBase, nullptr)), mLength(std::exchange(other.mLength, 0)) {}

BufferMapping& BufferMapping::operator=(BufferMapping&& other) noexcept {
    std::swap(mBase, other.mBase);
    std::swap(mLength, other.mLength);
    return *this;
}

Outcome BufferMapping::map(int fd, uint64_t size) {
    const auto page = static_cast<uint64_t>(sysconf(_SC_PAGESIZE));
    const uint64_t pages = (size + page - 1) / page * page;
    BufferMapping reserved;
    reserved.mLength = pages * 2;
    void* base = mmap(nullptr, reserved.mLength, PROT_READ,
                      MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (base == MAP_FAILED) return mmapFailure();
    reserved.mBase = base;
    if (mmap(base, pages, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, fd, 0) == MAP_FAILED) {
        return mmapFailure();
    }
    *this = std::move(reserved);
    return {};
}

}  // namespace graphics

// Maps a buffer with its zero tail.
#include <graphics/buffer_mapping.h>
#include <pthread.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <utility>

namespace graphics {

using base::Done;
using base::Result;

namespace {

base::Failure MmapFailure() {
    return Failed(BufferError::kNoResources, std::string("mmap: ") + std::strerror(errno));
}

size_t PageSize() {
    return static_cast<size_t>(sysconf(_SC_PAGESIZE));
}

struct Pages {
    char* first;
    size_t bytes;
};

// Errors are ignored: a page that is missing comes with the first access to it.
void* PopulatePages(void* pages) {
    const auto* range = static_cast<const Pages*>(pages);
    madvise(range->first, range->bytes, MADV_POPULATE_WRITE);
    return nullptr;
}

}  // namespace

BufferMapping::~BufferMapping() {
    if (m_base != nullptr) munmap(m_base, m_length);
}

BufferMapping::BufferMapping(BufferMapping&& other) noexcept
    : m_base(std::exchange(other.m_base, nullptr)), m_length(std::exchange(other.m_length, 0)) {}

BufferMapping& BufferMapping::operator=(BufferMapping&& other) noexcept {
    std::swap(m_base, other.m_base);
    std::swap(m_length, other.m_length);
    return *this;
}

Result<Done> BufferMapping::Map(int fd, uint64_t size) {
    const uint64_t pages = (size + PageSize() - 1) / PageSize() * PageSize();
    void* base =
            mmap(nullptr, 2 * pages, PROT_READ, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    if (base == MAP_FAILED) return MmapFailure();
    BufferMapping reserved;
    reserved.m_base = static_cast<char*>(base);
    reserved.m_length = 2 * pages;
    if (mmap(base, pages, PROT_READ | PROT_WRITE, MAP_SHARED | MAP_FIXED, fd, 0) == MAP_FAILED) {
        return MmapFailure();
    }
    *this = std::move(reserved);
    return Done{};
}

void BufferMapping::Populate() const {
    const size_t bytes = m_length / 2;
    const size_t half = bytes / 2 / PageSize() * PageSize();
    Pages first = {m_base, half};
    Pages second = {m_base + half, bytes - half};
    // Two threads use two cores; more of them wait for each other in the kernel.
    pthread_t helper;
    const bool helped = pthread_create(&helper, nullptr, PopulatePages, &first) == 0;
    PopulatePages(&second);
    if (helped) pthread_join(helper, nullptr);
}

}  // namespace graphics

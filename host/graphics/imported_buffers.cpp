// Import, release, lock and unlock of buffers.
#include <graphics/fence.h>
#include <graphics/imported_buffers.h>
#include <sys/stat.h>

#include <utility>

namespace graphics {

using base::Done;
using base::Failure;
using base::Result;

namespace {

Failure UnknownBuffer() {
    return Failed(BufferError::kBadBuffer, "the pointer is not an imported buffer");
}

Result<Done> CheckLock(uint64_t cpuUsage, const Region& region,
                       const BufferDescription& description) {
    if (cpuUsage == 0 || (cpuUsage & ~kCpuUsageMask) != 0) {
        return Failed(BufferError::kBadValue, "usage " + std::to_string(cpuUsage) +
                                                      ": a lock takes CPU bits and nothing else");
    }
    const auto [left, top, width, height] = region;
    if (left == 0 && top == 0 && width == 0 && height == 0) return Done{};
    if (left < 0 || top < 0 || width <= 0 || height <= 0 ||
        int64_t{left} + width > description.width || int64_t{top} + height > description.height) {
        return Failed(BufferError::kBadValue, "the region is empty or not inside the buffer");
    }
    return Done{};
}

// Whether the buffer is to be filled with a picture: it has planes, and none of its pages exists
// yet. A BLOB is left out, because a JPEG fills a small part of its buffer.
bool IsFreshPicture(const CheckedBuffer& buffer) {
    struct stat status = {};
    return !buffer.info.layout.planes.empty() && fstat(buffer.handle->data[0], &status) == 0 &&
           status.st_blocks == 0;
}

}  // namespace

ImportedBuffers& ImportedBuffers::Instance() {
    static ImportedBuffers* const buffers = new ImportedBuffers;
    return *buffers;
}

ImportedBuffers::Imported* ImportedBuffers::Find(const void* buffer) {
    const auto found = m_buffers.find(buffer);
    return found == m_buffers.end() ? nullptr : &found->second;
}

Result<ImportedBuffers::Imported*> ImportedBuffers::FindLocked(const void* buffer) {
    Imported* const imported = Find(buffer);
    if (imported == nullptr) return UnknownBuffer();
    if (imported->locks == 0) return Failed(BufferError::kBadBuffer, "the buffer is not locked");
    return imported;
}

Result<native_handle_t*> ImportedBuffers::Import(const native_handle_t* raw) {
    Result<CheckedBuffer> checked = DuplicateBuffer(raw);
    if (!checked.Ok()) return checked.GetFailure();
    Imported imported;
    imported.buffer = std::move(checked).Value();
    native_handle_t* const handle = imported.buffer.handle.get();
    std::lock_guard<std::mutex> lock(m_mutex);
    m_buffers.emplace(handle, std::move(imported));
    return handle;
}

Result<Done> ImportedBuffers::Release(const void* buffer) {
    std::unordered_map<const void*, Imported>::node_type released;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        released = m_buffers.extract(buffer);
    }
    // Unmapped and closed here, without the mutex.
    if (released.empty()) return UnknownBuffer();
    return Done{};
}

Result<void*> ImportedBuffers::Lock(const void* buffer, uint64_t cpuUsage, const Region& region,
                                    int fence) {
    const Result<BufferInfo> info = Describe(buffer);
    if (!info.Ok()) return info.GetFailure();
    const auto checked = CheckLock(cpuUsage, region, info.Value().description);
    if (!checked.Ok()) return checked.GetFailure();
    if (const auto waited = WaitForFence(fence); !waited.Ok()) return waited.GetFailure();

    std::unique_lock<std::mutex> lock(m_mutex);
    Imported* const imported = Find(buffer);  // again: the wait was without the mutex
    if (imported == nullptr) return UnknownBuffer();
    BufferMapping& mapping = imported->mapping;
    const bool first = mapping.Data() == nullptr;
    if (first) {
        const auto mapped = mapping.Map(imported->buffer.handle->data[0], info.Value().layout.size);
        if (!mapped.Ok()) return mapped.GetFailure();
    }
    ++imported->locks;
    const bool populate = first && IsFreshPicture(imported->buffer);
    lock.unlock();
    // Without the mutex, as it takes milliseconds. The caller may not release what it locks.
    if (populate) mapping.Populate();
    return mapping.Data();
}

Result<Done> ImportedBuffers::Unlock(const void* buffer) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const Result<Imported*> imported = FindLocked(buffer);
    if (!imported.Ok()) return imported.GetFailure();
    --imported.Value()->locks;
    return Done{};
}

Result<Done> ImportedBuffers::RequireLocked(const void* buffer) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const Result<Imported*> imported = FindLocked(buffer);
    if (!imported.Ok()) return imported.GetFailure();
    return Done{};
}

Result<BufferInfo> ImportedBuffers::Describe(const void* buffer) {
    std::lock_guard<std::mutex> lock(m_mutex);
    const Imported* const imported = Find(buffer);
    if (imported == nullptr) return UnknownBuffer();
    return imported->buffer.info;
}

}  // namespace graphics

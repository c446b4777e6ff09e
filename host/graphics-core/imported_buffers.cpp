// Import, release, lock and unlock of buffers.
#include <graphics_core/fence.h>
#include <graphics_core/imported_buffers.h>

#include <utility>

namespace graphics {

namespace {

Outcome unknownBuffer() {
    return failure(BufferError::kBadBuffer, "the pointer is not an imported buffer");
}

Outcome notLocked() {
    return failure(BufferError::kBadBuffer, "the buffer is not locked");
}

Outcome checkRegion(const Region& region, const BufferDescription& description) {
    if (region.left == 0 && region.top == 0 && region.right == 0 && region.bottom == 0) return {};
    if (region.left < 0 || region.top < 0 || region.left >= region.right ||
        region.top >= region.bottom || region.right > description.width ||
        region.bottom > description.height) {
        return failure(BufferError::kBadValue, "the region is empty or not inside the buffer");
    }
    return {};
}

Outcome checkUsage(uint64_t cpuUsage) {
    if (cpuUsage != 0 && (cpuUsage & ~kCpuUsageMask) == 0) return {};
    return failure(BufferError::kBadValue, "usage " + std::to_string(cpuUsage) +
                                                   ": a lock takes CPU bits and nothing else");
}

}  // namespace

ImportedBuffers& ImportedBuffers::instance() {
    // Never destroyed: threads may still use buffers while the process exits.
    static ImportedBuffers* const buffers = new ImportedBuffers;
    return *buffers;
}

ImportedBuffers::Imported* ImportedBuffers::find(const void* buffer) {
    const auto found = mBuffers.find(buffer);
    return found == mBuffers.end() ? nullptr : &found->second;
}

Outcome ImportedBuffers::import(const native_handle_t* raw, const native_handle_t** out) {
    Imported imported;
    if (Outcome made = duplicateBuffer(raw, &imported.handle, &imported.info); !made.ok()) {
        return made;
    }
    const native_handle_t* handle = imported.handle.get();
    std::lock_guard<std::mutex> lock(mMutex);
    mBuffers.emplace(handle, std::move(imported));
    *out = handle;
    return {};
}

Outcome ImportedBuffers::release(const void* buffer) {
    std::unordered_map<const void*, Imported>::node_type released;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        released = mBuffers.extract(buffer);
    }
    // Unmapped and closed here, without the mutex.
    return released.empty() ? unknownBuffer() : Outcome{};
}

Outcome ImportedBuffers::lock(const void* buffer, uint64_t cpuUsage, const Region& region,
                              int fence, void** outData) {
    BufferInfo info;
    if (Outcome known = describe(buffer, &info); !known.ok()) return known;
    if (Outcome usage = checkUsage(cpuUsage); !usage.ok()) return usage;
    if (Outcome inside = checkRegion(region, info.description); !inside.ok()) return inside;
    if (Outcome signalled = waitForFence(fence); !signalled.ok()) return signalled;

    // Looked up again: the wait was without the mutex.
    std::lock_guard<std::mutex> lock(mMutex);
    Imported* imported = find(buffer);
    if (imported == nullptr) return unknownBuffer();
    if (imported->mapping.data() == nullptr) {
        Outcome mapped =
                imported->mapping.map(imported->handle->data[0], imported->info.layout.size);
        if (!mapped.ok()) return mapped;
    }
    ++imported->locks;
    *outData = imported->mapping.data();
    return {};
}

Outcome ImportedBuffers::unlock(const void* buffer) {
    std::lock_guard<std::mutex> lock(mMutex);
    Imported* imported = find(buffer);
    if (imported == nullptr) return unknownBuffer();
    if (imported->locks == 0) return notLocked();
    --imported->locks;
    return {};
}

Outcome ImportedBuffers::requireLocked(const void* buffer) {
    std::lock_guard<std::mutex> lock(mMutex);
    const Imported* imported = find(buffer);
    if (imported == nullptr) return unknownBuffer();
    return imported->locks == 0 ? notLocked() : Outcome{};
}

Outcome ImportedBuffers::describe(const void* buffer, BufferInfo* out) {
    std::lock_guard<std::mutex> lock(mMutex);
    const Imported* imported = find(buffer);
    if (imported == nullptr) return unknownBuffer();
    *out = imported->info;
    return {};
}

std::vector<BufferInfo> ImportedBuffers::all() {
    std::lock_guard<std::mutex> lock(mMutex);
    std::vector<BufferInfo> infos;
    for (const auto& entry : mBuffers) infos.push_back(entry.second.info);
    return infos;
}

}  // namespace graphics

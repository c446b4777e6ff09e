// Changing, removing and ordering the entries of a metadata block.
#include <algorithm>
#include <cstring>

#include "layout.h"

using namespace host::metadata;

namespace {

// Takes `size` bytes at `offset` out of the data section; what lies behind moves down.
void removeData(camera_metadata_t* block, uint32_t offset, size_t size) {
    uint8_t* const removed = dataOf(block) + offset;
    std::memmove(removed, removed + size, block->data_count - offset - size);
    block->data_count -= static_cast<uint32_t>(size);
    BufferEntry* const entries = entriesOf(block);
    for (uint32_t i = 0; i < block->entry_count; ++i) {
        BufferEntry& entry = entries[i];
        if (dataSizeOf(entry) > 0 && entry.data.offset > offset) {
            entry.data.offset -= static_cast<uint32_t>(size);
        }
    }
}

}  // namespace

int update_camera_metadata_entry(camera_metadata_t* dst, size_t index, const void* data,
                                 size_t data_count, camera_metadata_entry_t* updated_entry) {
    if (dst == nullptr || index >= dst->entry_count || data_count > UINT32_MAX) return kError;
    if (data == nullptr && data_count > 0) return kError;
    BufferEntry& entry = entriesOf(dst)[index];
    if (entry.type >= NUM_TYPES) return kError;

    const size_t oldSize = dataSizeOf(entry);
    const size_t newSize = calculate_camera_metadata_entry_data_size(entry.type, data_count);
    const size_t payload = data_count * camera_metadata_type_size[entry.type];
    if (oldSize > 0 && !hasData(dst, entry)) return kError;
    if (newSize != oldSize) {
        if (newSize > dst->data_capacity - (dst->data_count - oldSize)) return kError;
        if (oldSize > 0) removeData(dst, entry.data.offset, oldSize);
        if (newSize > 0) entry.data.offset = dst->data_count;
        dst->data_count += static_cast<uint32_t>(newSize);
    }
    entry.count = static_cast<uint32_t>(data_count);
    if (newSize > 0) {
        uint8_t* const slot = dataOf(dst) + entry.data.offset;
        std::memcpy(slot, data, payload);
        std::memset(slot + payload, 0, newSize - payload);
    } else {
        entry.data.offset = 0;
        if (payload > 0) std::memcpy(entry.data.value, data, payload);
    }
    return updated_entry == nullptr ? kOk : get_camera_metadata_entry(dst, index, updated_entry);
}

int delete_camera_metadata_entry(camera_metadata_t* dst, size_t index) {
    if (dst == nullptr || index >= dst->entry_count) return kError;
    BufferEntry* const entry = entriesOf(dst) + index;
    const size_t size = dataSizeOf(*entry);
    if (size > 0) {
        if (!hasData(dst, *entry)) return kError;
        removeData(dst, entry->data.offset, size);
    }
    std::memmove(entry, entry + 1, sizeof(BufferEntry) * (dst->entry_count - index - 1));
    --dst->entry_count;
    return kOk;
}

int sort_camera_metadata(camera_metadata_t* dst) {
    if (dst == nullptr) return kError;
    if (dst->flags & kFlagSorted) return kOk;
    BufferEntry* const first = entriesOf(dst);
    // Stable: of several entries of one tag the first one stays what a search finds.
    std::stable_sort(first, first + dst->entry_count,
                     [](const BufferEntry& a, const BufferEntry& b) { return a.tag < b.tag; });
    dst->flags |= kFlagSorted;
    return kOk;
}

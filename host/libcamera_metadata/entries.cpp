// Adding entries to a metadata block, and finding and reading them.
#include <android/log.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

#include "layout.h"

using namespace host::metadata;

namespace {

// The first entry of `tag`; null if there is none.
const BufferEntry* findTag(const camera_metadata_t* block, uint32_t tag) {
    const BufferEntry* const first = entriesOf(block);
    const BufferEntry* const last = first + block->entry_count;
    const BufferEntry* found = last;
    if (block->flags & kFlagSorted) {
        found = std::lower_bound(first, last, tag, [](const BufferEntry& entry, uint32_t wanted) {
            return entry.tag < wanted;
        });
        if (found != last && found->tag != tag) found = last;
    } else {
        found = std::find_if(first, last, [tag](const BufferEntry& e) { return e.tag == tag; });
    }
    return found != last ? found : nullptr;
}

int describeEntry(const camera_metadata_t* block, size_t index, camera_metadata_ro_entry_t* entry) {
    if (block == nullptr || entry == nullptr || index >= block->entry_count) return kError;
    const BufferEntry& source = entriesOf(block)[index];
    if (source.type >= NUM_TYPES) return kError;
    const bool isInline = dataSizeOf(source) == 0;
    if (!isInline && !hasData(block, source)) return kError;
    entry->index = index;
    entry->tag = source.tag;
    entry->type = source.type;
    entry->count = source.count;
    entry->data.u8 = isInline ? source.data.value : dataOf(block) + source.data.offset;
    return kOk;
}

}  // namespace

int add_camera_metadata_entry(camera_metadata_t* dst, uint32_t tag, const void* data,
                              size_t data_count) {
    const int type = get_camera_metadata_tag_type(tag);
    if (type < 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "add_camera_metadata_entry: unknown tag 0x%08x", tag);
        return kError;
    }
    if (dst == nullptr || dst->entry_count >= dst->entry_capacity) return kError;
    if (data == nullptr && data_count > 0) return kError;
    if (data_count > UINT32_MAX) return kError;

    BufferEntry entry{};
    entry.tag = tag;
    entry.count = static_cast<uint32_t>(data_count);
    entry.type = static_cast<uint8_t>(type);
    const size_t size = dataSizeOf(entry);
    if (size > dst->data_capacity - dst->data_count) return kError;

    const size_t payload = data_count * camera_metadata_type_size[type];
    if (size == 0) {
        if (payload > 0) std::memcpy(entry.data.value, data, payload);
    } else {
        entry.data.offset = dst->data_count;
        uint8_t* const slot = dataOf(dst) + dst->data_count;
        std::memcpy(slot, data, payload);
        std::memset(slot + payload, 0, size - payload);
        dst->data_count += static_cast<uint32_t>(size);
    }
    entriesOf(dst)[dst->entry_count++] = entry;
    dst->flags &= ~kFlagSorted;
    return kOk;
}

int get_camera_metadata_ro_entry(const camera_metadata_t* src, size_t index,
                                 camera_metadata_ro_entry_t* entry) {
    return describeEntry(src, index, entry);
}

int find_camera_metadata_ro_entry(const camera_metadata_t* src, uint32_t tag,
                                  camera_metadata_ro_entry_t* entry) {
    if (src == nullptr || entry == nullptr) return kError;
    const BufferEntry* found = findTag(src, tag);
    if (found == nullptr) return -ENOENT;
    return describeEntry(src, static_cast<size_t>(found - entriesOf(src)), entry);
}

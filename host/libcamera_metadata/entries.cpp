// Adding entries to a metadata block, and finding and reading them.
#include <android/log.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <iterator>

#include "layout.h"

using namespace host::metadata;

namespace {

struct TagType {
    uint32_t tag;
    uint8_t type;
};
constexpr TagType kTagTypes[] = {
#define CAMERA_METADATA_SECTION(name, number, tags)
#define CAMERA_METADATA_TAG(name, number, type) {number, TYPE_##type},
#include <system/camera_metadata_tags.def>
};

// The first entry of `tag`; null if there is none.
const BufferEntry* FindTag(const camera_metadata_t* block, uint32_t tag) {
    const BufferEntry* const first = EntriesOf(block);
    const BufferEntry* const last = first + block->entryCount;
    const BufferEntry* found = first;
    if (block->flags & kFlagSorted) {
        found = std::lower_bound(first, last, tag, [](const BufferEntry& entry, uint32_t wanted) {
            return entry.tag < wanted;
        });
    } else {
        found = std::find_if(first, last, [tag](const BufferEntry& e) { return e.tag == tag; });
    }
    return found != last && found->tag == tag ? found : nullptr;
}

}  // namespace

int host::metadata::TypeOfTag(uint32_t tag) {
    const auto* const found = std::lower_bound(
            std::begin(kTagTypes), std::end(kTagTypes), tag,
            [](const TagType& known, uint32_t wanted) { return known.tag < wanted; });
    return found != std::end(kTagTypes) && found->tag == tag ? found->type : -1;
}

int add_camera_metadata_entry(camera_metadata_t* dst, uint32_t tag, const void* data,
                              size_t dataCount) {
    const int type = TypeOfTag(tag);
    if (type < 0) {
        __android_log_print(ANDROID_LOG_ERROR, kLogTag,
                            "add_camera_metadata_entry: unknown tag 0x%08x", tag);
        return kError;
    }
    if (dst == nullptr || dst->entryCount >= dst->entryCapacity) return kError;
    // The capacity that a block from outside states may exceed its room.
    const uint64_t used = dst->entriesStart + uint64_t{dst->entryCount} * sizeof(BufferEntry);
    if (used + sizeof(BufferEntry) > dst->dataStart) return kError;
    if (data == nullptr && dataCount > 0) return kError;
    if (dataCount > UINT32_MAX) return kError;

    BufferEntry entry{};
    entry.tag = tag;
    entry.count = static_cast<uint32_t>(dataCount);
    entry.type = static_cast<uint8_t>(type);
    const size_t size = DataSizeOf(entry);
    if (size > dst->dataCapacity - dst->dataCount) return kError;

    const size_t payload = dataCount * camera_metadata_type_size[type];
    if (size == 0) {
        if (payload > 0) std::memcpy(entry.data.value, data, payload);
    } else {
        entry.data.offset = dst->dataCount;
        // What is left of the last 8 bytes has been zero since the allocation.
        std::memcpy(DataOf(dst) + dst->dataCount, data, payload);
        dst->dataCount += static_cast<uint32_t>(size);
    }
    EntriesOf(dst)[dst->entryCount++] = entry;
    dst->flags &= ~kFlagSorted;
    return kOk;
}

int get_camera_metadata_ro_entry(const camera_metadata_t* src, size_t index,
                                 camera_metadata_ro_entry_t* entry) {
    if (src == nullptr || entry == nullptr || index >= src->entryCount) return kError;
    const BufferEntry& source = EntriesOf(src)[index];
    entry->index = index;
    entry->tag = source.tag;
    entry->type = source.type;
    entry->count = source.count;
    entry->data.u8 = DataSizeOf(source) == 0 ? source.data.value : DataOf(src) + source.data.offset;
    return kOk;
}

int find_camera_metadata_ro_entry(const camera_metadata_t* src, uint32_t tag,
                                  camera_metadata_ro_entry_t* entry) {
    if (src == nullptr || entry == nullptr) return kError;
    const BufferEntry* found = FindTag(src, tag);
    if (found == nullptr) return -ENOENT;
    return get_camera_metadata_ro_entry(src, static_cast<size_t>(found - EntriesOf(src)), entry);
}

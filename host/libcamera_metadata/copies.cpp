// Copies of metadata blocks, and joining of two.
#include <cstdlib>
#include <cstring>

#include "layout.h"

using namespace host::metadata;

camera_metadata_t* copy_camera_metadata(void* dst, size_t dst_size, const camera_metadata_t* src) {
    if (src == nullptr) return nullptr;
    camera_metadata_t* copy =
            place_camera_metadata(dst, dst_size, src->entry_count, src->data_count);
    if (copy == nullptr) return nullptr;
    copy->flags = src->flags;
    copy->vendor_id = src->vendor_id;
    copy->entry_count = src->entry_count;
    copy->data_count = src->data_count;
    std::memcpy(entriesOf(copy), entriesOf(src), sizeof(BufferEntry) * src->entry_count);
    std::memcpy(dataOf(copy), dataOf(src), src->data_count);
    return copy;
}

camera_metadata_t* clone_camera_metadata(const camera_metadata_t* src) {
    if (src == nullptr) return nullptr;
    const size_t size = get_camera_metadata_compact_size(src);
    camera_metadata_t* block = allocate_camera_metadata(src->entry_count, src->data_count);
    return block == nullptr ? nullptr : copy_camera_metadata(block, size, src);
}

camera_metadata_t* allocate_copy_camera_metadata_checked(const camera_metadata_t* src,
                                                         size_t src_size) {
    if (src == nullptr || src_size < sizeof(camera_metadata)) return nullptr;
    auto* copy = static_cast<camera_metadata_t*>(std::malloc(src_size));
    if (copy == nullptr) return nullptr;
    std::memcpy(static_cast<void*>(copy), src, src_size);
    if (validate_camera_metadata_structure(copy, &src_size) != kOk) {
        std::free(copy);
        return nullptr;
    }
    return copy;
}

int append_camera_metadata(camera_metadata_t* dst, const camera_metadata_t* src) {
    if (dst == nullptr || src == nullptr) return kError;
    const uint32_t added = src->entry_count;
    const uint32_t addedData = src->data_count;
    if (added > dst->entry_capacity - dst->entry_count) return kError;
    if (addedData > dst->data_capacity - dst->data_count) return kError;

    BufferEntry* const entries = entriesOf(dst) + dst->entry_count;
    std::memcpy(entries, entriesOf(src), sizeof(BufferEntry) * added);
    std::memcpy(dataOf(dst) + dst->data_count, dataOf(src), addedData);
    for (uint32_t i = 0; i < added; ++i) {
        if (dataSizeOf(entries[i]) > 0) entries[i].data.offset += dst->data_count;
    }
    dst->entry_count += added;
    dst->data_count += addedData;
    dst->flags &= ~kFlagSorted;
    return kOk;
}

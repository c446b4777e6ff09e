// How a metadata block lies in memory: a header, the entries, then the data of the larger ones.
#pragma once

#include <system/camera_metadata.h>

#include <cstddef>
#include <cstdint>

// Values of at most 4 bytes lie in their entry; larger ones at data_start + offset, each rounded up
// to 8 bytes. Native byte order; offsets are from the start of the header.
struct camera_metadata {
    uint32_t size;  // bytes of the whole block
    uint32_t version;
    uint32_t flags;
    uint32_t entry_count;
    uint32_t entry_capacity;
    uint32_t entries_start;
    uint32_t data_count;     // bytes in use
    uint32_t data_capacity;  // bytes
    uint32_t data_start;
    uint32_t padding;
    uint64_t vendor_id;
};
static_assert(sizeof(camera_metadata) == 48, "part of the format");

namespace host::metadata {

struct BufferEntry {
    uint32_t tag;
    uint32_t count;
    union {
        uint32_t offset;
        uint8_t value[4];
    } data;
    uint8_t type;
    uint8_t reserved[3];
};
static_assert(sizeof(BufferEntry) == 16, "part of the format");

constexpr uint32_t kVersion = 1;
constexpr uint32_t kFlagSorted = 1;
constexpr uint64_t kNoVendor = UINT64_MAX;
constexpr size_t kBlockAlignment = 8;
constexpr size_t kEntryAlignment = 4;
constexpr size_t kDataAlignment = 8;
constexpr size_t kInlineSize = sizeof(BufferEntry::data);
constexpr int kOk = 0;
constexpr int kError = 1;
constexpr char kLogTag[] = "camera_metadata";

inline BufferEntry* entriesOf(camera_metadata_t* block) {
    return reinterpret_cast<BufferEntry*>(reinterpret_cast<uint8_t*>(block) + block->entries_start);
}
inline const BufferEntry* entriesOf(const camera_metadata_t* block) {
    return entriesOf(const_cast<camera_metadata_t*>(block));
}

inline uint8_t* dataOf(camera_metadata_t* block) {
    return reinterpret_cast<uint8_t*>(block) + block->data_start;
}
inline const uint8_t* dataOf(const camera_metadata_t* block) {
    return dataOf(const_cast<camera_metadata_t*>(block));
}

// Bytes that `entry` takes in the data section.
inline size_t dataSizeOf(const BufferEntry& entry) {
    return calculate_camera_metadata_entry_data_size(entry.type, entry.count);
}

// Whether the data of `entry` lies in the block's data section.
inline bool hasData(const camera_metadata_t* block, const BufferEntry& entry) {
    return uint64_t{entry.data.offset} + dataSizeOf(entry) <= block->data_capacity;
}

}  // namespace host::metadata

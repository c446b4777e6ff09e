// Layout of a metadata block in memory: a header, the entries, then the data of the larger ones.
#pragma once

#include <system/camera_metadata.h>

#include <cstddef>
#include <cstdint>

// Values of at most 4 bytes are inside their entry; larger ones at dataStart + offset, each
// rounded up to 8 bytes. Native byte order; offsets are from the start of the header.
struct camera_metadata {
    uint32_t size;  // bytes of the whole block
    uint32_t version;
    uint32_t flags;
    uint32_t entryCount;
    uint32_t entryCapacity;
    uint32_t entriesStart;
    uint32_t dataCount;     // bytes in use
    uint32_t dataCapacity;  // bytes
    uint32_t dataStart;
    uint32_t padding;
    uint64_t vendorId;
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

constexpr uint32_t kFlagSorted = 1;
constexpr size_t kAlignment = 8;  // of blocks, their data and each value in it
constexpr size_t kEntryAlignment = 4;
constexpr size_t kInlineSize = sizeof(BufferEntry::data);
constexpr int kOk = 0;
constexpr int kError = 1;
constexpr char kLogTag[] = "camera_metadata";

inline BufferEntry* EntriesOf(camera_metadata_t* block) {
    return reinterpret_cast<BufferEntry*>(reinterpret_cast<uint8_t*>(block) + block->entriesStart);
}
inline const BufferEntry* EntriesOf(const camera_metadata_t* block) {
    return EntriesOf(const_cast<camera_metadata_t*>(block));
}

inline uint8_t* DataOf(camera_metadata_t* block) {
    return reinterpret_cast<uint8_t*>(block) + block->dataStart;
}
inline const uint8_t* DataOf(const camera_metadata_t* block) {
    return DataOf(const_cast<camera_metadata_t*>(block));
}

// In 64 bits, which no size or count of 32 bits overflows.
constexpr uint64_t AlignUp(uint64_t size) {
    return (size + kAlignment - 1) / kAlignment * kAlignment;
}

// Bytes that `entry`, whose type is a known one, takes in the data section.
inline uint64_t DataSizeOf(const BufferEntry& entry) {
    const uint64_t bytes = uint64_t{entry.count} * camera_metadata_type_size[entry.type];
    return bytes <= kInlineSize ? 0 : AlignUp(bytes);
}

// TYPE_...; -1 for an unknown tag.
int TypeOfTag(uint32_t tag);

}  // namespace host::metadata

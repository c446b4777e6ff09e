// Allocation and sizes of metadata blocks.
#include <cstdlib>
#include <cstring>

#include "layout.h"

using namespace host::metadata;

const size_t camera_metadata_type_size[NUM_TYPES] = {1, 4, 4, 8, 8, 8};

camera_metadata_t* allocate_camera_metadata(size_t entryCapacity, size_t dataCapacity) {
    if (entryCapacity > UINT32_MAX || dataCapacity > UINT32_MAX) return nullptr;
    const uint64_t dataStart =
            AlignUp(sizeof(camera_metadata) + uint64_t{entryCapacity} * sizeof(BufferEntry));
    const uint64_t size = AlignUp(dataStart + dataCapacity);
    if (size > UINT32_MAX) return nullptr;
    auto* block = static_cast<camera_metadata_t*>(std::calloc(1, size));
    if (block == nullptr) return nullptr;

    block->size = static_cast<uint32_t>(size);
    block->version = 1;
    block->entryCapacity = static_cast<uint32_t>(entryCapacity);
    block->entriesStart = sizeof(camera_metadata);
    block->dataCapacity = static_cast<uint32_t>(dataCapacity);
    block->dataStart = static_cast<uint32_t>(dataStart);
    block->vendorId = UINT64_MAX;  // no vendor
    return block;
}

void free_camera_metadata(camera_metadata_t* metadata) {
    std::free(metadata);
}

size_t get_camera_metadata_size(const camera_metadata_t* metadata) {
    if (metadata == nullptr) return kError;
    uint32_t size = 0;
    std::memcpy(&size, metadata, sizeof(size));  // the address may be unaligned
    return size;
}

size_t get_camera_metadata_entry_count(const camera_metadata_t* metadata) {
    return metadata->entryCount;
}

// Sizes, allocation and bookkeeping of metadata blocks.
#include <cstdlib>
#include <cstring>

#include "layout.h"

using namespace host::metadata;

const size_t camera_metadata_type_size[NUM_TYPES] = {1, 4, 4, 8, 8, 8};

namespace {

// `size` rounded up to a multiple of `alignment`; false when that overflows.
bool alignUp(size_t size, size_t alignment, size_t* aligned) {
    if (__builtin_add_overflow(size, alignment - 1, aligned)) return false;
    *aligned -= *aligned % alignment;
    return true;
}

// Where the data starts behind `entryCapacity` entries; false when that overflows.
bool dataStart(size_t entryCapacity, size_t* start) {
    size_t entries = 0;
    size_t end = 0;
    return !__builtin_mul_overflow(entryCapacity, sizeof(BufferEntry), &entries) &&
           !__builtin_add_overflow(entries, sizeof(camera_metadata), &end) &&
           alignUp(end, kDataAlignment, start);
}

}  // namespace

size_t calculate_camera_metadata_size(size_t entry_count, size_t data_count) {
    size_t start = 0;
    size_t end = 0;
    size_t size = 0;
    const bool fits = dataStart(entry_count, &start) &&
                      !__builtin_add_overflow(start, data_count, &end) &&
                      alignUp(end, kBlockAlignment, &size);
    return fits ? size : SIZE_MAX;
}

size_t calculate_camera_metadata_entry_data_size(uint8_t type, size_t data_count) {
    if (type >= NUM_TYPES) return 0;
    size_t bytes = 0;
    if (__builtin_mul_overflow(data_count, camera_metadata_type_size[type], &bytes)) {
        return SIZE_MAX;
    }
    if (bytes <= kInlineSize) return 0;
    size_t aligned = 0;
    return alignUp(bytes, kDataAlignment, &aligned) ? aligned : SIZE_MAX;
}

camera_metadata_t* allocate_camera_metadata(size_t entry_capacity, size_t data_capacity) {
    const size_t size = calculate_camera_metadata_size(entry_capacity, data_capacity);
    size_t start = 0;
    if (size > UINT32_MAX || !dataStart(entry_capacity, &start)) return nullptr;
    auto* block = static_cast<camera_metadata_t*>(std::calloc(1, size));
    if (block == nullptr) return nullptr;

    block->size = static_cast<uint32_t>(size);
    block->version = kVersion;
    block->entry_capacity = static_cast<uint32_t>(entry_capacity);
    block->entries_start = sizeof(camera_metadata);
    block->data_capacity = static_cast<uint32_t>(data_capacity);
    block->data_start = static_cast<uint32_t>(start);
    block->vendor_id = kNoVendor;
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
    return metadata->entry_count;
}

size_t get_camera_metadata_data_count(const camera_metadata_t* metadata) {
    return metadata->data_count;
}

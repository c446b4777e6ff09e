// Checks of metadata blocks that come from outside.
#include <android/log.h>

#include <cstdarg>
#include <cstring>

#include "layout.h"

using namespace host::metadata;

namespace {

// Everything is read by copying, as the block may be unaligned; sums are 64 bits wide, which 32-bit
// fields cannot overflow.

[[gnu::format(printf, 1, 2)]] bool Invalid(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    __android_log_vprint(ANDROID_LOG_ERROR, kLogTag, format, arguments);
    va_end(arguments);
    return false;
}

// Refuses what a device refuses, and accepts what it accepts: so each entry of the capacity counts
// as one byte. What is in use is checked to be inside the block.

bool CheckHeader(const camera_metadata& header) {
    const uint64_t dataEnd = uint64_t{header.dataStart} + header.dataCapacity;
    const uint64_t entriesEnd =
            header.entriesStart + uint64_t{header.entryCount} * sizeof(BufferEntry);
    if (header.entryCount > header.entryCapacity) {
        return Invalid("%u entries exceed their capacity of %u", header.entryCount,
                       header.entryCapacity);
    }
    if (header.dataCount > header.dataCapacity) {
        return Invalid("%u bytes of data exceed their capacity of %u", header.dataCount,
                       header.dataCapacity);
    }
    if (uint64_t{header.entriesStart} + header.entryCapacity > header.dataStart) {
        return Invalid("data starts at %u, within %u entries from %u on", header.dataStart,
                       header.entryCapacity, header.entriesStart);
    }
    if (dataEnd > header.size || entriesEnd > header.size) {
        return Invalid("data or entries end after the block's %u bytes", header.size);
    }
    return true;
}

bool CheckEntry(const camera_metadata& header, uint32_t index, const BufferEntry& entry) {
    if (entry.type >= NUM_TYPES) {
        return Invalid("entry %u (tag 0x%08x) has unknown type %u", index, entry.tag, entry.type);
    }
    // Vendors' tags may have any type: there is no table of them here.
    const int tagType = TypeOfTag(entry.tag);
    if (tagType != entry.type && entry.tag >> 16 < VENDOR_SECTION) {
        return Invalid("entry %u (tag 0x%08x) has type %u, not its tag's %d (-1: no such tag)",
                       index, entry.tag, entry.type, tagType);
    }
    const uint64_t size = DataSizeOf(entry);
    if (size > 0) {
        if ((uint64_t{header.dataStart} + entry.data.offset) % kAlignment != 0) {
            return Invalid("entry %u (tag 0x%08x): data at %u from %u on is not aligned to 8",
                           index, entry.tag, entry.data.offset, header.dataStart);
        }
        if (entry.data.offset + size > header.dataCapacity) {
            return Invalid(
                    "entry %u (tag 0x%08x): %llu bytes of data at %u end after the %u there are",
                    index, entry.tag, static_cast<unsigned long long>(size), entry.data.offset,
                    header.dataCapacity);
        }
    } else if (entry.count == 0 && entry.data.offset != 0) {
        return Invalid("entry %u (tag 0x%08x) is empty but has data offset %u", index, entry.tag,
                       entry.data.offset);
    }
    return true;
}

}  // namespace

int validate_camera_metadata_structure(const camera_metadata_t* metadata,
                                       const size_t* expectedSize) {
    if (metadata == nullptr) {
        Invalid("no metadata: the pointer is null");
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    if (expectedSize != nullptr && *expectedSize < sizeof(camera_metadata)) {
        Invalid("%zu bytes are less than a header takes", *expectedSize);
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    const auto* bytes = reinterpret_cast<const uint8_t*>(metadata);
    camera_metadata header;
    std::memcpy(&header, bytes, sizeof(header));
    if (expectedSize != nullptr && header.size > *expectedSize) {
        Invalid("size %u exceeds the %zu bytes that are there", header.size, *expectedSize);
        return CAMERA_METADATA_VALIDATION_ERROR;
    }
    if (!CheckHeader(header)) return CAMERA_METADATA_VALIDATION_ERROR;
    if (header.entryCount > 0 && header.entriesStart % kEntryAlignment != 0) {
        Invalid("entries start at %u, which is not a multiple of 4", header.entriesStart);
        return CAMERA_METADATA_VALIDATION_ERROR;
    }

    for (uint32_t i = 0; i < header.entryCount; ++i) {
        BufferEntry entry;
        std::memcpy(&entry, bytes + header.entriesStart + size_t{i} * sizeof(entry), sizeof(entry));
        if (!CheckEntry(header, i, entry)) return CAMERA_METADATA_VALIDATION_ERROR;
    }
    const bool aligned = reinterpret_cast<uintptr_t>(metadata) % kAlignment == 0;
    return aligned ? kOk : CAMERA_METADATA_VALIDATION_SHIFTED;
}

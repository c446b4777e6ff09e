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

bool CheckHeader(const camera_metadata& header) {
    const uint64_t entriesEnd =
            header.entriesStart + uint64_t{header.entryCapacity} * sizeof(BufferEntry);
    const uint64_t dataEnd = uint64_t{header.dataStart} + header.dataCapacity;
    if (header.size < sizeof(camera_metadata)) {
        return Invalid("size %u is less than a header takes", header.size);
    }
    if (header.entryCount > header.entryCapacity) {
        return Invalid("%u entries exceed their capacity of %u", header.entryCount,
                       header.entryCapacity);
    }
    if (header.dataCount > header.dataCapacity) {
        return Invalid("%u bytes of data exceed their capacity of %u", header.dataCount,
                       header.dataCapacity);
    }
    // Each value outside its entry takes a multiple of 8; the next one starts there.
    if (header.dataCount % kAlignment != 0) {
        return Invalid("%u bytes of data are not a multiple of 8", header.dataCount);
    }
    if (header.entriesStart < sizeof(camera_metadata) ||
        header.entriesStart % kEntryAlignment != 0) {
        return Invalid("entries cannot start at %u", header.entriesStart);
    }
    if (entriesEnd > header.dataStart || header.dataStart % kAlignment != 0) {
        return Invalid("data cannot start at %u, entries end at %llu", header.dataStart,
                       static_cast<unsigned long long>(entriesEnd));
    }
    if (dataEnd > header.size) {
        return Invalid("data ends at %llu, after the block's %u bytes",
                       static_cast<unsigned long long>(dataEnd), header.size);
    }
    return true;
}

bool CheckEntry(const camera_metadata& header, uint32_t index, const BufferEntry& entry) {
    if (entry.type >= NUM_TYPES) {
        return Invalid("entry %u (tag 0x%08x) has unknown type %u", index, entry.tag, entry.type);
    }
    // A block made on a device holds tags that this library has no table of: vendor tags and most
    // of the platform's. Only a tag outside every section is wrong for certain.
    const int tagType = TypeOfTag(entry.tag);
    const uint32_t section = entry.tag >> 16;
    if (tagType == -1 && section >= ANDROID_SECTION_COUNT && section < VENDOR_SECTION) {
        return Invalid("entry %u has tag 0x%08x, which is in no section", index, entry.tag);
    }
    if (tagType != -1 && tagType != entry.type) {
        return Invalid("entry %u (tag 0x%08x) has type %u, not its tag's %d", index, entry.tag,
                       entry.type, tagType);
    }
    const uint64_t size = DataSizeOf(entry);
    if (size > 0) {
        if (entry.data.offset % kAlignment != 0) {
            return Invalid("entry %u (tag 0x%08x): data offset %u is not a multiple of 8", index,
                           entry.tag, entry.data.offset);
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

    for (uint32_t i = 0; i < header.entryCount; ++i) {
        BufferEntry entry;
        std::memcpy(&entry, bytes + header.entriesStart + size_t{i} * sizeof(entry), sizeof(entry));
        if (!CheckEntry(header, i, entry)) return CAMERA_METADATA_VALIDATION_ERROR;
    }
    const bool aligned = reinterpret_cast<uintptr_t>(metadata) % kAlignment == 0;
    return aligned ? kOk : CAMERA_METADATA_VALIDATION_SHIFTED;
}

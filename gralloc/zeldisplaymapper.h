// What the tool uses of the vendor's display mapper library: the layout of a buffer's planes. The
// library installs no header, so it is declared here; the records below have the library's sizes.
#pragma once

#include <aidl/android/hardware/graphics/allocator/BufferDescriptorInfo.h>

#include <cstddef>
#include <cstdint>

enum vendor_zel_hardware_display_common_MetadataType {
    VENDOR_ZEL_METADATA_PLANE_LAYOUTS = 15,  // the result is a ::mapper::PlaneLayoutRecord
};

namespace mapper {

constexpr int32_t kMaxRecordPlanes = 8;
constexpr int32_t kMaxPlaneComponents = 5;

struct PlaneComponentEntry {
    uint32_t type;     // bits of the standard PlaneLayoutComponentType
    uint32_t unread1;  // the tool reads neither
    uint32_t unread2;
};

struct PlaneEntry {
    uint32_t offset;              // bytes from the start of the buffer
    int32_t sampleIncrementBits;  // from one sample to the next
    PlaneComponentEntry components[kMaxPlaneComponents];
    int32_t numComponents;  // valid entries of `components`
    int32_t strideBytes;    // per row
    int32_t scanlines;      // rows allocated
    uint32_t size;          // bytes
    uint32_t horizontalSubsampling;
    uint32_t verticalSubsampling;
};

struct PlaneLayoutRecord {
    PlaneEntry planes[kMaxRecordPlanes];
    int32_t numPlanes;  // valid entries of `planes`
    uint8_t unread[16];
};

static_assert(sizeof(PlaneComponentEntry) == 12);
static_assert(offsetof(PlaneEntry, components) == 8);
static_assert(offsetof(PlaneEntry, numComponents) == 68);
static_assert(offsetof(PlaneEntry, strideBytes) == 72);
static_assert(offsetof(PlaneEntry, scanlines) == 76);
static_assert(offsetof(PlaneEntry, size) == 80);
static_assert(offsetof(PlaneEntry, horizontalSubsampling) == 84);
static_assert(offsetof(PlaneEntry, verticalSubsampling) == 88);
static_assert(sizeof(PlaneEntry) == 92);
static_assert(offsetof(PlaneLayoutRecord, numPlanes) == 8 * 92);
static_assert(sizeof(PlaneLayoutRecord) == 8 * 92 + 4 + 16);

// Describes the buffer that an allocation with `info` would give, in `out`, a record of the kind
// that `type` names. Returns 0, or an error. What `flag` asks for is not known; the tool passes
// false. Any thread.
int32_t GetFromBufferDescriptor(
        ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo info,
        vendor_zel_hardware_display_common_MetadataType type, void* out, bool flag);

}  // namespace mapper

// Binary form of buffer metadata: what IMapper 4.0's get() carries, and the standard types that
// this device's mapper knows.
#pragma once

#include <aidl/android/hardware/graphics/common/ExtendableType.h>
#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <aidl/android/hardware/graphics/common/StandardMetadataType.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <utils/Errors.h>

#include <cstdint>
#include <string>
#include <vector>

#define GRALLOC4_STANDARD_METADATA_TYPE "android.hardware.graphics.common.StandardMetadataType"
#define GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE \
    "android.hardware.graphics.common.PlaneLayoutComponentType"

namespace android::gralloc4 {

namespace details {

using ::aidl::android::hardware::graphics::common::ExtendableType;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using ::aidl::android::hardware::graphics::common::StandardMetadataType;
using ::android::hardware::graphics::common::V1_2::PixelFormat;
using ::android::hardware::graphics::mapper::V4_0::IMapper;
using BufferDescriptorInfo = IMapper::BufferDescriptorInfo;
using MetadataType = IMapper::MetadataType;
using Bytes = ::android::hardware::hidl_vec<uint8_t>;

// The name is a literal that is not copied: it stays readable while the process exits.
inline MetadataType standardType(StandardMetadataType value) {
    MetadataType type{};
    type.name.setToExternal(GRALLOC4_STANDARD_METADATA_TYPE,
                            sizeof(GRALLOC4_STANDARD_METADATA_TYPE) - 1);
    type.value = static_cast<int64_t>(value);
    return type;
}

}  // namespace details

static const details::MetadataType MetadataType_Width =
        details::standardType(details::StandardMetadataType::WIDTH);
static const details::MetadataType MetadataType_Height =
        details::standardType(details::StandardMetadataType::HEIGHT);
static const details::MetadataType MetadataType_PixelFormatRequested =
        details::standardType(details::StandardMetadataType::PIXEL_FORMAT_REQUESTED);
static const details::MetadataType MetadataType_AllocationSize =
        details::standardType(details::StandardMetadataType::ALLOCATION_SIZE);
static const details::MetadataType MetadataType_PlaneLayouts =
        details::standardType(details::StandardMetadataType::PLANE_LAYOUTS);

// encode...() replaces *out. decode...() returns BAD_VALUE when the bytes are of another type, too
// short or malformed (*out is then unchanged), and when bytes are left over (*out is then written).
// Both return BAD_VALUE for a null out. Any thread.

// In pixels.
status_t encodeWidth(uint64_t width, details::Bytes* out);
status_t decodeWidth(const details::Bytes& in, uint64_t* out);
status_t encodeHeight(uint64_t height, details::Bytes* out);
status_t decodeHeight(const details::Bytes& in, uint64_t* out);

status_t encodePixelFormatRequested(const details::PixelFormat& pixelFormatRequested,
                                    details::Bytes* out);
status_t decodePixelFormatRequested(const details::Bytes& in, details::PixelFormat* out);

// Bytes of the whole buffer.
status_t encodeAllocationSize(uint64_t allocationSize, details::Bytes* out);
status_t decodeAllocationSize(const details::Bytes& in, uint64_t* out);

status_t encodePlaneLayouts(const std::vector<details::PlaneLayout>& planeLayouts,
                            details::Bytes* out);
status_t decodePlaneLayouts(const details::Bytes& in, std::vector<details::PlaneLayout>* out);

// The content of a BufferDescriptor.
status_t encodeBufferDescriptorInfo(const details::BufferDescriptorInfo& bufferDescriptorInfo,
                                    details::Bytes* out);
status_t decodeBufferDescriptorInfo(const details::Bytes& in, details::BufferDescriptorInfo* out);

// Whether a type is a standard one.
bool isStandardMetadataType(const details::MetadataType& type);
bool isStandardPlaneLayoutComponentType(const details::ExtendableType& type);

}  // namespace android::gralloc4

// Binary form of buffer metadata: what IMapper 4.0's get() and set() carry, and the standard types.
#pragma once

#include <aidl/android/hardware/graphics/common/BlendMode.h>
#include <aidl/android/hardware/graphics/common/ChromaSiting.h>
#include <aidl/android/hardware/graphics/common/Compression.h>
#include <aidl/android/hardware/graphics/common/Cta861_3.h>
#include <aidl/android/hardware/graphics/common/Dataspace.h>
#include <aidl/android/hardware/graphics/common/ExtendableType.h>
#include <aidl/android/hardware/graphics/common/Interlaced.h>
#include <aidl/android/hardware/graphics/common/PlaneLayout.h>
#include <aidl/android/hardware/graphics/common/PlaneLayoutComponentType.h>
#include <aidl/android/hardware/graphics/common/Rect.h>
#include <aidl/android/hardware/graphics/common/Smpte2086.h>
#include <aidl/android/hardware/graphics/common/StandardMetadataType.h>
#include <aidl/android/hardware/graphics/common/XyColor.h>
#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <utils/Errors.h>

#include <cstdint>
#include <string>
#include <vector>

#define GRALLOC4_STANDARD_METADATA_TYPE "android.hardware.graphics.common.StandardMetadataType"
#define GRALLOC4_STANDARD_CHROMA_SITING "android.hardware.graphics.common.ChromaSiting"
#define GRALLOC4_STANDARD_COMPRESSION "android.hardware.graphics.common.Compression"
#define GRALLOC4_STANDARD_INTERLACED "android.hardware.graphics.common.Interlaced"
#define GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE \
    "android.hardware.graphics.common.PlaneLayoutComponentType"

namespace android {
namespace gralloc4 {

namespace details {

using ::aidl::android::hardware::graphics::common::BlendMode;
using ::aidl::android::hardware::graphics::common::ChromaSiting;
using ::aidl::android::hardware::graphics::common::Compression;
using ::aidl::android::hardware::graphics::common::Dataspace;
using ::aidl::android::hardware::graphics::common::ExtendableType;
using ::aidl::android::hardware::graphics::common::Interlaced;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
using ::aidl::android::hardware::graphics::common::Rect;
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

template <typename Enum>
inline ExtendableType extendableType(const char* name, Enum value) {
    return {name, static_cast<int64_t>(value)};
}

inline ExtendableType planeComponent(PlaneLayoutComponentType value) {
    return extendableType(GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE, value);
}

}  // namespace details

// The standard metadata types.
static const details::MetadataType MetadataType_BufferId =
        details::standardType(details::StandardMetadataType::BUFFER_ID);
static const details::MetadataType MetadataType_Name =
        details::standardType(details::StandardMetadataType::NAME);
static const details::MetadataType MetadataType_Width =
        details::standardType(details::StandardMetadataType::WIDTH);
static const details::MetadataType MetadataType_Height =
        details::standardType(details::StandardMetadataType::HEIGHT);
static const details::MetadataType MetadataType_LayerCount =
        details::standardType(details::StandardMetadataType::LAYER_COUNT);
static const details::MetadataType MetadataType_PixelFormatRequested =
        details::standardType(details::StandardMetadataType::PIXEL_FORMAT_REQUESTED);
static const details::MetadataType MetadataType_PixelFormatFourCC =
        details::standardType(details::StandardMetadataType::PIXEL_FORMAT_FOURCC);
static const details::MetadataType MetadataType_PixelFormatModifier =
        details::standardType(details::StandardMetadataType::PIXEL_FORMAT_MODIFIER);
static const details::MetadataType MetadataType_Usage =
        details::standardType(details::StandardMetadataType::USAGE);
static const details::MetadataType MetadataType_AllocationSize =
        details::standardType(details::StandardMetadataType::ALLOCATION_SIZE);
static const details::MetadataType MetadataType_ProtectedContent =
        details::standardType(details::StandardMetadataType::PROTECTED_CONTENT);
static const details::MetadataType MetadataType_Compression =
        details::standardType(details::StandardMetadataType::COMPRESSION);
static const details::MetadataType MetadataType_Interlaced =
        details::standardType(details::StandardMetadataType::INTERLACED);
static const details::MetadataType MetadataType_ChromaSiting =
        details::standardType(details::StandardMetadataType::CHROMA_SITING);
static const details::MetadataType MetadataType_PlaneLayouts =
        details::standardType(details::StandardMetadataType::PLANE_LAYOUTS);
static const details::MetadataType MetadataType_Crop =
        details::standardType(details::StandardMetadataType::CROP);
static const details::MetadataType MetadataType_Dataspace =
        details::standardType(details::StandardMetadataType::DATASPACE);
static const details::MetadataType MetadataType_BlendMode =
        details::standardType(details::StandardMetadataType::BLEND_MODE);
static const details::MetadataType MetadataType_Smpte2086 =
        details::standardType(details::StandardMetadataType::SMPTE2086);
static const details::MetadataType MetadataType_Cta861_3 =
        details::standardType(details::StandardMetadataType::CTA861_3);
static const details::MetadataType MetadataType_Smpte2094_40 =
        details::standardType(details::StandardMetadataType::SMPTE2094_40);
static const details::MetadataType MetadataType_Smpte2094_10 =
        details::standardType(details::StandardMetadataType::SMPTE2094_10);

// Standard compressions.
static const details::ExtendableType Compression_None =
        details::extendableType(GRALLOC4_STANDARD_COMPRESSION, details::Compression::NONE);
static const details::ExtendableType Compression_DisplayStreamCompression = details::extendableType(
        GRALLOC4_STANDARD_COMPRESSION, details::Compression::DISPLAY_STREAM_COMPRESSION);

// Standard interlacings.
static const details::ExtendableType Interlaced_None =
        details::extendableType(GRALLOC4_STANDARD_INTERLACED, details::Interlaced::NONE);
static const details::ExtendableType Interlaced_TopBottom =
        details::extendableType(GRALLOC4_STANDARD_INTERLACED, details::Interlaced::TOP_BOTTOM);
static const details::ExtendableType Interlaced_RightLeft =
        details::extendableType(GRALLOC4_STANDARD_INTERLACED, details::Interlaced::RIGHT_LEFT);

// Standard chroma sitings.
static const details::ExtendableType ChromaSiting_None =
        details::extendableType(GRALLOC4_STANDARD_CHROMA_SITING, details::ChromaSiting::NONE);
static const details::ExtendableType ChromaSiting_Unknown =
        details::extendableType(GRALLOC4_STANDARD_CHROMA_SITING, details::ChromaSiting::UNKNOWN);
static const details::ExtendableType ChromaSiting_SitedInterstitial = details::extendableType(
        GRALLOC4_STANDARD_CHROMA_SITING, details::ChromaSiting::SITED_INTERSTITIAL);
static const details::ExtendableType ChromaSiting_CositedHorizontal = details::extendableType(
        GRALLOC4_STANDARD_CHROMA_SITING, details::ChromaSiting::COSITED_HORIZONTAL);

// Standard components of a plane.
static const details::ExtendableType PlaneLayoutComponentType_Y =
        details::planeComponent(details::PlaneLayoutComponentType::Y);
static const details::ExtendableType PlaneLayoutComponentType_CB =
        details::planeComponent(details::PlaneLayoutComponentType::CB);
static const details::ExtendableType PlaneLayoutComponentType_CR =
        details::planeComponent(details::PlaneLayoutComponentType::CR);
static const details::ExtendableType PlaneLayoutComponentType_R =
        details::planeComponent(details::PlaneLayoutComponentType::R);
static const details::ExtendableType PlaneLayoutComponentType_G =
        details::planeComponent(details::PlaneLayoutComponentType::G);
static const details::ExtendableType PlaneLayoutComponentType_B =
        details::planeComponent(details::PlaneLayoutComponentType::B);
static const details::ExtendableType PlaneLayoutComponentType_A =
        details::planeComponent(details::PlaneLayoutComponentType::A);
static const details::ExtendableType PlaneLayoutComponentType_RAW =
        details::planeComponent(details::PlaneLayoutComponentType::RAW);

// encode...() replaces *out. decode...() returns BAD_VALUE when the bytes are of another type, too
// short or malformed (*out is then unchanged), and when bytes are left over (*out is then written).
// Both return BAD_VALUE for a null out. Any thread.

status_t encodeBufferId(uint64_t bufferId, details::Bytes* out);
status_t decodeBufferId(const details::Bytes& in, uint64_t* out);
status_t encodeName(const std::string& name, details::Bytes* out);
status_t decodeName(const details::Bytes& in, std::string* out);

// In pixels.
status_t encodeWidth(uint64_t width, details::Bytes* out);
status_t decodeWidth(const details::Bytes& in, uint64_t* out);
status_t encodeHeight(uint64_t height, details::Bytes* out);
status_t decodeHeight(const details::Bytes& in, uint64_t* out);

status_t encodeLayerCount(uint64_t layerCount, details::Bytes* out);
status_t decodeLayerCount(const details::Bytes& in, uint64_t* out);
status_t encodePixelFormatRequested(const details::PixelFormat& pixelFormatRequested,
                                    details::Bytes* out);
status_t decodePixelFormatRequested(const details::Bytes& in, details::PixelFormat* out);
status_t encodePixelFormatFourCC(uint32_t pixelFormatFourCC, details::Bytes* out);
status_t decodePixelFormatFourCC(const details::Bytes& in, uint32_t* out);
status_t encodePixelFormatModifier(uint64_t pixelFormatModifier, details::Bytes* out);
status_t decodePixelFormatModifier(const details::Bytes& in, uint64_t* out);

// BufferUsage bits.
status_t encodeUsage(uint64_t usage, details::Bytes* out);
status_t decodeUsage(const details::Bytes& in, uint64_t* out);

// Bytes of the whole buffer.
status_t encodeAllocationSize(uint64_t allocationSize, details::Bytes* out);
status_t decodeAllocationSize(const details::Bytes& in, uint64_t* out);

// Not 0: protected.
status_t encodeProtectedContent(uint64_t protectedContent, details::Bytes* out);
status_t decodeProtectedContent(const details::Bytes& in, uint64_t* out);

status_t encodeCompression(const details::ExtendableType& compression, details::Bytes* out);
status_t decodeCompression(const details::Bytes& in, details::ExtendableType* out);
status_t encodeInterlaced(const details::ExtendableType& interlaced, details::Bytes* out);
status_t decodeInterlaced(const details::Bytes& in, details::ExtendableType* out);
status_t encodeChromaSiting(const details::ExtendableType& chromaSiting, details::Bytes* out);
status_t decodeChromaSiting(const details::Bytes& in, details::ExtendableType* out);
status_t encodePlaneLayouts(const std::vector<details::PlaneLayout>& planeLayouts,
                            details::Bytes* out);
status_t decodePlaneLayouts(const details::Bytes& in, std::vector<details::PlaneLayout>* out);

// One rectangle per plane, in samples.
status_t encodeCrop(const std::vector<details::Rect>& crop, details::Bytes* out);
status_t decodeCrop(const details::Bytes& in, std::vector<details::Rect>* out);

status_t encodeDataspace(const details::Dataspace& dataspace, details::Bytes* out);
status_t decodeDataspace(const details::Bytes& in, details::Dataspace* out);
status_t encodeBlendMode(const details::BlendMode& blendMode, details::Bytes* out);
status_t decodeBlendMode(const details::Bytes& in, details::BlendMode* out);

// The content of a BufferDescriptor.
status_t encodeBufferDescriptorInfo(const details::BufferDescriptorInfo& bufferDescriptorInfo,
                                    details::Bytes* out);
status_t decodeBufferDescriptorInfo(const details::Bytes& in, details::BufferDescriptorInfo* out);

// Metadata of any type, a vendor's too.
status_t encodeUint32(const details::MetadataType& type, uint32_t value, details::Bytes* out);
status_t decodeUint32(const details::MetadataType& type, const details::Bytes& in, uint32_t* out);

// Whether a type is a standard one.
bool isStandardMetadataType(const details::MetadataType& type);
bool isStandardPlaneLayoutComponentType(const details::ExtendableType& type);

}  // namespace gralloc4
}  // namespace android

// Encodes each kind of metadata.
#include "metadata.h"

#include <string>
#include <vector>

namespace graphics {

namespace {

namespace gralloc4 = ::android::gralloc4;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
using ::aidl::android::hardware::graphics::common::StandardMetadataType;
using HidlFormat = ::android::hardware::graphics::common::V1_2::PixelFormat;

static_assert(kFormatBlob == static_cast<int32_t>(HidlFormat::BLOB));
static_assert(kFormatYcbcr420 == static_cast<int32_t>(HidlFormat::YCBCR_420_888));
static_assert(kFormatRaw10 == static_cast<int32_t>(HidlFormat::RAW10));
static_assert(kComponentY == static_cast<int64_t>(PlaneLayoutComponentType::Y));
static_assert(kComponentCb == static_cast<int64_t>(PlaneLayoutComponentType::CB));
static_assert(kComponentCr == static_cast<int64_t>(PlaneLayoutComponentType::CR));
static_assert(kComponentRaw == static_cast<int64_t>(PlaneLayoutComponentType::RAW));

std::vector<PlaneLayout> PlaneLayouts(const BufferLayout& layout) {
    std::vector<PlaneLayout> planes;
    for (const Plane& plane : layout.planes) {
        PlaneLayout out;
        for (const PlaneComponent& component : plane.components) {
            PlaneLayoutComponent entry;
            entry.type = {GRALLOC4_STANDARD_PLANE_LAYOUT_COMPONENT_TYPE, component.type};
            entry.offsetInBits = component.offsetInBits;
            entry.sizeInBits = component.sizeInBits;
            out.components.push_back(entry);
        }
        out.offsetInBytes = static_cast<int64_t>(plane.offset);
        out.sampleIncrementInBits = plane.sampleIncrementInBits;
        out.strideInBytes = plane.stride;
        out.widthInSamples = plane.width;
        out.heightInSamples = plane.height;
        out.totalSizeInBytes = static_cast<int64_t>(plane.size);
        out.horizontalSubsampling = plane.subsampling;
        out.verticalSubsampling = plane.subsampling;
        planes.push_back(std::move(out));
    }
    return planes;
}

}  // namespace

base::Result<MetadataBytes> EncodeMetadata(const BufferInfo& info, const MetadataType& type) {
    MetadataBytes bytes;
    const auto standard = gralloc4::isStandardMetadataType(type)
                                  ? static_cast<StandardMetadataType>(type.value)
                                  : StandardMetadataType::INVALID;
    switch (standard) {
        case StandardMetadataType::WIDTH:
            gralloc4::encodeWidth(info.description.width, &bytes);
            return bytes;
        case StandardMetadataType::HEIGHT:
            gralloc4::encodeHeight(info.description.height, &bytes);
            return bytes;
        case StandardMetadataType::PIXEL_FORMAT_REQUESTED:
            gralloc4::encodePixelFormatRequested(static_cast<HidlFormat>(info.description.format),
                                                 &bytes);
            return bytes;
        case StandardMetadataType::ALLOCATION_SIZE:
            gralloc4::encodeAllocationSize(info.layout.size, &bytes);
            return bytes;
        case StandardMetadataType::PLANE_LAYOUTS:
            gralloc4::encodePlaneLayouts(PlaneLayouts(info.layout), &bytes);
            return bytes;
        default:
            return Failed(BufferError::kUnsupported, "there is no metadata of type " +
                                                             std::string(type.name) + " " +
                                                             std::to_string(type.value));
    }
}

}  // namespace graphics

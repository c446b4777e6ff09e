// Encodes each kind of metadata.
#include "metadata.h"

#include <string>

namespace graphics {

namespace {

namespace gralloc4 = ::android::gralloc4;
using ::aidl::android::hardware::graphics::common::BlendMode;
using ::aidl::android::hardware::graphics::common::Dataspace;
using ::aidl::android::hardware::graphics::common::ExtendableType;
using ::aidl::android::hardware::graphics::common::PlaneLayout;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponent;
using ::aidl::android::hardware::graphics::common::PlaneLayoutComponentType;
using ::aidl::android::hardware::graphics::common::Rect;
using ::aidl::android::hardware::graphics::common::StandardMetadataType;
using HidlFormat = ::android::hardware::graphics::common::V1_2::PixelFormat;

static_assert(kFormatBlob == static_cast<int32_t>(HidlFormat::BLOB));
static_assert(kFormatYcbcr420 == static_cast<int32_t>(HidlFormat::YCBCR_420_888));
static_assert(kFormatRaw10 == static_cast<int32_t>(HidlFormat::RAW10));
static_assert(kComponentY == static_cast<int64_t>(PlaneLayoutComponentType::Y));
static_assert(kComponentCb == static_cast<int64_t>(PlaneLayoutComponentType::CB));
static_assert(kComponentCr == static_cast<int64_t>(PlaneLayoutComponentType::CR));
static_assert(kComponentRaw == static_cast<int64_t>(PlaneLayoutComponentType::RAW));

constexpr uint32_t fourCc(const char (&code)[5]) {
    return static_cast<uint32_t>(code[0]) | static_cast<uint32_t>(code[1]) << 8 |
           static_cast<uint32_t>(code[2]) << 16 | static_cast<uint32_t>(code[3]) << 24;
}

// The code under which the kernel's display drivers know a format; 0 for RAW10, which has none.
uint32_t fourCcOf(int32_t format) {
    if (format == kFormatYcbcr420) return fourCc("NV12");
    return format == kFormatBlob ? fourCc("R8  ") : 0;
}

std::vector<PlaneLayout> planeLayouts(const BufferLayout& layout) {
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

// The part of each plane that holds the picture; of a BLOB, its bytes.
std::vector<Rect> crop(const BufferInfo& info) {
    std::vector<Rect> rects;
    const auto add = [&](uint32_t width, uint32_t height) {
        Rect rect;
        rect.left = 0;
        rect.top = 0;
        rect.right = static_cast<int32_t>(width);
        rect.bottom = static_cast<int32_t>(height);
        rects.push_back(rect);
    };
    for (const Plane& plane : info.layout.planes) add(plane.width, plane.height);
    if (rects.empty()) add(info.description.width, info.description.height);
    return rects;
}

// Chroma lies in the middle of its four pixels, as in JFIF.
const ExtendableType& chromaSiting(const BufferInfo& info) {
    return info.description.format == kFormatYcbcr420 ? gralloc4::ChromaSiting_SitedInterstitial
                                                      : gralloc4::ChromaSiting_None;
}

using Encode = ::android::status_t (*)(const BufferInfo&, MetadataBytes*);

struct Encoder {
    MetadataKind kind;
    Encode encode;
};

constexpr Encoder kEncoders[] = {
        {{StandardMetadataType::BUFFER_ID, "number that no other buffer has"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeBufferId(info.id, out);
         }},
        {{StandardMetadataType::NAME, "name it was allocated with"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeName(info.description.name, out);
         }},
        {{StandardMetadataType::WIDTH, "pixels per row; bytes of a BLOB"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeWidth(info.description.width, out);
         }},
        {{StandardMetadataType::HEIGHT, "rows of pixels; 1 for a BLOB"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeHeight(info.description.height, out);
         }},
        {{StandardMetadataType::LAYER_COUNT, "layers"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeLayerCount(info.description.layerCount, out);
         }},
        {{StandardMetadataType::PIXEL_FORMAT_REQUESTED, "format it was allocated with"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodePixelFormatRequested(
                     static_cast<HidlFormat>(info.description.format), out);
         }},
        {{StandardMetadataType::PIXEL_FORMAT_FOURCC, "format code of display drivers, or 0"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodePixelFormatFourCC(fourCcOf(info.description.format), out);
         }},
        {{StandardMetadataType::PIXEL_FORMAT_MODIFIER, "0: rows lie one after another"},
         [](const BufferInfo&, MetadataBytes* out) {
             return gralloc4::encodePixelFormatModifier(0, out);
         }},
        {{StandardMetadataType::USAGE, "usage bits it was allocated with"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeUsage(info.description.usage, out);
         }},
        {{StandardMetadataType::ALLOCATION_SIZE, "bytes of the whole buffer"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeAllocationSize(info.layout.size, out);
         }},
        {{StandardMetadataType::PROTECTED_CONTENT, "0: not protected"},
         [](const BufferInfo&, MetadataBytes* out) {
             return gralloc4::encodeProtectedContent(0, out);
         }},
        {{StandardMetadataType::COMPRESSION, "none"},
         [](const BufferInfo&, MetadataBytes* out) {
             return gralloc4::encodeCompression(gralloc4::Compression_None, out);
         }},
        {{StandardMetadataType::INTERLACED, "none"},
         [](const BufferInfo&, MetadataBytes* out) {
             return gralloc4::encodeInterlaced(gralloc4::Interlaced_None, out);
         }},
        {{StandardMetadataType::CHROMA_SITING, "where chroma samples lie"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeChromaSiting(chromaSiting(info), out);
         }},
        {{StandardMetadataType::PLANE_LAYOUTS, "planes; none for a BLOB"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodePlaneLayouts(planeLayouts(info.layout), out);
         }},
        {{StandardMetadataType::CROP, "the picture in each plane, in samples"},
         [](const BufferInfo& info, MetadataBytes* out) {
             return gralloc4::encodeCrop(crop(info), out);
         }},
        {{StandardMetadataType::DATASPACE, "unknown: users of the buffer agree on it"},
         [](const BufferInfo&, MetadataBytes* out) {
             return gralloc4::encodeDataspace(Dataspace::UNKNOWN, out);
         }},
        {{StandardMetadataType::BLEND_MODE, "invalid: not for display"},
         [](const BufferInfo&, MetadataBytes* out) {
             return gralloc4::encodeBlendMode(BlendMode::INVALID, out);
         }},
        {{StandardMetadataType::STRIDE, "bytes per row of the first plane, as allocated"},
         [](const BufferInfo& info, MetadataBytes* out) {
             const auto stride = static_cast<int64_t>(StandardMetadataType::STRIDE);
             return gralloc4::encodeUint32(standardType(stride), info.layout.stride, out);
         }},
};

const Encoder* findEncoder(int64_t type) {
    for (const Encoder& encoder : kEncoders) {
        if (static_cast<int64_t>(encoder.kind.type) == type) return &encoder;
    }
    return nullptr;
}

}  // namespace

const std::vector<MetadataKind>& supportedMetadata() {
    static const auto* const kinds = [] {
        auto* list = new std::vector<MetadataKind>;
        for (const Encoder& encoder : kEncoders) list->push_back(encoder.kind);
        return list;
    }();
    return *kinds;
}

MetadataType standardType(int64_t value) {
    MetadataType type{};
    type.name = GRALLOC4_STANDARD_METADATA_TYPE;
    type.value = value;
    return type;
}

Outcome encodeMetadata(const BufferInfo& info, bool allocated, const MetadataType& type,
                       MetadataBytes* out) {
    const std::string asked = std::string(type.name) + " " + std::to_string(type.value);
    const Encoder* encoder =
            gralloc4::isStandardMetadataType(type) ? findEncoder(type.value) : nullptr;
    const bool needsBuffer = type.value == static_cast<int64_t>(StandardMetadataType::BUFFER_ID);
    if (encoder == nullptr || (needsBuffer && !allocated)) {
        return failure(BufferError::kUnsupported, "there is no metadata of type " + asked);
    }
    if (encoder->encode(info, out) != ::android::NO_ERROR) {
        return failure(BufferError::kNoResources, "cannot encode metadata of type " + asked);
    }
    return {};
}

}  // namespace graphics

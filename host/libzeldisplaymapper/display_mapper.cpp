// Tells how a buffer would be laid out.
#include <android/log.h>
#include <graphics_core/from_aidl.h>

#include "gralloc/zeldisplaymapper.h"

namespace mapper {

namespace {

using graphics::BufferError;
using graphics::BufferLayout;
using graphics::failure;
using graphics::Outcome;

PlaneEntry entryOf(const graphics::Plane& plane) {
    PlaneEntry entry = {};
    entry.offset = static_cast<uint32_t>(plane.offset);
    entry.sampleIncrementBits = static_cast<int32_t>(plane.sampleIncrementInBits);
    for (const graphics::PlaneComponent& component : plane.components) {
        entry.components[entry.numComponents++].type = component.type;
    }
    entry.strideBytes = static_cast<int32_t>(plane.stride);
    entry.scanlines = static_cast<int32_t>(plane.scanlines);
    entry.size = static_cast<uint32_t>(plane.size);
    entry.horizontalSubsampling = plane.subsampling;
    entry.verticalSubsampling = plane.subsampling;
    return entry;
}
static_assert(graphics::kMaxBufferBytes <= UINT32_MAX, "offsets and sizes fit their fields");

PlaneLayoutRecord recordOf(const BufferLayout& layout) {
    PlaneLayoutRecord record = {};
    for (const graphics::Plane& plane : layout.planes) {
        record.planes[record.numPlanes++] = entryOf(plane);
    }
    return record;
}

Outcome fill(const graphics::BufferDescription& description, int32_t type, void* out) {
    if (type != VENDOR_ZEL_METADATA_PLANE_LAYOUTS) {
        return failure(BufferError::kUnsupported,
                       "there is no metadata of type " + std::to_string(type));
    }
    if (out == nullptr) return failure(BufferError::kBadValue, "no record to fill");
    BufferLayout layout;
    if (Outcome laidOut = layOut(description, &layout); !laidOut.ok()) return laidOut;
    if (layout.planes.empty()) return failure(BufferError::kUnsupported, "a BLOB has no planes");
    *static_cast<PlaneLayoutRecord*>(out) = recordOf(layout);
    return {};
}

}  // namespace

int32_t GetFromBufferDescriptor(
        ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo info,
        vendor_zel_hardware_display_common_MetadataType type, void* out, bool /*flag*/) {
    const Outcome outcome = fill(graphics::fromAidl(info), type, out);
    if (!outcome.ok()) {
        __android_log_print(ANDROID_LOG_ERROR, "DisplayMapper", "GetFromBufferDescriptor: %s",
                            outcome.reason.c_str());
    }
    return static_cast<int32_t>(outcome.error);
}

}  // namespace mapper

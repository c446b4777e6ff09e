// Tells how a buffer would be laid out.
#include <android/log.h>
#include <graphics/from_aidl.h>

#include "gralloc/zeldisplaymapper.h"

namespace mapper {

namespace {

using base::Done;
using base::Result;
using graphics::BufferError;
using graphics::Failed;

PlaneEntry EntryOf(const graphics::Plane& plane) {
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

Result<Done> Fill(const graphics::BufferDescription& description, int32_t type, void* out) {
    if (type != VENDOR_ZEL_METADATA_PLANE_LAYOUTS) {
        return Failed(BufferError::kUnsupported,
                      "there is no metadata of type " + std::to_string(type));
    }
    if (out == nullptr) return Failed(BufferError::kBadValue, "no record to fill");
    const Result<graphics::BufferLayout> layout = graphics::LayOut(description);
    if (!layout.Ok()) return layout.GetFailure();
    if (layout.Value().planes.empty()) {
        return Failed(BufferError::kUnsupported, "a BLOB has no planes");
    }
    PlaneLayoutRecord record = {};
    for (const graphics::Plane& plane : layout.Value().planes) {
        record.planes[record.numPlanes++] = EntryOf(plane);
    }
    *static_cast<PlaneLayoutRecord*>(out) = record;
    return Done{};
}

}  // namespace

int32_t GetFromBufferDescriptor(
        ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo info,
        vendor_zel_hardware_display_common_MetadataType type, void* out, bool /*flag*/) {
    const Result<Done> filled = Fill(graphics::FromAidl(info), type, out);
    if (!filled.Ok()) {
        __android_log_print(ANDROID_LOG_ERROR, "DisplayMapper", "GetFromBufferDescriptor: %s",
                            filled.Error().c_str());
    }
    return static_cast<int32_t>(graphics::ErrorOf(filled));
}

}  // namespace mapper

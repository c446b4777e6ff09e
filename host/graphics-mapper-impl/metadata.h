// The metadata of a buffer in its binary form, which is the same for both mappers.
#pragma once

#include <gralloctypes/Gralloc4.h>
#include <graphics_core/buffer_handle.h>

#include <cstdint>
#include <vector>

namespace graphics {

using MetadataType = ::android::hardware::graphics::mapper::V4_0::IMapper::MetadataType;
using MetadataBytes = ::android::hardware::hidl_vec<uint8_t>;

struct MetadataKind {
    ::aidl::android::hardware::graphics::common::StandardMetadataType type;
    const char* description;
};

// Every kind that encodeMetadata() knows. None can be set: a buffer's integers never change.
const std::vector<MetadataKind>& supportedMetadata();

// The type of a kind, under its standard name.
MetadataType standardType(int64_t value);

// What a buffer is (`info` of a handle) or would be (`info` of a description and its layout:
// `allocated` false, which leaves its id out). kUnsupported for an unknown type.
Outcome encodeMetadata(const BufferInfo& info, bool allocated, const MetadataType& type,
                       MetadataBytes* out);

}  // namespace graphics

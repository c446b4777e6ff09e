// The metadata of a buffer in its binary form.
#pragma once

#include <gralloctypes/Gralloc4.h>
#include <graphics/buffer_handle.h>

namespace graphics {

using MetadataType = ::android::hardware::graphics::mapper::V4_0::IMapper::MetadataType;
using MetadataBytes = ::android::hardware::hidl_vec<uint8_t>;

// Width, height, requested pixel format, allocation size and plane layouts; kUnsupported for any
// other type.
base::Result<MetadataBytes> EncodeMetadata(const BufferInfo& info, const MetadataType& type);

}  // namespace graphics

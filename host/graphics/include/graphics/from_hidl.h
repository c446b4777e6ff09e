// Buffer descriptions of mapper 4.0.
#pragma once

#include <android/hardware/graphics/mapper/4.0/IMapper.h>
#include <graphics/buffer_layout.h>

namespace graphics {

inline BufferDescription FromHidl(
        const ::android::hardware::graphics::mapper::V4_0::IMapper::BufferDescriptorInfo& info) {
    return {info.name,
            info.width,
            info.height,
            info.layerCount,
            static_cast<int32_t>(info.format),
            info.usage,
            info.reservedSize};
}

}  // namespace graphics

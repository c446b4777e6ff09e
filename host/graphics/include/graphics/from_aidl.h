// Buffer descriptions of the allocator.
#pragma once

#include <aidl/android/hardware/graphics/allocator/BufferDescriptorInfo.h>
#include <graphics/buffer_layout.h>

#include <algorithm>

namespace graphics {

// Negative numbers become ones that LayOut() refuses.
inline BufferDescription FromAidl(
        const ::aidl::android::hardware::graphics::allocator::BufferDescriptorInfo& info) {
    const auto nameEnd = std::find(info.name.begin(), info.name.end(), 0);
    return {std::string(info.name.begin(), nameEnd), static_cast<uint32_t>(info.width),
            static_cast<uint32_t>(info.height),      static_cast<uint32_t>(info.layerCount),
            static_cast<int32_t>(info.format),       static_cast<uint64_t>(info.usage),
            static_cast<uint64_t>(info.reservedSize)};
}

}  // namespace graphics

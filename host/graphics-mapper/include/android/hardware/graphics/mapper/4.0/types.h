// Errors and buffer descriptors of mapper 4.0.
#pragma once

#include <hidl/HidlSupport.h>

#include <cstdint>

namespace android::hardware::graphics::mapper::V4_0 {

enum class Error : int32_t {
    NONE = 0,
    BAD_DESCRIPTOR = 1,
    BAD_BUFFER = 2,
    BAD_VALUE = 3,
    NO_RESOURCES = 5,
    UNSUPPORTED = 7,
};

// Only the allocator and the mapper know its content.
typedef ::android::hardware::hidl_vec<uint8_t> BufferDescriptor;

}  // namespace android::hardware::graphics::mapper::V4_0

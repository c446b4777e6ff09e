// Errors and buffer descriptors of mapper 4.0.
#pragma once

#include <hidl/HidlSupport.h>

#include <cstdint>
#include <string>

namespace android {
namespace hardware {
namespace graphics {
namespace mapper {
namespace V4_0 {

enum class Error : int32_t {
    NONE = 0,
    BAD_DESCRIPTOR = 1,
    BAD_BUFFER = 2,
    BAD_VALUE = 3,
    NO_RESOURCES = 5,
    UNSUPPORTED = 7,
};

// The enumerator's name; an unknown value as hexadecimal number.
std::string toString(Error error);

// Opaque to everyone but the allocator and the mapper.
typedef ::android::hardware::hidl_vec<uint8_t> BufferDescriptor;

}  // namespace V4_0
}  // namespace mapper
}  // namespace graphics
}  // namespace hardware
}  // namespace android

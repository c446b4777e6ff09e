// Names of the mapper's errors.
#include <android/hardware/graphics/mapper/4.0/types.h>

#include <cinttypes>
#include <cstdio>

namespace android {
namespace hardware {
namespace graphics {
namespace mapper {
namespace V4_0 {

std::string toString(Error error) {
    switch (error) {
        case Error::NONE:
            return "NONE";
        case Error::BAD_DESCRIPTOR:
            return "BAD_DESCRIPTOR";
        case Error::BAD_BUFFER:
            return "BAD_BUFFER";
        case Error::BAD_VALUE:
            return "BAD_VALUE";
        case Error::NO_RESOURCES:
            return "NO_RESOURCES";
        case Error::UNSUPPORTED:
            return "UNSUPPORTED";
    }
    char text[16];
    std::snprintf(text, sizeof(text), "0x%" PRIx32, static_cast<uint32_t>(error));
    return text;
}

}  // namespace V4_0
}  // namespace mapper
}  // namespace graphics
}  // namespace hardware
}  // namespace android

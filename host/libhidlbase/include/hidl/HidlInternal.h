// What the HIDL value types share: the fatal error exit and the limit of sizes.
#pragma once

#include <cstddef>
#include <cstdint>

namespace android::hardware::details {

// Logs `message` (tag HidlSupport, priority FATAL) and aborts the process.
[[noreturn]] void fatal(const char* message);

// Returns `size` as the 32 bits that HIDL containers keep; larger sizes end the process.
uint32_t checkedSize(size_t size);

}  // namespace android::hardware::details

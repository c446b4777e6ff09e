// Waiting for a fence: a descriptor that becomes readable.
#pragma once

#include <cutils/native_handle.h>
#include <graphics_core/outcome.h>

namespace graphics {

inline constexpr int kFenceWaitMs = 3000;

// Returns when `fd` (borrowed; -1: no fence) has become readable. kBadValue when it never can;
// kNoResources after `timeoutMs`.
Outcome waitForFence(int fd, int timeoutMs = kFenceWaitMs);

// The descriptor of a fence handle (borrowed): -1 for none, which a null or empty handle is.
// kBadValue for any other shape.
Outcome fenceDescriptor(const native_handle_t* fence, int* outFd);

}  // namespace graphics

// Waiting for a fence: a descriptor that becomes readable.
#pragma once

#include <cutils/native_handle.h>
#include <graphics/buffer_error.h>

namespace graphics {

inline constexpr int kFenceWaitMs = 3000;

// Returns when `fd` (borrowed; -1: no fence) has become readable. kBadValue when it never can;
// kNoResources after `timeoutMs`.
base::Result<base::Done> WaitForFence(int fd, int timeoutMs = kFenceWaitMs);

// The descriptor of a fence handle (borrowed): -1 for none, which a null or empty handle is.
// kBadValue for any other shape.
base::Result<int> FenceDescriptor(const native_handle_t* fence);

}  // namespace graphics

// Waiting for a fence: a descriptor that becomes readable.
#pragma once

#include <graphics/buffer_error.h>

namespace graphics {

inline constexpr int kFenceWaitMs = 3000;

// Returns when `fd` (borrowed; -1: no fence) has become readable. kBadValue when it never can;
// kNoResources after `timeoutMs`.
base::Result<base::Done> WaitForFence(int fd, int timeoutMs = kFenceWaitMs);

}  // namespace graphics

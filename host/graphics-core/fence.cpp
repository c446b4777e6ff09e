// Bounded wait for a fence.
#include <graphics_core/fence.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace graphics {

namespace {

using Clock = std::chrono::steady_clock;

int millisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<int64_t>(left.count(), 0));
}

}  // namespace

Outcome waitForFence(int fd, int timeoutMs) {
    if (fd < 0) return {};
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    pollfd wait = {fd, POLLIN, 0};
    int ready;
    do {
        ready = poll(&wait, 1, millisecondsUntil(deadline));
    } while (ready < 0 && errno == EINTR);
    if (ready < 0) {
        return failure(BufferError::kNoResources, std::string("poll: ") + std::strerror(errno));
    }
    if (ready == 0) {
        return failure(BufferError::kNoResources, "acquire fence " + std::to_string(fd) +
                                                          " has not signalled within " +
                                                          std::to_string(timeoutMs) + " ms");
    }
    if ((wait.revents & POLLIN) == 0) {
        return failure(BufferError::kBadValue,
                       "descriptor " + std::to_string(fd) + " is no fence or a broken one");
    }
    return {};
}

Outcome fenceDescriptor(const native_handle_t* fence, int* outFd) {
    *outFd = -1;
    if (fence == nullptr) return {};
    if (fence->version != static_cast<int>(sizeof(native_handle_t)) || fence->numInts != 0 ||
        fence->numFds < 0 || fence->numFds > 1) {
        return failure(BufferError::kBadValue,
                       "an acquire fence has at most one descriptor and no integers");
    }
    if (fence->numFds == 0) return {};
    if (fence->data[0] < 0) {
        return failure(BufferError::kBadValue, "the acquire fence's descriptor is negative");
    }
    *outFd = fence->data[0];
    return {};
}

}  // namespace graphics

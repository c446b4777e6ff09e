// Bounded wait for a fence.
#include <graphics/fence.h>
#include <poll.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>

namespace graphics {

using base::Done;
using base::Result;

namespace {

using Clock = std::chrono::steady_clock;

int MillisecondsUntil(Clock::time_point deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - Clock::now());
    return static_cast<int>(std::max<int64_t>(left.count(), 0));
}

}  // namespace

Result<Done> WaitForFence(int fd, int timeoutMs) {
    if (fd < 0) return Done{};
    const auto deadline = Clock::now() + std::chrono::milliseconds(timeoutMs);
    pollfd wait = {fd, POLLIN, 0};
    int ready;
    do {
        ready = poll(&wait, 1, MillisecondsUntil(deadline));
    } while (ready < 0 && errno == EINTR);
    if (ready < 0) {
        return Failed(BufferError::kNoResources, std::string("poll: ") + std::strerror(errno));
    }
    const std::string name = "acquire fence " + std::to_string(fd);
    if (ready == 0) {
        return Failed(BufferError::kNoResources,
                      name + " has not signalled within " + std::to_string(timeoutMs) + " ms");
    }
    if ((wait.revents & POLLIN) == 0) {
        return Failed(BufferError::kBadValue, name + " can never signal");
    }
    return Done{};
}

}  // namespace graphics

// Bounded wait for a fence.
#include <graphics_core/fence.h>
#include <poll.h>

#include <cerrno>
#include <cstring>

namespace graphics {

Outcome waitForFence(int fd, int timeoutMs) {
    if (fd < 0) return {};
    pollfd wait = {fd, POLLIN, 0};
    int ready;
    do {
        ready = poll(&wait, 1, timeoutMs);
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

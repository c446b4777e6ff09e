// Closing descriptors that another process chose.
#pragma once

#include <sys/socket.h>
#include <unistd.h>

namespace hostbinder {

// A socket could be set to keep whoever closes it until all that it was given to send is read, for
// hours; no thread here waits for that.
inline void closeReceived(int fd) {
    linger kept{};
    socklen_t size = sizeof(kept);
    if (getsockopt(fd, SOL_SOCKET, SO_LINGER, &kept, &size) == 0 && kept.l_onoff != 0) {
        kept.l_onoff = 0;
        setsockopt(fd, SOL_SOCKET, SO_LINGER, &kept, sizeof(kept));
    }
    close(fd);
}

}  // namespace hostbinder

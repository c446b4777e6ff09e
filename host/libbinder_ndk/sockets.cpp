// Opening sockets in the folder of sockets.
#include "sockets.h"

#include <sys/socket.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "log.h"
#include "wire_format.h"

namespace hostbinder {

namespace {

constexpr timeval kSocketSendLimit{5, 0};
constexpr timeval kReceiveLimit{10, 0};
constexpr int kBacklog = 128;

// 0 or -errno.
int MakeAddress(const std::string& name, sockaddr_un* address) {
    const std::string path = SocketPath(name);
    if (path.size() >= sizeof(address->sun_path)) {
        BINDER_LOGE(
                "%s: socket path of %zu characters is too long (%zu at most); "
                "set STANDIN_BINDER_DIR to a shorter folder",
                path.c_str(), path.size(), sizeof(address->sun_path) - 1);
        return -ENAMETOOLONG;
    }
    *address = {};
    address->sun_family = AF_UNIX;
    memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return 0;
}

// A socket that `use` connects or binds to the name; -errno on failure.
template <typename Use>
int Open(const std::string& name, Use use) {
    sockaddr_un address;
    if (const int error = MakeAddress(name, &address); error != 0) return error;
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) return -errno;
    if (use(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address))) return fd;
    const int error = errno;
    close(fd);
    return -error;
}

}  // namespace

const char* SocketFolder() {
    static const char* const folder = []() -> const char* {
        const char* set = getenv("STANDIN_BINDER_DIR");
        // A copy: the environment may change.
        return set == nullptr || set[0] == '\0' ? nullptr : strdup(set);
    }();
    return folder;
}

std::string NewSocketName() {
    const auto now = std::chrono::system_clock::now().time_since_epoch().count();
    return "p" + std::to_string(getpid()) + "-" + std::to_string(now);
}

std::string SocketPath(const std::string& name) {
    return std::string(SocketFolder()) + "/" + name;
}

int ConnectSocket(const std::string& name) {
    return Open(name, [](int fd, const sockaddr* address, socklen_t size) {
        LimitWaits(fd);  // also for a place in the listener's queue
        return connect(fd, address, size) == 0;
    });
}

int ListenSocket(const std::string& name) {
    return Open(name, [](int fd, const sockaddr* address, socklen_t size) {
        return bind(fd, address, size) == 0 && listen(fd, kBacklog) == 0;
    });
}

void LimitWaits(int fd) {
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &kSocketSendLimit, sizeof(kSocketSendLimit));
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &kReceiveLimit, sizeof(kReceiveLimit));
}

PeerCredentials CredentialsOf(int fd) {
    ucred peer{-1, static_cast<uid_t>(-1), 0};
    socklen_t size = sizeof(peer);
    getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size);
    return {peer.pid, peer.uid};
}

}  // namespace hostbinder

// Opening and checking sockets in the folder of sockets.
#include "socket_address.h"

#include <sys/random.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/time.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "log.h"
#include "wire_format.h"

namespace hostbinder {

namespace {

constexpr int kConnectSeconds = 5;
constexpr int kBacklog = 128;

const char* readSocketFolder() {
    const char* folder = getenv("STANDIN_BINDER_DIR");
    if (folder == nullptr || folder[0] == '\0') return nullptr;
    struct stat info;
    if (stat(folder, &info) != 0) {
        BINDER_LOGE("STANDIN_BINDER_DIR=%s: %s", folder, strerror(errno));
    } else if (!S_ISDIR(info.st_mode) || (info.st_mode & 077) != 0) {
        BINDER_LOGW("STANDIN_BINDER_DIR=%s: should be a folder with mode 0700", folder);
    }
    return strdup(folder);  // the environment may change
}

bool makeAddress(const std::string& name, sockaddr_un* address) {
    const std::string path = socketPath(name);
    if (path.size() >= sizeof(address->sun_path)) {
        BINDER_LOGE(
                "%s: socket path of %zu characters is too long (%zu at most); "
                "set STANDIN_BINDER_DIR to a shorter folder",
                path.c_str(), path.size(), sizeof(address->sun_path) - 1);
        return false;
    }
    *address = {};
    address->sun_family = AF_UNIX;
    memcpy(address->sun_path, path.c_str(), path.size() + 1);
    return true;
}

int openSocket() {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    return fd < 0 ? -errno : fd;
}

int closeAndReport(int fd, int error) {
    close(fd);
    return -error;
}

}  // namespace

const char* socketFolder() {
    static const char* const folder = readSocketFolder();
    return folder;
}

bool isSocketName(const std::string& name) {
    static constexpr char kAllowed[] =
            "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789-_.";
    return !name.empty() && name.size() <= kMaxSocketName && name[0] != '.' &&
           name.find_first_not_of(kAllowed) == std::string::npos;
}

std::string newSocketName() {
    uint64_t random = 0;
    if (getrandom(&random, sizeof(random), 0) != sizeof(random)) {
        random = static_cast<uint64_t>(time(nullptr));
    }
    char name[kMaxSocketName + 1];
    snprintf(name, sizeof(name), "p%d-%016llx", getpid(), static_cast<unsigned long long>(random));
    return name;
}

std::string socketPath(const std::string& name) {
    return std::string(socketFolder()) + "/" + name;
}

int connectSocket(const std::string& name) {
    sockaddr_un address;
    if (!makeAddress(name, &address)) return -ENAMETOOLONG;
    const int fd = openSocket();
    if (fd < 0) return fd;
    // Bounds the wait for a place in the listener's queue.
    const timeval limit{kConnectSeconds, 0};
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        return closeAndReport(fd, errno);
    }
    return fd;
}

int listenSocket(const std::string& name) {
    sockaddr_un address;
    if (!makeAddress(name, &address)) return -ENAMETOOLONG;
    const int fd = openSocket();
    if (fd < 0) return fd;
    if (bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0 ||
        listen(fd, kBacklog) != 0) {
        return closeAndReport(fd, errno);
    }
    return fd;
}

bool checkPeer(int fd, PeerCredentials* credentials) {
    ucred peer;
    socklen_t size = sizeof(peer);
    if (getsockopt(fd, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) {
        BINDER_LOGE("cannot find out who a peer is: %s", strerror(errno));
        return false;
    }
    if (peer.uid != geteuid()) {
        BINDER_LOGE("peer %d refused: it runs as user %u, not %u", peer.pid, peer.uid, geteuid());
        return false;
    }
    credentials->pid = peer.pid;
    credentials->uid = peer.uid;
    return true;
}

void setReceiveTimeout(int fd, int seconds) {
    const timeval limit{seconds, 0};
    setsockopt(fd, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof(limit));
}

}  // namespace hostbinder

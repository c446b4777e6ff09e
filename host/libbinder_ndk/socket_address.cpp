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

#include "call_context.h"
#include "log.h"
#include "silent_processes.h"
#include "wire_format.h"

namespace hostbinder {

namespace {

constexpr int kConnectSeconds = 5;
constexpr int kBacklog = 128;

// Empty, or why sockets in the folder are not safe from other users.
std::string problemOf(const char* folder) {
    struct stat info;
    if (stat(folder, &info) != 0) return strerror(errno);
    if (!S_ISDIR(info.st_mode)) return "not a folder";
    if (info.st_uid != geteuid()) {
        return "belongs to user " + std::to_string(info.st_uid) + ", not to this one, " +
               std::to_string(geteuid());
    }
    return (info.st_mode & 077) == 0 ? "" : "open to other users: chmod 0700 it";
}

struct Folder {
    const char* path = nullptr;
    bool usable = false;
};

Folder readFolder() {
    const char* folder = getenv("STANDIN_BINDER_DIR");
    if (folder == nullptr || folder[0] == '\0') return {};
    const std::string problem = problemOf(folder);
    if (!problem.empty()) BINDER_LOGE("STANDIN_BINDER_DIR=%s: %s", folder, problem.c_str());
    return {strdup(folder), problem.empty()};  // a copy: the environment may change
}

const Folder& folder() {
    static const Folder* const read = new Folder(readFolder());
    return *read;
}

// 0 or -errno.
int makeAddress(const std::string& name, sockaddr_un* address) {
    if (!folder().usable) return -EPERM;
    const std::string path = socketPath(name);
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

int openSocket(int flags) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | flags, 0);
    return fd < 0 ? -errno : fd;
}

int closeAndReport(int fd, int error) {
    close(fd);
    return -error;
}

}  // namespace

const char* socketFolder() {
    return folder().path;
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
    if (const int error = makeAddress(name, &address); error != 0) return error;
    struct stat info;
    if (lstat(address.sun_path, &info) != 0) return -errno;
    if (!S_ISSOCK(info.st_mode)) return -ENOTSOCK;
    // Bounds the wait for a place in the listener's queue. Who that is cannot be told: a caller
    // that refers to one whose queue stays full lets no thread here wait so again.
    SilentProcesses& silent = SilentProcesses::instance();
    const pid_t caller = callContext().pid;
    const int fd = openSocket(silent.mustNotWaitFor(caller) ? SOCK_NONBLOCK : 0);
    if (fd < 0) return fd;
    const timeval limit{kConnectSeconds, 0};
    setsockopt(fd, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof(limit));
    if (connect(fd, reinterpret_cast<sockaddr*>(&address), sizeof(address)) != 0) {
        const int error = errno;
        if (error == EAGAIN) silent.add(caller);
        return closeAndReport(fd, error);
    }
    return fd;
}

int listenSocket(const std::string& name) {
    sockaddr_un address;
    if (const int error = makeAddress(name, &address); error != 0) return error;
    const int fd = openSocket(0);
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

}  // namespace hostbinder

// The folder of sockets (STANDIN_BINDER_DIR), names of sockets in it, and opening them.
#pragma once

#include <sys/types.h>

#include <string>

namespace hostbinder {

// Null if there is no folder: everything then stays inside the process. Read once. A folder that is
// not this user's own, with mode 0700, is refused: the log says why, and every socket in it is
// EPERM.
const char* socketFolder();

// Letters, digits, '-', '_' and '.', at most kMaxSocketName of them, not beginning with '.'.
bool isSocketName(const std::string& name);

// A new name for this process: its number, so that people find it, and 64 random bits, so that it
// never names another process.
std::string newSocketName();

// Close-on-exec stream sockets. -errno on failure; ECONNREFUSED and ENOENT: nobody listens,
// ENOTSOCK: something else, such as a link, has the name.
int connectSocket(const std::string& name);
int listenSocket(const std::string& name);
std::string socketPath(const std::string& name);

struct PeerCredentials {
    pid_t pid = -1;
    uid_t uid = static_cast<uid_t>(-1);
};
// False (with a log line) unless the peer runs as the same user.
bool checkPeer(int fd, PeerCredentials* credentials);

}  // namespace hostbinder

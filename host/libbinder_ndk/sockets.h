// The folder of sockets (STANDIN_BINDER_DIR), names of sockets in it, and opening them.
#pragma once

#include <sys/types.h>

#include <string>

namespace hostbinder {

// Null if there is no folder: everything then stays inside the process. Read once.
const char* SocketFolder();

// A new name for this process: its number, so that people find it, and the time, so that the name
// of a process that is gone is not used again.
std::string NewSocketName();

// Close-on-exec stream sockets. -errno on failure; ECONNREFUSED and ENOENT: no process listens.
int ConnectSocket(const std::string& name);
int ListenSocket(const std::string& name);
std::string SocketPath(const std::string& name);

// Sending and connecting wait at most 5 s for a peer that does not read, receiving 10 s for one
// that sends nothing. Connected sockets have these limits, accepted ones get them here.
void LimitWaits(int fd);

struct PeerCredentials {
    pid_t pid = -1;
    uid_t uid = static_cast<uid_t>(-1);
};
// Who is at the other end.
PeerCredentials CredentialsOf(int fd);

}  // namespace hostbinder

// This process's own socket: opened when others may need it, removed when the process ends.
#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "connection_places.h"
#include "endpoint.h"
#include "log.h"
#include "threads.h"
#include "wire_format.h"

namespace hostbinder {

namespace {

const std::string* gSocketPath = nullptr;  // set once, before the exit handler is registered
pid_t gSocketOwner = -1;

void removeSocket() {
    // A forked child runs the handler, too, but the socket is its parent's.
    if (getpid() == gSocketOwner) unlink(gSocketPath->c_str());
}

// Whether no other service manager lives here. Its lock on the folder ends with the process.
bool lockFolder() {
    const int folder = open(socketFolder(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder < 0 || flock(folder, LOCK_EX | LOCK_NB) == 0) return true;
    close(folder);
    return false;
}

// A socket of a service manager that is gone may lie in the way.
int listenAsServiceManager() {
    if (!lockFolder()) return -EADDRINUSE;
    int listener = listenSocket(kServiceManagerSocket);
    if (listener != -EADDRINUSE) return listener;
    const int probe = connectSocket(kServiceManagerSocket);
    if (probe >= 0) {
        close(probe);
        return -EADDRINUSE;
    }
    if (probe != -ECONNREFUSED) return probe;
    unlink(socketPath(kServiceManagerSocket).c_str());
    return listenSocket(kServiceManagerSocket);
}

}  // namespace

bool Endpoint::listenLocked() {
    const bool isServiceManager = mName == kServiceManagerSocket;
    const int listener = isServiceManager ? listenAsServiceManager() : listenSocket(mName);
    if (listener < 0) {
        BINDER_LOGE("cannot listen on %s: %s", socketPath(mName).c_str(), strerror(-listener));
        errno = -listener;
        return false;
    }
    gSocketPath = new std::string(socketPath(mName));
    gSocketOwner = getpid();
    atexit(removeSocket);
    if (!startThread("binder-accept", [this, listener]() { acceptLoop(listener); })) {
        close(listener);
        errno = EAGAIN;
        return false;
    }
    return true;
}

void Endpoint::ensureListening() {
    if (socketFolder() == nullptr) return;
    std::lock_guard<std::mutex> lock(mMutex);
    if (mListening || mListenFailed) return;
    mListening = listenLocked();
    mListenFailed = !mListening;  // logged once; peers that are connected already can still call
}

binder_status_t Endpoint::becomeServiceManager() {
    if (socketFolder() == nullptr) {
        BINDER_LOGE("STANDIN_BINDER_DIR is not set: no folder for the service manager's socket");
        return STATUS_NO_INIT;
    }
    std::lock_guard<std::mutex> lock(mMutex);
    if (mListening || !mPeers.empty()) return STATUS_INVALID_OPERATION;
    mName = kServiceManagerSocket;
    mListening = listenLocked();
    if (mListening) return STATUS_OK;
    return errno == EADDRINUSE ? STATUS_ALREADY_EXISTS : STATUS_NO_INIT;
}

void Endpoint::acceptLoop(int listener) {
    while (true) {
        const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd >= 0) {
            startServing(fd);
        } else if (errno == EMFILE || errno == ENFILE || errno == ENOMEM || errno == ENOBUFS) {
            BINDER_LOGE("cannot accept a connection: %s", strerror(errno));
            usleep(50 * 1000);  // the connection still waits; give descriptors time to go
        } else if (errno != EINTR && errno != ECONNABORTED) {
            BINDER_LOGE("no more connections are accepted: %s", strerror(errno));
            return;
        }
    }
}

void Endpoint::startServing(int fd) {
    PeerCredentials peer;
    if (!checkPeer(fd, &peer)) {
        close(fd);
        return;
    }
    std::shared_ptr<ConnectionPlace> place = ConnectionPlaces::instance().take(peer.pid, fd);
    if (place == nullptr) {
        BINDER_LOGE(
                "connection of process %d refused: %zu connections of a process, %zu of all at "
                "most",
                peer.pid, ConnectionPlaces::kPerProcess, ConnectionPlaces::kAll);
        close(fd);
        return;
    }
    const auto serve = [this, fd, peer, place]() { serveAccepted(fd, peer, place.get()); };
    if (startThread("binder-reader", serve)) return;
    place->leaveSocket();
    close(fd);
}

}  // namespace hostbinder

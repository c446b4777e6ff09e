// Connections by name: one for each pair of processes, whoever connects first.
//
// Both may connect at the same time. Then the connection that the process with the smaller name
// makes is kept, and the other process is told that the line is busy.
#include "endpoint.h"

#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <utility>
#include <vector>

#include "connection.h"
#include "connection_places.h"
#include "frame_io.h"
#include "log.h"
#include "object_table.h"
#include "silent_processes.h"
#include "threads.h"

namespace hostbinder {

namespace {

constexpr auto kConnectLimit = std::chrono::seconds(5);

bool isOpen(const std::shared_ptr<Connection>& connection) {
    return connection != nullptr && connection->isOpen();
}

void sendGreeting(int fd, FrameKind kind, const std::string& data, binder_status_t status) {
    OutgoingFrame frame;
    frame.header.kind = kind;
    frame.header.status = status;
    frame.data = reinterpret_cast<const uint8_t*>(data.data());
    frame.dataSize = data.size();
    // A new socket has room for it; a failure shows when the answer is awaited.
    sendFrame(fd, &frame, SendWait::kNever);
}

// Logs what is wrong, if anything is.
ReceiveResult receiveGreeting(int fd, FrameKind kind, IncomingFrame* frame) {
    std::string reason;
    ReceiveResult result = receiveFrame(fd, frame, &reason, ReceiveWait::kBounded);
    if (result == ReceiveResult::kFrame && frame->header.kind != kind) {
        reason = "no greeting";
        result = ReceiveResult::kBroken;
    }
    if (!reason.empty()) BINDER_LOGE("connection refused: %s", reason.c_str());
    return result;
}

// Greets over a new socket. Does not wait for a process that was silent before.
bool exchangeGreetings(int fd, const std::string& ownName, IncomingFrame* answer,
                       PeerCredentials* peer) {
    SilentProcesses& silent = SilentProcesses::instance();
    if (!checkPeer(fd, peer) || silent.mustNotWaitFor(peer->pid)) return false;
    sendGreeting(fd, FrameKind::kHello, ownName, STATUS_OK);
    const ReceiveResult received = receiveGreeting(fd, FrameKind::kHelloReply, answer);
    if (received == ReceiveResult::kLate) silent.add(peer->pid);
    return received == ReceiveResult::kFrame;
}

// Whether the peer may call itself so: a name that begins with its number, or that no other process
// listens under.
bool mayHaveName(const std::string& name, const PeerCredentials& peer) {
    if (!isSocketName(name)) {
        BINDER_LOGE("connection of process %d refused: its name is not valid", peer.pid);
        return false;
    }
    if (name.find("p" + std::to_string(peer.pid) + "-") == 0) return true;
    const int fd = connectSocket(name);
    if (fd < 0) return true;
    PeerCredentials owner;
    const bool owned = checkPeer(fd, &owner) && owner.pid == peer.pid;
    close(fd);
    if (!owned) {
        BINDER_LOGE("connection of process %d refused: its name %s is that of process %d", peer.pid,
                    name.c_str(), owner.pid);
    }
    return owned;
}

std::shared_ptr<Connection> startReader(std::shared_ptr<Connection> connection) {
    if (!startThread("binder-reader", [connection]() { connection->runReader(); })) return nullptr;
    return connection;
}

}  // namespace

Endpoint& Endpoint::instance() {
    static Endpoint* const endpoint = new Endpoint;
    return *endpoint;
}

Endpoint::Endpoint() : mName(newSocketName()) {}

Endpoint::Greeting Endpoint::greet(const std::string& name,
                                   std::shared_ptr<Connection>* connection) {
    const int fd = connectSocket(name);
    if (fd < 0) {
        if (fd != -ENOENT && fd != -ECONNREFUSED) {
            BINDER_LOGE("cannot connect to %s: %s", name.c_str(), strerror(-fd));
        }
        return Greeting::kFailed;
    }
    PeerCredentials credentials;
    IncomingFrame answer;
    if (!exchangeGreetings(fd, mName, &answer, &credentials)) {
        close(fd);
        return Greeting::kFailed;
    }
    if (answer.header.status != STATUS_OK) {
        close(fd);
        return Greeting::kBusy;
    }
    *connection = std::make_shared<Connection>(fd, name, credentials);
    return Greeting::kAccepted;
}

std::shared_ptr<Connection> Endpoint::connectTo(const std::string& name) {
    if (socketFolder() == nullptr || !isSocketName(name)) return nullptr;
    const auto limit = Clock::now() + kConnectLimit;
    std::unique_lock<std::mutex> lock(mMutex);
    if (name == mName) return nullptr;  // never to itself
    for (bool tried = false;; tried = true) {
        Peer& peer = mPeers[name];
        if (isOpen(peer.connection)) return peer.connection;
        if (peer.connecting) {
            mChanged.wait(lock);  // the other thread's attempt is bounded
            continue;
        }
        if (tried && Clock::now() > limit) break;
        peer.connecting = true;
        lock.unlock();
        std::shared_ptr<Connection> connection;
        const Greeting greeting = greet(name, &connection);
        connection = finishConnecting(name, greeting, std::move(connection));
        if (connection != nullptr || greeting != Greeting::kBusy) return connection;
        lock.lock();
        // Busy: the peer's own attempt is under way, or it has yet to see a lost connection.
        mChanged.wait_for(lock, std::chrono::milliseconds(10));
    }
    mPeers.erase(name);
    BINDER_LOGE("no connection to %s: it stays busy", name.c_str());
    return nullptr;
}

std::shared_ptr<Connection> Endpoint::finishConnecting(const std::string& name, Greeting greeting,
                                                       std::shared_ptr<Connection> connection) {
    std::lock_guard<std::mutex> lock(mMutex);
    Peer& peer = mPeers[name];
    peer.connecting = false;
    mChanged.notify_all();
    if (greeting == Greeting::kAccepted && !isOpen(peer.connection)) {
        peer.connection = startReader(std::move(connection));
    }
    if (isOpen(peer.connection)) return peer.connection;
    mPeers.erase(name);
    return nullptr;
}

std::shared_ptr<Connection> Endpoint::admit(int fd, const std::string& name,
                                            const PeerCredentials& credentials) {
    auto connection = std::make_shared<Connection>(fd, name, credentials);
    std::shared_ptr<Connection> replaced;
    {
        std::lock_guard<std::mutex> lock(mMutex);
        Peer& peer = mPeers[name];
        if (mName < name && (peer.connecting || isOpen(peer.connection))) {
            sendGreeting(fd, FrameKind::kHelloReply, "", STATUS_WOULD_BLOCK);
            return nullptr;
        }
        if (isOpen(peer.connection) && peer.connection->peer().pid != credentials.pid) {
            BINDER_LOGE("connection of process %d refused: its name %s is that of process %d",
                        credentials.pid, name.c_str(), peer.connection->peer().pid);
            return nullptr;
        }
        // A peer with the smaller name connects again only if it has lost the old connection.
        replaced = std::exchange(peer.connection, connection);
        sendGreeting(fd, FrameKind::kHelloReply, "", STATUS_OK);
        mChanged.notify_all();
    }
    if (replaced != nullptr) replaced->shutDown();
    return connection;
}

void Endpoint::serveAccepted(int fd, const PeerCredentials& credentials, ConnectionPlace* place) {
    IncomingFrame hello;
    const bool greeted = receiveGreeting(fd, FrameKind::kHello, &hello) == ReceiveResult::kFrame;
    const auto* const bytes = reinterpret_cast<const char*>(hello.body.get());
    const std::string name(bytes, greeted ? hello.header.dataSize : 0);
    place->leaveSocket();
    if (!greeted || !mayHaveName(name, credentials)) {
        close(fd);
        return;
    }
    std::shared_ptr<Connection> connection = admit(fd, name, credentials);
    if (connection == nullptr) return;
    place->giveTo(connection);
    connection->runReader();
}

void Endpoint::forget(Connection* connection) {
    std::lock_guard<std::mutex> lock(mMutex);
    auto found = mPeers.find(connection->peerName());
    if (found == mPeers.end() || found->second.connection.get() != connection) return;
    found->second.connection = nullptr;
    if (!found->second.connecting) mPeers.erase(found);
    mChanged.notify_all();
}

void Endpoint::cleanUpAfter(const std::string& name) {
    {
        std::lock_guard<std::mutex> lock(mMutex);
        if (mName != kServiceManagerSocket) return;
    }
    mDeadSockets.left(name);
}

AIBinder* Endpoint::resolve(const std::string& owner, uint64_t number) {
    ObjectTable& table = ObjectTable::instance();
    AIBinder* found = nullptr;
    if (owner == mName) {
        found = table.findExported(number);
    } else if (std::shared_ptr<Connection> connection = connectTo(owner)) {
        found = table.findProxy(connection->objects(), number);
        if (found == nullptr && connection->acquire(number)) {
            found = table.proxyFor(connection, connection->objects(), number, 1);
        }
    }
    return found != nullptr ? found : new ProxyBinder(nullptr, number);
}

}  // namespace hostbinder

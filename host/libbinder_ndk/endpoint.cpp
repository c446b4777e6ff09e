// Connections by name: one for each pair of processes, no matter which connects first.
//
// Both may connect at the same time. Then the connection that the process with the smaller name
// makes is kept, and the other process is told that the line is busy.
#include "endpoint.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "log.h"

namespace hostbinder {

namespace {

constexpr auto kConnectLimit = std::chrono::seconds(5);

const std::string* gSocketPath = nullptr;  // set once, before the exit handler is registered
pid_t gSocketOwner = -1;

void RemoveSocket() {
    // A forked child runs the handler, too, but the socket is its parent's.
    if (getpid() == gSocketOwner) unlink(gSocketPath->c_str());
}

bool IsOpen(const std::shared_ptr<Peer>& peer) {
    return peer != nullptr && peer->IsConnected();
}

void SendGreeting(int fd, FrameKind kind, const std::string& data, binder_status_t status) {
    OutgoingFrame frame;
    frame.header.kind = kind;
    frame.header.status = status;
    frame.data = reinterpret_cast<const uint8_t*>(data.data());
    frame.dataSize = data.size();
    SendFrame(fd, &frame);  // a failure shows when the answer is awaited
}

// False, with a log line, if no such greeting comes.
bool ReceiveGreeting(int fd, FrameKind kind, IncomingFrame* frame) {
    const base::Result<bool> received = ReceiveFrame(fd, frame);
    std::string reason;
    if (!received.Ok()) {
        reason = received.Error();
    } else if (received.Value() && frame->header.kind != kind) {
        reason = "no greeting";
    } else {
        return received.Value();
    }
    BINDER_LOGE("connection refused: %s", reason.c_str());
    return false;
}

// Only one service manager lives here: its lock on the folder ends with its process, and a socket
// that nothing listens on any more is in the way.
int ListenAsServiceManager() {
    const int folder = open(SocketFolder(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (folder >= 0 && flock(folder, LOCK_EX | LOCK_NB) != 0) {
        close(folder);
        return -EADDRINUSE;
    }
    unlink(SocketPath(kServiceManagerSocket).c_str());
    return ListenSocket(kServiceManagerSocket);
}

}  // namespace

Endpoint& Endpoint::Instance() {
    static Endpoint* const endpoint = new Endpoint;
    return *endpoint;
}

Endpoint::Endpoint() : m_name(NewSocketName()) {}

std::shared_ptr<Peer> Endpoint::Greet(const std::string& name, bool* busy) {
    const int fd = ConnectSocket(name);
    if (fd < 0) {
        if (fd != -ENOENT && fd != -ECONNREFUSED) {
            BINDER_LOGE("cannot connect to %s: %s", name.c_str(), strerror(-fd));
        }
        return nullptr;
    }
    SendGreeting(fd, FrameKind::kHello, m_name, STATUS_OK);
    IncomingFrame answer;
    const bool answered = ReceiveGreeting(fd, FrameKind::kHelloReply, &answer);
    if (answered && answer.header.status == STATUS_OK) {
        return std::make_shared<Peer>(fd, name, CredentialsOf(fd));
    }
    close(fd);
    *busy = answered;
    return nullptr;
}

std::shared_ptr<Peer> Endpoint::ConnectTo(const std::string& name) {
    if (SocketFolder() == nullptr || name.empty()) return nullptr;
    const auto limit = std::chrono::steady_clock::now() + kConnectLimit;
    std::unique_lock<std::mutex> lock(m_mutex);
    if (name == m_name) return nullptr;  // never to itself
    while (true) {
        Entry& entry = m_peers[name];
        if (IsOpen(entry.peer)) return entry.peer;
        if (!entry.connecting) {
            entry.connecting = true;  // so that the entry stays
            lock.unlock();
            bool busy = false;
            const std::shared_ptr<Peer> peer = Greet(name, &busy);
            lock.lock();
            entry.connecting = false;
            m_changed.notify_all();
            if (peer != nullptr && !IsOpen(entry.peer) &&
                StartThread("binder-reader", [peer]() { peer->RunReader(); })) {
                entry.peer = peer;
                // Objects that go there may be passed on to processes that connect to this one. If
                // it fails, which is logged once, peers that are connected can still call.
                if (!m_listening) ListenLocked();
            }
            if (IsOpen(entry.peer)) return entry.peer;
            const bool late = std::chrono::steady_clock::now() > limit;
            if (busy && late) BINDER_LOGE("no connection to %s: it stays busy", name.c_str());
            if (!busy || late) break;
        }
        // Another thread's attempt or the peer's own is under way, or the peer has yet to see a
        // lost connection.
        m_changed.wait_for(lock, std::chrono::milliseconds(10));
    }
    m_peers.erase(name);
    return nullptr;
}

void Endpoint::Forget(const Peer* peer) {
    std::shared_ptr<Peer> forgotten;  // ends after the lock
    std::lock_guard<std::mutex> lock(m_mutex);
    auto found = m_peers.find(peer->PeerName());
    if (found == m_peers.end() || found->second.peer.get() != peer) return;
    forgotten = std::move(found->second.peer);
    if (!found->second.connecting) m_peers.erase(found);
    m_changed.notify_all();
}

AIBinder* Endpoint::Resolve(const std::string& owner, uint64_t number) {
    AIBinder* found = nullptr;
    if (owner == m_name) {
        found = FindExported(number);
    } else if (std::shared_ptr<Peer> peer = ConnectTo(owner)) {
        found = peer->References()->FindProxy(number);
        if (found == nullptr && peer->Acquire(number)) {
            found = peer->References()->ProxyFor(peer, number, 1);
        }
    }
    return found != nullptr ? found : new ProxyBinder(nullptr, number);
}

int Endpoint::ListenLocked() {
    m_listening = true;
    const int listener =
            m_name == kServiceManagerSocket ? ListenAsServiceManager() : ListenSocket(m_name);
    if (listener < 0) {
        BINDER_LOGE("cannot listen on %s: %s", SocketPath(m_name).c_str(), strerror(-listener));
        return -listener;
    }
    gSocketPath = new std::string(SocketPath(m_name));
    gSocketOwner = getpid();
    atexit(RemoveSocket);
    if (StartThread("binder-accept", [this, listener]() { AcceptLoop(listener); })) return 0;
    close(listener);
    return EAGAIN;
}

binder_status_t Endpoint::BecomeServiceManager() {
    if (SocketFolder() == nullptr) {
        BINDER_LOGE("STANDIN_BINDER_DIR is not set: no folder for the service manager's socket");
        return STATUS_NO_INIT;
    }
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_listening || !m_peers.empty()) return STATUS_INVALID_OPERATION;
    m_name = kServiceManagerSocket;
    const int error = ListenLocked();
    if (error == 0) return STATUS_OK;
    return error == EADDRINUSE ? STATUS_ALREADY_EXISTS : STATUS_NO_INIT;
}

void Endpoint::AcceptLoop(int listener) {
    while (true) {
        const int fd = accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        if (fd >= 0) {
            LimitWaits(fd);
            if (!StartThread("binder-reader", [this, fd]() { ServeAccepted(fd); })) close(fd);
        } else if (errno != EINTR && errno != ECONNABORTED) {
            BINDER_LOGE("cannot accept a connection: %s", strerror(errno));
            usleep(50 * 1000);  // the connection still waits; give descriptors time to go
        }
    }
}

void Endpoint::ServeAccepted(int fd) {
    IncomingFrame hello;
    if (!ReceiveGreeting(fd, FrameKind::kHello, &hello)) {
        close(fd);
        return;
    }
    const auto* const bytes = reinterpret_cast<const char*>(hello.body.get());
    const std::string name(bytes, hello.header.dataSize);
    if (const std::shared_ptr<Peer> peer = Admit(fd, name)) peer->RunReader();
}

std::shared_ptr<Peer> Endpoint::Admit(int fd, const std::string& name) {
    auto peer = std::make_shared<Peer>(fd, name, CredentialsOf(fd));
    std::shared_ptr<Peer> replaced;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        Entry& entry = m_peers[name];
        if (m_name < name && (entry.connecting || IsOpen(entry.peer))) {
            SendGreeting(fd, FrameKind::kHelloReply, "", STATUS_WOULD_BLOCK);
            return nullptr;
        }
        // A peer with the smaller name connects again only if it has lost the old connection.
        replaced = std::exchange(entry.peer, peer);
        SendGreeting(fd, FrameKind::kHelloReply, "", STATUS_OK);
        m_changed.notify_all();
    }
    if (replaced != nullptr) replaced->ShutDown();
    return peer;
}

}  // namespace hostbinder

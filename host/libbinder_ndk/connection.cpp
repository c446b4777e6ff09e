// A connection's socket: sending, reading, and matching replies to waiting threads.
#include "connection.h"

#include <sys/socket.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <fstream>
#include <utility>

#include "log.h"

namespace hostbinder {

namespace {

constexpr int kAnswerMilliseconds = 10000;

std::string ProgramName(pid_t pid) {
    std::ifstream file("/proc/" + std::to_string(pid) + "/comm");
    std::string name;
    return std::getline(file, name) ? name : "?";
}

}  // namespace

Connection::Connection(int fd, std::string peerName, PeerCredentials credentials)
    : m_fd(fd),
      m_peerName(std::move(peerName)),
      m_credentials(credentials),
      m_peerLabel(std::to_string(credentials.pid) + "/" + ProgramName(credentials.pid)) {}

// The socket stays open until here, so that no thread uses a closed one.
Connection::~Connection() {
    close(m_fd);
}

void Connection::ShutDown() {
    m_open = false;
    shutdown(m_fd, SHUT_RDWR);  // also ends a send that waits
}

void Connection::RunReader() {
    const auto process = static_cast<int>(syscall(SYS_pidfd_open, m_credentials.pid, 0));
    std::string reason;
    while (reason.empty() && WaitForFrame(m_fd, process)) {
        IncomingFrame frame;
        const base::Result<bool> received = ReceiveFrame(m_fd, &frame);
        if (!received.Ok()) {
            reason = received.Error();
            break;
        }
        if (!received.Value()) break;
        const base::Result<base::Done> handled = HandleFrame(&frame);
        if (!handled.Ok()) reason = handled.Error();
    }
    if (process >= 0) close(process);
    if (!reason.empty()) {
        BINDER_LOGE("connection to %s ended: %s", m_peerLabel.c_str(), reason.c_str());
    }
    ShutDown();
    HandleEnd();
}

binder_status_t Connection::Send(OutgoingFrame* frame) {
    std::lock_guard<std::mutex> lock(m_sendMutex);
    if (!m_open) return STATUS_DEAD_OBJECT;
    const int error = SendFrame(m_fd, frame);
    if (error == 0) return STATUS_OK;
    if (error == EAGAIN) {
        BINDER_LOGE("connection to %s ended: it does not read what is sent", m_peerLabel.c_str());
    } else if (error != EPIPE && error != ECONNRESET) {
        BINDER_LOGE("connection to %s ended: sending failed: %s", m_peerLabel.c_str(),
                    strerror(error));
    }
    ShutDown();
    return STATUS_DEAD_OBJECT;
}

void Connection::SendControl(const FrameHeader& header) {
    OutgoingFrame frame;
    frame.header = header;
    Send(&frame);
}

binder_status_t Connection::ExpectReply(uint64_t id, const std::shared_ptr<Waiter>& waiter) {
    std::lock_guard<std::mutex> lock(m_mutex);
    if (m_failed) return STATUS_DEAD_OBJECT;
    m_waiters[id] = waiter;
    return STATUS_OK;
}

std::shared_ptr<Waiter> Connection::TakeWaiter(uint64_t id) {
    std::lock_guard<std::mutex> lock(m_mutex);
    auto found = m_waiters.find(id);
    if (found == m_waiters.end()) return nullptr;
    std::shared_ptr<Waiter> waiter = std::move(found->second);
    m_waiters.erase(found);
    return waiter;
}

bool Connection::AwaitAnswer(Waiter* waiter, const char* question, IncomingMessage* reply) {
    if (waiter->Wait(kAnswerMilliseconds, reply)) return true;
    BINDER_LOGE("connection to %s ended: it did not say within %d ms %s", m_peerLabel.c_str(),
                kAnswerMilliseconds, question);
    ShutDown();
    return false;
}

void Connection::FailWaiters() {
    std::unordered_map<uint64_t, std::shared_ptr<Waiter>> waiters;
    {
        std::lock_guard<std::mutex> lock(m_mutex);
        m_failed = true;
        waiters.swap(m_waiters);
    }
    for (auto& entry : waiters) {
        IncomingMessage failure;
        failure.status = STATUS_DEAD_OBJECT;
        entry.second->Deliver(std::move(failure));
    }
}

}  // namespace hostbinder

// The one connection between this process and another: frames in both directions, and the threads
// that wait for replies. What the frames mean is the derived class's business.
#pragma once

#include <android/binder_status.h>
#include <base/result.h>

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <unordered_map>

#include "dispatch.h"
#include "frame.h"
#include "sockets.h"

namespace hostbinder {

class Connection : public std::enable_shared_from_this<Connection> {
  public:
    // Takes ownership of the socket. peerName is the peer's socket name.
    Connection(int fd, std::string peerName, PeerCredentials credentials);
    virtual ~Connection();
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    // Reads until the connection ends, then cleans up. On a thread of its own.
    void RunReader();
    bool IsConnected() const { return m_open; }
    // Ends the connection for both sides; the reader sees it.
    void ShutDown();

    const std::string& PeerName() const { return m_peerName; }
    const PeerCredentials& Credentials() const { return m_credentials; }
    // "pid/program", for logs and the trace.
    const std::string& PeerLabel() const { return m_peerLabel; }

  protected:
    // On the reader's thread, which must not block. A failure says why the connection is to end.
    virtual base::Result<base::Done> HandleFrame(IncomingFrame* frame) = 0;
    // After the last frame; may block.
    virtual void HandleEnd() = 0;

    // For a call or a question, and what refers to it.
    uint64_t NextId() { return ++m_lastId; }

    // Waits, bounded, for a peer that does not read. STATUS_DEAD_OBJECT: the connection has ended.
    binder_status_t Send(OutgoingFrame* frame);
    // Sends a header alone.
    void SendControl(const FrameHeader& header);

    // STATUS_DEAD_OBJECT if no reply can come any more.
    binder_status_t ExpectReply(uint64_t id, const std::shared_ptr<Waiter>& waiter);
    // Who waits for that reply; null if no thread does.
    std::shared_ptr<Waiter> TakeWaiter(uint64_t id);
    // Waits for an answer that the peer's library gives itself. False, and the connection ends, if
    // there is none in time; `question` names it in the log.
    bool AwaitAnswer(Waiter* waiter, const char* question, IncomingMessage* reply);
    // Answers everything that waits, now and later, with STATUS_DEAD_OBJECT.
    void FailWaiters();

  private:
    const int m_fd;
    const std::string m_peerName;
    const PeerCredentials m_credentials;
    const std::string m_peerLabel;
    std::atomic<bool> m_open{true};
    std::atomic<uint64_t> m_lastId{0};
    std::mutex m_sendMutex;  // one frame at a time

    std::mutex m_mutex;  // guards what follows
    bool m_failed = false;
    std::unordered_map<uint64_t, std::shared_ptr<Waiter>> m_waiters;
};

}  // namespace hostbinder
